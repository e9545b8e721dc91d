#include "platform/managed_key.h"

#include <gtest/gtest.h>

#include "support/scratch.h"

namespace depot::test {
namespace {

constexpr char kKey[] = "Software\\DepotTests\\Managed";
constexpr char kPolicies[] = "Software\\Policies\\DepotTests\\Managed";

class ManagedKeyTest : public testing::Test {
protected:
    // In the order in which they count.
    const ScratchKey places_[4] = {{HKEY_LOCAL_MACHINE, kPolicies},
                                   {HKEY_CURRENT_USER, kPolicies},
                                   {HKEY_CURRENT_USER, kKey},
                                   {HKEY_LOCAL_MACHINE, kKey}};
};

TEST_F(ManagedKeyTest, PoliciesStandBesideTheKeyUnderTheirOwn) {
    EXPECT_EQ(kPolicies, PolicyKeyOf(kKey));
    EXPECT_EQ(0U, PolicyKeyOf("Software\\Quillon\\Farrow").find(kPoliciesKey));
}

TEST_F(ManagedKeyTest, WithoutKeysThereIsNothing) {
    const ManagedKey key(kKey);
    EXPECT_TRUE(key.IsEmpty());
    EXPECT_FALSE(key.Text("Name"));
    EXPECT_FALSE(key.Number("Name"));
}

TEST_F(ManagedKeyTest, MachinePolicyWinsThenTheUsersThenTheUserThenTheMachine) {
    for (std::size_t place = 4; place-- > 0;) {
        places_[place].Text("", "Text", std::to_string(place));
        places_[place].Dword("", "Number", static_cast<DWORD>(place));
        const ManagedKey key(kKey);
        ASSERT_TRUE(key.Text("Text") && key.Number("Number"));
        EXPECT_EQ(std::to_string(place), key.Text("Text")->value);
        EXPECT_EQ(SettingPlace(place), key.Text("Text")->place);
        EXPECT_EQ(place, key.Number("Number")->value);
        EXPECT_EQ(SettingPlace(place), key.Number("Number")->place);
        EXPECT_EQ(place < 2, key.Number("Number")->IsPolicy());
    }
}

TEST_F(ManagedKeyTest, UnusableValuesLeaveTheWordToTheNextPlace) {
    places_[0].Text("", "Number", "7");
    places_[1].Raw("", "Number", REG_DWORD, "\7\0");
    places_[2].Dword("", "Number", 8);
    places_[3].Dword("", "Number", 5);
    places_[0].Text("", "Text", std::string(100000, 'x'));
    places_[3].Text("", "Text", "%s%n");
    const ManagedKey key(kKey);
    ASSERT_TRUE(key.Number("Number", {1, 7}));
    EXPECT_EQ(5U, key.Number("Number", {1, 7})->value);
    EXPECT_FALSE(key.Number("Number", {9, 9}));
    ASSERT_TRUE(key.Text("Text"));
    EXPECT_EQ("%s%n", key.Text("Text")->value);
}

TEST_F(ManagedKeyTest, PoliciesAloneLeavePreferencesOut) {
    places_[2].Dword("", "Number", 1);
    places_[3].Dword("", "Number", 1);
    EXPECT_TRUE(ManagedKey(kKey, ManagedKey::Part::kPoliciesOnly).IsEmpty());
    places_[1].Dword("", "Number", 2);
    EXPECT_EQ(2U, ManagedKey(kKey, ManagedKey::Part::kPoliciesOnly).Number("Number")->value);
}

}  // namespace
}  // namespace depot::test
