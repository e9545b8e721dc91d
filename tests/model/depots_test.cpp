// What a list of depots loads from the registry.
#include "model/depots.h"

#include "model/depots_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;
using test::Names;
using testing::ElementsAre;

using DepotsTest = test::DepotsFixture;

TEST_F(DepotsTest, NoDefinitionsGiveTheBuiltInDepotAsDefault) {
    const CDepots depots(kKey);
    ASSERT_EQ(1u, depots.Count());
    EXPECT_EQ("My Depot", depots.At(0)->displayName);
    EXPECT_EQ("", depots.At(0)->name);
    EXPECT_EQ(&depots, depots.At(0)->owner);
    EXPECT_EQ(depots.At(0), depots.defaultDepot);
    EXPECT_FALSE(depots.hasConfiguredDepots);
}

TEST_F(DepotsTest, BuiltInDepotHasOneEmptyLocationWithoutAUserFolder) {
    const CDepots depots(kKey);
    ASSERT_EQ(1u, depots.At(0)->paths->Count());
    EXPECT_EQ("", depots.At(0)->paths->At(0)->path);
    EXPECT_EQ(0u, depots.At(0)->paths->At(0)->type);
    EXPECT_EQ("", depots.At(0)->paths->At(0)->locationText);
    EXPECT_EQ("", depots.At(0)->paths->GetActivePath());
}

TEST_F(DepotsTest, BuiltInDepotLiesInTheParentOfTheUserFolder) {
    const struct {
        const char* userDir;
        const char* path;
    } rows[] = {{"C:\\Users\\x\\Farrow\\", "C:\\Users\\x"},
                {"C:\\Users\\x\\Farrow", "C:\\Users\\x"},
                {"C:\\Farrow\\\\", "C:\\Farrow"},
                {"Farrow", "Farrow"},
                {"Farrow\\", "Farrow"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.userDir);
        const CDepots depots(kKey, row.userDir);
        ASSERT_EQ(1u, depots.Count());
        EXPECT_EQ(row.path, depots.At(0)->paths->At(0)->path);
    }
}

TEST_F(DepotsTest, KeyWithoutUsableDefinitionsGivesTheBuiltInDepot) {
    user_.Text("", "Path1", "C:\\not a depot");
    user_.Text("Empty", "Icon", "a.ico");
    user_.Text("Second", "Path2", "C:\\work");
    const CDepots depots(kKey);
    EXPECT_THAT(Names(depots), ElementsAre(""));
    EXPECT_FALSE(depots.hasConfiguredDepots);
}

TEST_F(DepotsTest, ConfiguredDepotsLeaveNoRoomForTheBuiltInOne) {
    Define(user_, "Work");
    const CDepots depots(kKey, "C:\\Users\\x\\Farrow\\");
    EXPECT_THAT(Names(depots), ElementsAre("Work"));
    EXPECT_TRUE(depots.hasConfiguredDepots);
    EXPECT_EQ(kKey, depots.keyPath);
    EXPECT_TRUE(depots.ownsItems);
}

TEST_F(DepotsTest, EmptyKeyPathGivesAnEmptyListThatBorrows) {
    const CDepots depots("");
    EXPECT_EQ(0u, depots.Count());
    EXPECT_FALSE(depots.ownsItems);
    EXPECT_EQ(nullptr, depots.defaultDepot);
}

TEST_F(DepotsTest, UsersDepotsComeBeforeTheMachinesAndNothingIsMerged) {
    Define(machine_, "Work");
    Define(machine_, "Able");
    Define(user_, "Work");
    Define(user_, "Zeal");
    const CDepots depots(kKey);
    EXPECT_THAT(Names(depots), ElementsAre("Work", "Zeal", "Able", "Work"));
    EXPECT_EQ(HKEY_CURRENT_USER, depots.At(0)->rootKey);
    EXPECT_EQ(HKEY_LOCAL_MACHINE, depots.At(3)->rootKey);
    EXPECT_EQ(0u, depots.At(3)->registryViewFlags);
}

TEST_F(DepotsTest, LoadingAgainReplacesEverything) {
    Define(user_, "Work");
    CDepots depots(kKey);
    RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
    EXPECT_THAT(Names(depots), ElementsAre("Work"));
    depots.userDirOverride = "C:\\Users\\x\\Farrow";
    depots.Load(kKey);
    EXPECT_THAT(Names(depots), ElementsAre(""));
    EXPECT_EQ("C:\\Users\\x", depots.At(0)->paths->At(0)->path);
    EXPECT_FALSE(depots.hasConfiguredDepots);
    EXPECT_EQ(depots.At(0), depots.defaultDepot);
    Define(machine_, "Home");
    depots.Load(kKey);
    EXPECT_THAT(Names(depots), ElementsAre("Home"));
    EXPECT_TRUE(depots.hasConfiguredDepots);
}

TEST_F(DepotsTest, EnumerateReportsWhetherTheKeyCouldBeOpened) {
    CDepots depots;
    depots.ownsItems = true;
    EXPECT_THAT(depots.EnumerateDepotKeys(HKEY_CURRENT_USER, kKey, 0), Fails());
    EXPECT_THAT(depots.EnumerateDepotKeys(HKEY_CURRENT_USER, "", 0), Fails());
    test::CreateRegistryKey(HKEY_CURRENT_USER, kKey);
    EXPECT_THAT(depots.EnumerateDepotKeys(HKEY_CURRENT_USER, kKey, 0), IsDone());
    EXPECT_EQ(0u, depots.Count());
    Define(user_, "Work");
    EXPECT_THAT(depots.EnumerateDepotKeys(HKEY_CURRENT_USER, kKey, 0), IsDone());
    EXPECT_THAT(depots.EnumerateDepotKeys(HKEY_CURRENT_USER, kKey, 0), IsDone());
    EXPECT_THAT(Names(depots), ElementsAre("Work", "Work"));
}

TEST_F(DepotsTest, EnumerateUsesTheExtraAccessForKeyAndSubkeys) {
    const test::ScratchKey narrow(HKEY_LOCAL_MACHINE, "Software\\Wow6432Node\\DepotTests\\Depots");
    Define(narrow, "Narrow");
    Define(machine_, "Wide");
    CDepots depots;
    depots.ownsItems = true;
    EXPECT_THAT(depots.EnumerateDepotKeys(HKEY_LOCAL_MACHINE, kKey, KEY_WOW64_32KEY), IsDone());
    EXPECT_THAT(depots.EnumerateDepotKeys(HKEY_LOCAL_MACHINE, kKey, KEY_WOW64_64KEY), IsDone());
    ASSERT_THAT(Names(depots), ElementsAre("Narrow", "Wide"));
    EXPECT_EQ(REGSAM{KEY_WOW64_32KEY}, depots.At(0)->registryViewFlags);
    EXPECT_EQ(REGSAM{KEY_WOW64_64KEY}, depots.At(1)->registryViewFlags);
}

TEST_F(DepotsTest, LanguageOfTheUserInterfaceChoosesTheDisplayName) {
    Define(user_, "Work");
    user_.Text("Work", "DisplayName.fra", "Travail");
    user_.Text("Work", "DisplayName.deu", "Arbeit");
    EXPECT_EQ("Travail", CDepots(kKey).At(0)->displayName);
    InstallLocalization({[] { return std::string("deu"); }});
    EXPECT_EQ("Arbeit", CDepots(kKey).At(0)->displayName);
}

}  // namespace
}  // namespace depot
