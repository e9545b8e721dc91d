#include "macros/macro_values.h"

#include <gtest/gtest.h>

#include "macros/fake_macro_system.h"

namespace depot {
namespace {

constexpr const char* kVersionsOfA[] = {"13.00", "12.00", "11.00", "10.00", "9.00",
                                        "8.00",  "7.11",  "7.10",  "7.00"};

std::string Key(const std::string& version, const std::string& product) {
    return "Software\\Quillon\\Farrow\\" + version + "\\" + product;
}

std::vector<std::string> UserFolderKeys() {
    std::vector<std::string> keys;
    for (const char* version : kVersionsOfA) keys.push_back(Key(version, "Wharfside"));
    return keys;
}

std::vector<std::string> HomeFolderKeys() {
    std::vector<std::string> keys = UserFolderKeys();
    keys.back() += Key("13.00", "Security");  // the two names that run together
    for (const char* version : {"12.00", "11.00", "10.00", "9.00"}) {
        keys.push_back(Key(version, "Security"));
    }
    for (const char* version : kVersionsOfA) keys.push_back(Key(version, "Quillon Commons"));
    return keys;
}

class ProductValuesTest : public testing::Test {
protected:
    std::optional<std::string> UserFolder() { return ProductUserFolder({system_}); }
    std::optional<std::string> HomeFolder() { return ProductHomeFolder({system_}); }

    // Checks that the keys were read in this order, the user's before the machine's.
    void ExpectKeysRead(const std::vector<std::string>& keys) {
        ASSERT_EQ(2 * keys.size(), system_.keysRead.size());
        for (std::size_t i = 0; i < keys.size(); ++i) {
            SCOPED_TRACE(keys[i]);
            EXPECT_EQ(std::make_pair(Hive::kCurrentUser, keys[i]), system_.keysRead[2 * i]);
            EXPECT_EQ(std::make_pair(Hive::kLocalMachine, keys[i]), system_.keysRead[2 * i + 1]);
        }
    }

    test::FakeMacroSystem system_;
};

TEST_F(ProductValuesTest, UserFolderIsSearchedFromTheNewestProductOn) {
    EXPECT_EQ("", UserFolder());
    ExpectKeysRead(UserFolderKeys());
}

TEST_F(ProductValuesTest, HomeFolderIsSearchedInTwentyTwoKeys) {
    EXPECT_EQ(std::nullopt, HomeFolder());
    ASSERT_EQ(22u, HomeFolderKeys().size());
    ExpectKeysRead(HomeFolderKeys());
}

TEST_F(ProductValuesTest, EveryKeyOfBothListsServes) {
    for (const Hive hive : {Hive::kCurrentUser, Hive::kLocalMachine}) {
        for (const std::string& key : UserFolderKeys()) {
            system_.registry = {{{hive, key}, {{"UserDir", "C:\\u\\"}, {"HomeDir64", ""}}}};
            EXPECT_EQ("C:\\u", UserFolder()) << key;
        }
        for (const std::string& key : HomeFolderKeys()) {
            system_.registry = {{{hive, key}, {{"HomeDir64", "C:\\h\\"}, {"UserDir", ""}}}};
            EXPECT_EQ("C:\\h", HomeFolder()) << key;
        }
    }
}

TEST_F(ProductValuesTest, RunTogetherKeysAreNotSearchedByThemselves) {
    system_.Store(Hive::kCurrentUser, Key("7.00", "Wharfside"), "HomeDir64", "C:\\a");
    system_.Store(Hive::kLocalMachine, Key("13.00", "Security"), "HomeDir64", "C:\\b");
    EXPECT_EQ(std::nullopt, HomeFolder());
}

TEST_F(ProductValuesTest, EmptyValueLetsTheSearchContinue) {
    system_.Store(Hive::kCurrentUser, Key("13.00", "Wharfside"), "UserDir", "");
    system_.registry[{Hive::kLocalMachine, Key("13.00", "Wharfside")}];
    system_.Store(Hive::kCurrentUser, Key("12.00", "Wharfside"), "UserDir", "C:\\twelve");
    system_.Store(Hive::kLocalMachine, Key("12.00", "Wharfside"), "UserDir", "C:\\late");
    EXPECT_EQ("C:\\twelve", UserFolder());
    EXPECT_EQ(3u, system_.keysRead.size());
}

TEST_F(ProductValuesTest, LoneBackslashCountsAsFoundAndGivesAnEmptyFolder) {
    system_.Store(Hive::kCurrentUser, Key("13.00", "Wharfside"), "HomeDir64", "\\");
    EXPECT_EQ("", HomeFolder());
}

TEST_F(ProductValuesTest, NestedExpansionLeavesTheHomeFolderChoiceStanding) {
    EXPECT_EQ(std::nullopt, ProductOrApplicationFolder({system_, true}));
    EXPECT_TRUE(system_.keysRead.empty());
}

}  // namespace
}  // namespace depot
