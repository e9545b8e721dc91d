#include <gtest/gtest.h>

#include "config/depot_path.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kKey[] = "Software\\DepotTests\\Security";

// Settings of a location that are off unless an administrator wants them.
class SecuritySettingTest : public testing::Test {
protected:
    CDepotPath Load() {
        key_.Text("", "Path1", "dc=x");
        CDepotPath location(nullptr);
        EXPECT_EQ(1, location.LoadFromRegistry(*RegistryKey::Open(HKEY_CURRENT_USER, kKey), 1));
        return location;
    }

    test::ScratchKey key_{HKEY_CURRENT_USER, kKey};
};

TEST_F(SecuritySettingTest, IsOffUnlessADirectoryLocationSetsIt) {
    key_.Dword("", "Type1", kDirectoryLocation);
    EXPECT_EQ(0u, Load().security);
    key_.Dword("", "Security1", 2);
    EXPECT_EQ(2u, Load().security);
    key_.Dword("", "Type1", kFolderLocation);
    EXPECT_EQ(0u, Load().security);
}

TEST_F(SecuritySettingTest, OfAnotherKindIsIgnored) {
    key_.Dword("", "Type1", kDirectoryLocation);
    key_.Text("", "Security1", "2");
    EXPECT_EQ(0u, Load().security);
}

TEST_F(SecuritySettingTest, IsCopiedAndReset) {
    key_.Dword("", "Type1", kDirectoryLocation);
    key_.Dword("", "Security1", 1);
    CDepotPath location(Load());
    CDepotPath copy(location);
    EXPECT_EQ(1u, copy.security);
    copy.Reset(nullptr);
    EXPECT_EQ(0u, copy.security);
}

using ConflictSettingTest = SecuritySettingTest;

TEST_F(ConflictSettingTest, IsOffUnlessADirectoryLocationSetsIt) {
    key_.Dword("", "Type1", kDirectoryLocation);
    EXPECT_EQ(0u, Load().detectConflicts);
    key_.Text("", "DetectConflicts1", "1");
    EXPECT_EQ(0u, Load().detectConflicts);
    key_.Dword("", "DetectConflicts1", 1);
    EXPECT_EQ(1u, Load().detectConflicts);
    key_.Dword("", "Type1", kFolderLocation);
    EXPECT_EQ(0u, Load().detectConflicts);
}

TEST_F(ConflictSettingTest, IsCopiedAndReset) {
    key_.Dword("", "Type1", kDirectoryLocation);
    key_.Dword("", "DetectConflicts1", 1);
    CDepotPath copy(Load());
    EXPECT_EQ(1u, copy.detectConflicts);
    copy.Reset(nullptr);
    EXPECT_EQ(0u, copy.detectConflicts);
}

}  // namespace
}  // namespace depot
