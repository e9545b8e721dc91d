// Settings of the user and the machine, and policies, as they reach the locations of depots.
#include "config/directory_defaults.h"
#include "model/depot_paths.h"
#include "model/depots_fixture.h"
#include "model/shared_definitions.h"
#include "platform/managed_key.h"

namespace depot {
namespace {

constexpr char kLocale[] = "Software\\DepotTests\\Locale";

class DirectorySettingsTest : public test::DepotsFixture {
protected:
    DirectorySettingsTest() {
        InstallLocalization({.languageCode = [] { return std::string("eng"); },
                             .settingsKey = kLocale,
                             .systemLanguage = [] { return 0x409U; }});
        user_.Text("A", "Path1", "dc=x");
        user_.Dword("A", "Type1", kDirectoryLocation);
        user_.Dword("A", "Offline1", 1);
        user_.Text("A", "Path2", "dc=y");
        user_.Dword("A", "Type2", kDirectoryLocation);
        user_.Text("A", "Path3", "C:\\x");
    }
    ~DirectorySettingsTest() override { FreeSharedDefinitions(); }

    static const CDepotPath& Location(const CDepots& depots, std::size_t number) {
        return *depots.At(0)->paths->At(number - 1);
    }

    const test::ScratchKey policies_{HKEY_LOCAL_MACHINE, PolicyKeyOf(kDefaultsKey)};
    const test::ScratchKey usersPolicies_{HKEY_CURRENT_USER, PolicyKeyOf(kDefaultsKey)};
    const test::ScratchKey preferences_{HKEY_CURRENT_USER, kDefaultsKey};
};

TEST_F(DirectorySettingsTest, DefaultsReachDirectoriesThatAreSilent) {
    preferences_.Dword("", "Offline", 1);
    preferences_.Dword("", "KeepConnection", 60);
    policies_.Dword("", "KeepConnection", 5);
    policies_.Dword("", "OfflineSize", 5000);
    const CDepots depots(kKey);
    EXPECT_EQ(1U, Location(depots, 2).offline);
    EXPECT_EQ(5U, Location(depots, 2).keepConnection);
    EXPECT_EQ(100U, Location(depots, 2).offlineSize);
    EXPECT_EQ(0U, Location(depots, 3).offline);
    EXPECT_EQ(0U, Location(depots, 3).keepConnection);
}

TEST_F(DirectorySettingsTest, PolicySwitchesOfflineOffWhateverTheUserSays) {
    EXPECT_EQ(1U, Location(CDepots(kKey), 1).offline);
    usersPolicies_.Dword("", kOfflineAllowed, 0);
    preferences_.Dword("", kOfflineAllowed, 1);
    EXPECT_EQ(0U, Location(CDepots(kKey), 1).offline);
    policies_.Dword("", kOfflineAllowed, 1);
    EXPECT_EQ(1U, Location(CDepots(kKey), 1).offline);
}

TEST_F(DirectorySettingsTest, ChangeOfASettingIsInTheNextList) {
    for (int count = 0; count < 2; ++count) const CDepots depots(kKey);
    ASSERT_NE(nullptr, SharedDefinitions(kKey));
    policies_.Dword("", "KeepConnection", 60);
    EXPECT_EQ(nullptr, SharedDefinitions(kKey));
    EXPECT_EQ(60U, Location(CDepots(kKey), 1).keepConnection);
    const CDepots again(kKey);
    ASSERT_NE(nullptr, SharedDefinitions(kKey));
    preferences_.Dword("", "Offline", 1);
    EXPECT_EQ(1U, Location(CDepots(kKey), 2).offline);
}

TEST_F(DirectorySettingsTest, FoldersAloneAskForNoSettings) {
    RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
    Define(user_, "A");
    CDepots depots(kKey);
    EXPECT_EQ(0U, Location(depots, 1).offline);
    policies_.Dword("", "KeepConnection", 60);
    // Read on first need only, and then not yet.
    EXPECT_EQ(60U, depots.DefaultsOfDirectories().keepConnection);
}

}  // namespace
}  // namespace depot
