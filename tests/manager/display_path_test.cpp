#include "manager/display_path.h"

#include <gtest/gtest.h>

#include "manager/depot_world.h"
#include "platform/text.h"
#include "support/code_pages.h"
#include "support/random_text.h"

namespace depot {
namespace {

class DisplayPathTest : public testing::Test {
protected:
    test::DepotWorld world_;
    CDepots& depots_ = world_.depots;
    CDepot& work_ = world_.Add("Work", "Travail", "w");
    CDepot& home_ = world_.Add("Home", "Maison", "h");
    std::string root_ = world_.folder.At("w\\");
};

// A list that holds nothing but a depot without a key name.
class UnnamedDepotTest : public testing::Test {
protected:
    test::DepotWorld world_;
    CDepot& depot_ = world_.Add("", "My Depot", "m");
    std::string root_ = world_.folder.At("m\\");
};

TEST_F(DisplayPathTest, BuildingTheDisplayFormUsesTheChosenName) {
    EXPECT_EQ("<Work>\\a\\b", BuildDisplayPath(work_, "a\\b", PathForm::kDisplay, DepotName::kKey));
    EXPECT_EQ("<Travail>\\a\\b",
              BuildDisplayPath(work_, "a\\b", PathForm::kDisplay, DepotName::kDisplay));
    EXPECT_EQ("<Work>\\", BuildDisplayPath(work_, "", PathForm::kDisplay, DepotName::kKey));
}

TEST_F(DisplayPathTest, BuildingTheStorageFormUsesTheRoot) {
    for (const DepotName name : {DepotName::kKey, DepotName::kDisplay}) {
        EXPECT_EQ(root_ + "a\\b", BuildDisplayPath(work_, "a\\b", PathForm::kStorage, name));
        EXPECT_EQ(root_, BuildDisplayPath(work_, "", PathForm::kStorage, name));
    }
}

TEST_F(DisplayPathTest, PrefixInsideTheRelativePathIsReplacedToo) {
    EXPECT_EQ(root_ + "a\\" + root_ + "b",
              BuildDisplayPath(work_, "a\\<WORK>\\b", PathForm::kStorage, DepotName::kKey));
}

TEST_F(UnnamedDepotTest, DepotWithoutAKeyNameAlwaysBuildsTheStorageForm) {
    for (const PathForm form : {PathForm::kDisplay, PathForm::kStorage}) {
        for (const DepotName name : {DepotName::kKey, DepotName::kDisplay}) {
            EXPECT_EQ(root_ + "a", BuildDisplayPath(depot_, "a", form, name));
            EXPECT_EQ(root_, BuildDisplayPath(depot_, "", form, name));
        }
    }
}

TEST_F(UnnamedDepotTest, StoragePathsPassBothConversionsUnchanged) {
    for (const std::string& path : {root_ + "a", root_, std::string("<My Depot>\\a"),
                                    std::string("<>\\a"), std::string("C:\\x"), std::string()}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(path, DisplayToStorage(depot_, path));
        EXPECT_EQ(path, StorageToDisplay(depot_, path));
    }
}

TEST_F(UnnamedDepotTest, ItIsFoundByItsRootOnly) {
    EXPECT_EQ(&depot_,
              FindDepotForPath(world_.depots, root_ + "a", PathForm::kDisplay, DepotName::kKey));
    EXPECT_EQ(&depot_, FindDepotHolding(world_.depots, root_ + "a"));
    EXPECT_EQ(nullptr, FindDepotHolding(world_.depots, "<My Depot>\\a"));
    EXPECT_EQ(nullptr, FindDepotHolding(world_.depots, "<>\\a"));
}

TEST_F(UnnamedDepotTest, EmptyRootHoldsNoPath) {
    test::DepotWorld empty;
    CDepot& depot = empty.AddAt("", "My Depot", "");
    EXPECT_EQ("a", BuildDisplayPath(depot, "a", PathForm::kDisplay, DepotName::kKey));
    EXPECT_EQ("", BuildDisplayPath(depot, "", PathForm::kDisplay, DepotName::kKey));
    for (const char* path : {"", "a", "C:\\a", "<My Depot>\\a"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(nullptr, FindDepotHolding(empty.depots, path));
        EXPECT_EQ(path, DisplayToStorage(depot, path));
        EXPECT_EQ(path, StorageToDisplay(depot, path));
    }
}

TEST_F(DisplayPathTest, MatchingComparesWithTheChosenPrefix) {
    EXPECT_TRUE(MatchesPath(work_, "<WORK>\\a.txt", PathForm::kDisplay, DepotName::kKey));
    EXPECT_TRUE(MatchesPath(work_, "<Work>", PathForm::kDisplay, DepotName::kKey));
    EXPECT_FALSE(MatchesPath(work_, "<Travail>\\a", PathForm::kDisplay, DepotName::kKey));
    EXPECT_TRUE(MatchesPath(work_, "<travail>\\a", PathForm::kDisplay, DepotName::kDisplay));
    EXPECT_FALSE(MatchesPath(work_, "<Work>\\a", PathForm::kDisplay, DepotName::kDisplay));
    EXPECT_TRUE(MatchesPath(work_, ToLower(root_) + "A", PathForm::kStorage, DepotName::kKey));
    EXPECT_FALSE(MatchesPath(work_, "<Work>\\a", PathForm::kStorage, DepotName::kKey));
    EXPECT_FALSE(MatchesPath(work_, "<Workshop>\\x", PathForm::kDisplay, DepotName::kKey));
    EXPECT_FALSE(MatchesPath(work_, "<Wor>\\x", PathForm::kDisplay, DepotName::kKey));
}

TEST_F(DisplayPathTest, DisplayPathsConvertToTheRootAndTheRest) {
    EXPECT_EQ(root_ + "a.txt", DisplayToStorage(work_, "<WORK>\\a.txt"));
    EXPECT_EQ(root_, DisplayToStorage(work_, "<Work>\\"));
}

TEST_F(DisplayPathTest, BareBracketedNameIsConvertedToTheRoot) {
    EXPECT_EQ(root_, DisplayToStorage(work_, "<Work>"));
    EXPECT_EQ(root_, DisplayToStorage(work_, "<WORK>"));
    EXPECT_EQ("<Home>", DisplayToStorage(work_, "<Home>"));
}

TEST_F(DisplayPathTest, EveryOccurrenceOfThePrefixIsConverted) {
    EXPECT_EQ(root_ + "sub\\" + root_ + "b", DisplayToStorage(work_, "<Work>\\sub\\<work>\\b"));
}

TEST_F(DisplayPathTest, TextsWithoutThePrefixAreConvertedToThemselves) {
    for (const char* path : {"", "a", "<Wor>", "<Travail>\\a", "<Workshop>\\a", "C:\\a", "Work\\a",
                             "Work>\\a", "<None>\\a", "\\\\server\\a"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(path, DisplayToStorage(work_, path));
        EXPECT_EQ(path, StorageToDisplay(work_, path));
    }
}

TEST_F(DisplayPathTest, StoragePathsConvertToThePrefixAndTheRest) {
    EXPECT_EQ("<Work>\\a.txt", StorageToDisplay(work_, root_ + "a.txt"));
    EXPECT_EQ("<Work>\\A", StorageToDisplay(work_, ToLower(root_) + "A"));
    EXPECT_EQ("<Work>\\", StorageToDisplay(work_, root_));
    EXPECT_EQ(root_.substr(0, root_.size() - 1),
              StorageToDisplay(work_, root_.substr(0, root_.size() - 1)));
    EXPECT_EQ("<Work>\\a\\<Work>\\b", StorageToDisplay(work_, root_ + "a\\" + root_ + "b"));
    EXPECT_EQ(world_.folder.At("h\\a"), StorageToDisplay(work_, world_.folder.At("h\\a")));
}

TEST_F(DisplayPathTest, PathsOfAHundredThousandCharactersConvertWhole) {
    const std::string tail(100'000, 'x');
    EXPECT_EQ(root_ + tail, DisplayToStorage(work_, "<Work>\\" + tail));
    EXPECT_EQ("<Work>\\" + tail, StorageToDisplay(work_, root_ + tail));
    EXPECT_EQ(&work_, FindDepotHolding(depots_, "<Work>\\" + tail));
    EXPECT_EQ(nullptr, FindDepotHolding(depots_, tail));
}

TEST_F(DisplayPathTest, TextsBehindANulAreKept) {
    const std::string tail("a\0b", 3);
    EXPECT_EQ(root_ + tail, DisplayToStorage(work_, "<Work>\\" + tail));
    EXPECT_EQ("<Work>\\" + tail, StorageToDisplay(work_, root_ + tail));
}

TEST_F(DisplayPathTest, RandomRelativePathsSurviveTheRoundTrip) {
    test::RandomTexts random(0x5EED40);
    for (int round = 0; round < 3000; ++round) {
        const std::string relative = random.Text(12, "aB.<\\ \xC4");
        SCOPED_TRACE(relative);
        const std::string display = "<Work>\\" + relative;
        ASSERT_EQ(root_ + relative, DisplayToStorage(work_, display));
        ASSERT_EQ(display, StorageToDisplay(work_, DisplayToStorage(work_, display)));
        ASSERT_EQ(&work_, FindDepotHolding(depots_, display));
        ASSERT_EQ(&work_, FindDepotHolding(depots_, root_ + relative));
    }
}

TEST_F(DisplayPathTest, ProfileFolderHasBothForms) {
    EXPECT_EQ("", work_.profileFolder);
    EXPECT_EQ(root_ + "Profile", ProfileFolder(work_, PathForm::kStorage));
    EXPECT_EQ("<Work>\\Profile", ProfileFolder(work_, PathForm::kDisplay));
    EXPECT_EQ("<Work>\\Profile", work_.profileFolder);
    EXPECT_EQ("<Work>\\Profile", ProfileFolder(work_, PathForm::kDisplay));
}

TEST_F(UnnamedDepotTest, ItsProfileFolderIsAStoragePath) {
    EXPECT_EQ(root_ + "Profile", ProfileFolder(depot_, PathForm::kStorage));
    EXPECT_EQ(root_ + "Profile", ProfileFolder(depot_, PathForm::kDisplay));
}

TEST_F(DisplayPathTest, FirstMatchingDepotInListOrderIsFound) {
    world_.Add("Work", "Autre", "w2");
    EXPECT_EQ(&work_, FindDepotForPath(depots_, "<work>\\a", PathForm::kDisplay, DepotName::kKey));
    EXPECT_EQ(&home_, FindDepotForPath(depots_, "<home>", PathForm::kDisplay, DepotName::kKey));
    EXPECT_EQ(&home_,
              FindDepotForPath(depots_, "<Maison>\\", PathForm::kDisplay, DepotName::kDisplay));
    EXPECT_EQ(nullptr, FindDepotForPath(depots_, "<None>\\a", PathForm::kDisplay, DepotName::kKey));
    EXPECT_EQ(nullptr, FindDepotForPath(depots_, "", PathForm::kDisplay, DepotName::kKey));
    EXPECT_EQ(nullptr,
              FindDepotForPath(CDepots(), "<Work>\\a", PathForm::kDisplay, DepotName::kKey));
}

TEST_F(DisplayPathTest, DepotInsideAnotherOnesRootYieldsToTheEarlierDepot) {
    CDepot& inner = world_.Add("Inner", "Inner", "w\\inner");
    EXPECT_EQ(&work_, FindDepotHolding(depots_, root_ + "inner\\a"));
    EXPECT_EQ(&inner, FindDepotHolding(depots_, "<Inner>\\a"));
}

TEST_F(DisplayPathTest, DisplayFormOfALaterDepotComesBeforeTheStorageFormOfAnEarlierOne) {
    CDepot& odd = world_.AddAt("Odd", "Odd", "<Home>");
    EXPECT_EQ(&home_, FindDepotHolding(depots_, "<Home>\\a"));
    EXPECT_EQ(&odd, FindDepotForPath(depots_, "<Home>\\a", PathForm::kStorage, DepotName::kKey));
}

TEST_F(DisplayPathTest, OutsideEveryRootNoDepotHoldsAPath) {
    for (const char* path : {"", "a.kra", "C:\\none\\a.kra", "\\\\server\\share\\a.kra",
                             "<None>\\a", "<Travail>\\a", "Work>\\a", "<Work"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(nullptr, FindDepotHolding(depots_, path));
    }
}

TEST_F(DisplayPathTest, FriendlyPathBecomesTheCanonicalOne) {
    EXPECT_EQ("<Work>\\a", FriendlyToCanonical(depots_, "<Travail>\\a"));
    EXPECT_EQ("<Work>\\a", FriendlyToCanonical(depots_, "<TRAVAIL>\\a"));
    EXPECT_EQ("<Home>\\a\\<Home>\\b", FriendlyToCanonical(depots_, "<Maison>\\a\\<maison>\\b"));
}

TEST_F(DisplayPathTest, OtherPathsStayAsTheyAreInTheFriendlyForm) {
    for (const char* path : {"<Work>\\a", "<None>\\a", "C:\\a", "", "a", "<Travailler>\\a"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(path, FriendlyToCanonical(depots_, path));
    }
}

TEST_F(DisplayPathTest, BareFriendlyNameHasNothingToReplace) {
    EXPECT_EQ("<Travail>", FriendlyToCanonical(depots_, "<Travail>"));
}

TEST_F(DisplayPathTest, GivenDepotIsUsedWithoutASearch) {
    EXPECT_EQ("<Work>\\a", FriendlyToCanonical(depots_, "<Travail>\\a", &work_));
    EXPECT_EQ("<Maison>\\a", FriendlyToCanonical(depots_, "<Maison>\\a", &work_));
    EXPECT_EQ("x\\<Work>\\a", FriendlyToCanonical(depots_, "x\\<travail>\\a", &work_));
}

TEST_F(DisplayPathTest, AccentedNamesMatchInAnyCaseOfTheCodePage) {
    const test::CodePageScope scope(GetACP());
    CDepot& depot = world_.Add("\xC9t\xE9", "\xC9t\xE9", "e");
    EXPECT_EQ(&depot, FindDepotHolding(depots_, "<\xE9T\xC9>\\a"));
    EXPECT_EQ(world_.folder.At("e\\a"), DisplayToStorage(depot, "<\xE9T\xC9>\\a"));
}

TEST_F(DisplayPathTest, ThousandDepotsAreSearchedToTheLast) {
    for (int number = 0; number < 1000; ++number) {
        world_.AddAt("D" + std::to_string(number), "N" + std::to_string(number), "C:\\none");
    }
    EXPECT_EQ("D999", FindDepotHolding(depots_, "<d999>\\a")->name);
    EXPECT_EQ(nullptr, FindDepotHolding(depots_, "<D1000>\\a"));
}

}  // namespace
}  // namespace depot
