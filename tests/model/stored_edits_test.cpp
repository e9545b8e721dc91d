#include "model/stored_edits.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace depot {
namespace {

constexpr char kEntry[] = "cn=a.kra,dc=test";
constexpr std::string_view kOld = "[S]\r\nK=old\r\nL=old\r\n";
constexpr std::string_view kStored = "[S]\r\nK=ours\r\nL=old\r\n";
// What someone else made of the first.
constexpr std::string_view kLacking = "[S]\r\nK=old\r\nL=theirs\r\n";

std::span<const std::uint8_t> Bytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

class StoredEditsTest : public testing::Test {
protected:
    static std::string Lost(StoredEdits& edits, std::string_view present,
                            const std::string& dn = kEntry) {
        const auto lost = edits.TakeLost(dn, Bytes(present));
        return lost ? std::string(lost->begin(), lost->end()) : "(nothing)";
    }
    static void Note(StoredEdits& edits, const std::string& dn = kEntry) {
        edits.Note(dn, Bytes(kOld), Bytes(kStored));
    }

    StoredEdits edits_{false};
    StoredEdits replicas_{true};
};

TEST_F(StoredEditsTest, VersionThatLacksAnEditHasItReturnedOnce) {
    Note(edits_);
    EXPECT_EQ(kStored, Lost(edits_, kLacking));
    EXPECT_EQ("(nothing)", Lost(edits_, kLacking));
}

TEST_F(StoredEditsTest, EntryIsKnownByEverySpellingOfItsName) {
    Note(edits_);
    EXPECT_EQ(kStored, Lost(edits_, kLacking, "CN=A.kra, DC=test"));
}

TEST_F(StoredEditsTest, AddedValueThatIsMissingIsLost) {
    edits_.Note(kEntry, Bytes("[S]\r\nK=old\r\n"), Bytes("[S]\r\nK=old\r\nNew=1\r\n"));
    EXPECT_EQ("[S]\r\nK=old\r\nNew=1\r\n", Lost(edits_, "[S]\r\nK=theirs\r\n"));
}

TEST_F(StoredEditsTest, LateReplicaIsAskedAgain) {
    Note(edits_);
    EXPECT_EQ("(nothing)", Lost(edits_, kOld));
    EXPECT_EQ("(nothing)", Lost(edits_, kStored));
    EXPECT_EQ(kStored, Lost(edits_, kLacking));
}

TEST_F(StoredEditsTest, VersionThatGoesOnFromTheEditLostNothing) {
    Note(edits_);
    EXPECT_EQ("(nothing)", Lost(edits_, "[S]\r\nK=ours\r\nL=theirs\r\n"));
}

TEST_F(StoredEditsTest, ValueThatWasChangedOnceMoreIsLostAmongReplicasAlone) {
    for (StoredEdits* const edits : {&edits_, &replicas_}) Note(*edits);
    constexpr std::string_view kLater = "[S]\r\nK=theirs\r\nL=old\r\n";
    EXPECT_EQ("(nothing)", Lost(edits_, kLater));
    EXPECT_EQ(kStored, Lost(replicas_, kLater));
}

TEST_F(StoredEditsTest, FileThatIsNoProfileLosesNothing) {
    Note(replicas_);
    EXPECT_EQ("(nothing)", Lost(replicas_, std::string_view("\0\1\2", 3)));
}

TEST_F(StoredEditsTest, LaterEditTakesThePlaceOfTheFirst) {
    Note(edits_);
    edits_.Note(kEntry, Bytes(kStored), Bytes("[S]\r\nK=ours\r\nL=ours\r\n"));
    EXPECT_EQ("[S]\r\nK=ours\r\nL=ours\r\n", Lost(edits_, "[S]\r\nK=theirs\r\nL=old\r\n"));
}

TEST_F(StoredEditsTest, OldestEditsGiveWay) {
    const auto entry = [](int number) { return "cn=" + std::to_string(number) + ",dc=test"; };
    for (int number = 0; number < 65; ++number) Note(edits_, entry(number));
    EXPECT_EQ("(nothing)", Lost(edits_, kLacking, entry(0)));
    EXPECT_EQ(kStored, Lost(edits_, kLacking, entry(1)));
    const std::string large = "[S]\r\nK=" + std::string(4 * 1024 * 1024 - 20, 'x') + "\r\n";
    edits_.Note(entry(2), Bytes("[S]\r\n"), Bytes(large));
    EXPECT_EQ("(nothing)", Lost(edits_, kLacking, entry(64)));
    edits_.Note(entry(2), Bytes(large), Bytes(large + "L=ours\r\n"));
    EXPECT_EQ("(nothing)", Lost(edits_, kLacking, entry(2)));
}

}  // namespace
}  // namespace depot
