#include "platform/object_trust.h"

#include <gtest/gtest.h>

#include <string>

namespace depot {
namespace {

using namespace std::string_literals;

constexpr std::uint32_t kLowLevel = 0x1000;
constexpr std::uint32_t kSystemLevel = 0x4000;

const std::string kAnn = "\1\5\0\0\0\0\0\5 ann"s;
const std::string kBob = "\1\5\0\0\0\0\0\5 bob"s;

bool Believes(const Subject& subject, const ObjectOrigin& object) {
    return ReasonForDistrust(object, subject) == nullptr;
}

TEST(ObjectTrustTest, OwnObjectIsBelieved) {
    EXPECT_TRUE(Believes({kAnn}, {kAnn}));
    EXPECT_TRUE(Believes({kAnn, true}, {kAnn}));
}

TEST(ObjectTrustTest, ObjectOfAnotherUserIsNot) {
    EXPECT_STREQ("it belongs to another user", ReasonForDistrust({kBob}, {kAnn}));
    EXPECT_FALSE(Believes({kAnn, true}, {kBob}));
    EXPECT_FALSE(Believes({kAnn, true, kSystemLevel}, {kBob, true, kSystemLevel}));
    EXPECT_FALSE(Believes({kAnn}, {kAnn.substr(0, kAnn.size() - 1)}));
}

TEST(ObjectTrustTest, ObjectOfTheSystemIsBelievedByEveryone) {
    EXPECT_TRUE(Believes({kAnn}, {kSystemAccount}));
    EXPECT_TRUE(Believes({kAnn, true, kHighLevel}, {kSystemAccount}));
    EXPECT_TRUE(Believes({kSystemAccount, true, kSystemLevel}, {kSystemAccount}));
}

TEST(ObjectTrustTest, ObjectOfTheAdministratorsIsBelievedByAdministratorsOnly) {
    EXPECT_FALSE(Believes({kAnn, false}, {kAdministrators}));
    EXPECT_TRUE(Believes({kAnn, true, kHighLevel}, {kAdministrators}));
}

TEST(ObjectTrustTest, ObjectOfALowerLevelIsNotBelieved) {
    EXPECT_STREQ("its integrity level is lower",
                 ReasonForDistrust({kAnn, true, kLowLevel}, {kAnn}));
    EXPECT_TRUE(Believes({kAnn, false, kMediumLevel}, {kAnn, true, kMediumLevel}));
    EXPECT_TRUE(Believes({kAnn, false, kMediumLevel}, {kAnn, true, kHighLevel}));
    EXPECT_FALSE(Believes({kAnn, true, kHighLevel}, {kAnn, true, kMediumLevel}));
    EXPECT_FALSE(Believes({kAnn, true, kHighLevel}, {kAdministrators, true, kMediumLevel}));
    EXPECT_FALSE(Believes({kAnn, true, kHighLevel}, {kSystemAccount, true, kLowLevel}));
}

TEST(ObjectTrustTest, ObjectWithoutALevelCountsAsMedium) {
    EXPECT_TRUE(Believes({kAnn, false, kLowLevel}, {kAnn}));
    EXPECT_TRUE(Believes({kAnn, false, kMediumLevel}, {kAnn}));
    EXPECT_FALSE(Believes({kAnn, true, kHighLevel}, {kAnn}));
}

TEST(ObjectTrustTest, UnknownOwnerOrUserIsNotBelieved) {
    EXPECT_STREQ("its owner is not known", ReasonForDistrust({}, {kAnn}));
    EXPECT_STREQ("the user is not known", ReasonForDistrust({kAnn}, {}));
    EXPECT_FALSE(Believes({}, {}));
    EXPECT_FALSE(Believes({}, {kSystemAccount}));
}

TEST(ObjectTrustTest, ObjectOfWhichTheSystemRecordsNothingIsBelieved) {
    const ObjectOrigin unrecorded = {{}, false, kMediumLevel, true};
    EXPECT_TRUE(Believes({kAnn}, unrecorded));
    EXPECT_TRUE(Believes({kAnn, true, kHighLevel}, unrecorded));
    EXPECT_FALSE(Believes({}, unrecorded));
}

TEST(ObjectTrustTest, LevelIsTheLastNumberOfItsIdentifier) {
    EXPECT_EQ(kMediumLevel, LevelIn("\1\1\0\0\0\0\0\x10\0\x20\0\0"s));
    EXPECT_EQ(0xFEDCBA98U, LevelIn("\1\1\0\0\0\0\0\x10\x98\xBA\xDC\xFE"s));
    EXPECT_EQ(0U, LevelIn("\1\1\0\0\0\0\0\x10\0\x20\0"s));
    EXPECT_EQ(0U, LevelIn(""));
}

}  // namespace
}  // namespace depot
