#include "platform/known_folders.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include "support/hive_override.h"
#include "support/leak_counts.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::IsOk;

constexpr char kScheme[] = "AppEvents\\Schemes\\Apps\\.Default";
constexpr char kExclamation[] = "SystemExclamation\\.Default";
constexpr char kStart[] = "SystemStart\\.Default";

class SystemSoundFolderTest : public testing::Test {
protected:
    test::HiveOverride hive_{HKEY_CURRENT_USER};
    test::ScratchKey scheme_{HKEY_CURRENT_USER, kScheme};
};

// What the shell itself makes of the identifier.
std::string ShellsPath(int folder) {
    char path[MAX_PATH] = {};
    ITEMIDLIST* list = nullptr;
    EXPECT_THAT(SHGetSpecialFolderLocation(nullptr, folder, &list), IsOk());
    EXPECT_TRUE(SHGetPathFromIDListA(list, path));
    ILFree(list);
    return path;
}

TEST(SpecialFolderPathTest, KnownFoldersAreThoseOfTheShell) {
    for (const int folder : {CSIDL_PERSONAL, CSIDL_APPDATA, CSIDL_WINDOWS, CSIDL_LOCAL_APPDATA}) {
        SCOPED_TRACE(folder);
        EXPECT_EQ(ShellsPath(folder), GetSpecialFolderPath(folder));
        EXPECT_TRUE(test::Exists(GetSpecialFolderPath(folder)));
    }
}

TEST(SpecialFolderPathTest, UnknownFolderIsEmpty) {
    EXPECT_EQ("", GetSpecialFolderPath(0x7F));
    EXPECT_EQ("", GetSpecialFolderPath(-1));
}

TEST(SpecialFolderPathTest, ItemListsAreFreed) {
    for (const int folder : {CSIDL_PERSONAL, CSIDL_WINDOWS, 0x7F}) {
        SCOPED_TRACE(folder);
        EXPECT_EQ(0u, test::CountLeftovers([folder] { GetSpecialFolderPath(folder); }, 200));
    }
}

TEST_F(SystemSoundFolderTest, FolderIsThatOfTheWarningSound) {
    scheme_.Text(kExclamation, "", "C:\\media\\warn\\x.wav");
    scheme_.Text(kStart, "", "C:\\media\\start\\x.wav");
    EXPECT_EQ("C:\\media\\warn", GetSystemSoundFolder());
}

TEST_F(SystemSoundFolderTest, EmptyOrMissingWarningSoundLeavesTheStartSound) {
    scheme_.Text(kStart, "", "C:\\media\\start\\x.wav");
    EXPECT_EQ("C:\\media\\start", GetSystemSoundFolder());
    scheme_.Text(kExclamation, "", "");
    EXPECT_EQ("C:\\media\\start", GetSystemSoundFolder());
}

TEST_F(SystemSoundFolderTest, NoSoundIsEmpty) {
    EXPECT_EQ("", GetSystemSoundFolder());
    scheme_.Text(kExclamation, "", "");
    scheme_.Text(kStart, "", "");
    EXPECT_EQ("", GetSystemSoundFolder());
}

TEST_F(SystemSoundFolderTest, SoundWithoutAFolderIsEmpty) {
    scheme_.Text(kExclamation, "", "x.wav");
    scheme_.Text(kStart, "", "C:\\media\\x.wav");
    EXPECT_EQ("", GetSystemSoundFolder());
}

TEST_F(SystemSoundFolderTest, SoundOfMoreThan260BytesIsNotRead) {
    const std::string fit = "C:\\m\\" + std::string(254, 'x');
    scheme_.Text(kExclamation, "", fit);
    EXPECT_EQ("C:\\m", GetSystemSoundFolder());
    scheme_.Text(kExclamation, "", fit + "y");
    EXPECT_EQ("", GetSystemSoundFolder());
}

}  // namespace
}  // namespace depot
