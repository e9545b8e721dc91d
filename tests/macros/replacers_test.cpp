// The macros on the running system: each value is compared with what the system itself says.
#include "macros/replacers.h"

#include <gtest/gtest.h>

#include <set>

#include "platform/paths.h"
#include "platform/registry_key.h"
#include "support/hive_override.h"
#include "support/import_patch.h"
#include "support/scratch.h"
// After the Windows headers.
#include <shlobj.h>

#include "support/results.h"

namespace depot {
namespace {

using test::IsOk;

constexpr char kFarrow[] = "Software\\Quillon\\Farrow";
constexpr char kWharfside[] = "13.00\\Wharfside";
constexpr char kShellFolders[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr char kDeployment[] = "Software\\Classes\\CLSID\\{9a5e0c7c-2b0f-4c83-9d53-6d0f2f1f7a44}";

class ReplacersTest : public testing::Test {
protected:
    std::string Expand(std::string text) {
        ExpandReplacers(&values_, text);
        return text;
    }

    MacroValues values_ = {};
    test::ScratchKey user_{HKEY_CURRENT_USER, kFarrow};
    test::ScratchKey machine_{HKEY_LOCAL_MACHINE, kFarrow};
};

std::string ShellFolder(HKEY root, const char* name) {
    const auto key = RegistryKey::Open(root, kShellFolders);
    return key ? key->ReadString(name).value_or("") : std::string();
}

TEST_F(ReplacersTest, SlotsComeFromTheCacheAtTheirPlaces) {
    FillSlot(values_.applicationFolder, "C:\\app\\");
    FillSlot(values_.applicationFolderX86, "C:\\app32");
    FillSlot(values_.organization, "Quillon");
    FillSlot(values_.userFolder, "C:\\Users\\a\\");
    FillSlot(values_.profileFolder, "C:\\profile");
    FillSlot(values_.languageCode, "deu");
    FillSlot(values_.transferUserName, "upload");
    EXPECT_EQ("C:\\app;C:\\app32;Quillon;C:\\Users\\a;C:\\profile;deu;upload",
              Expand("$APPDIR$;$APPDIRX86$;$ORGANIZATION$;$USERDIR$;$PROFILEDIR$;$LANGUAGE_CODE$;"
                     "$FTPUSERNAME$"));
}

TEST_F(ReplacersTest, FullSlotsAreReadWhole) {
    FillSlot(values_.userFolder, std::string(519, 'u'));
    FillSlot(values_.profileFolder, "p");
    EXPECT_EQ(std::string(519, 'u') + "p", Expand("$USERDIR$$PROFILEDIR$"));
    values_.userFolder[519] = 'u';  // no NUL in the slot
    EXPECT_EQ(std::string(520, 'u'), Expand("$USERDIR$"));
}

TEST_F(ReplacersTest, MissingCacheMakesEverySlotEmpty) {
    std::string text = "<$USERDIR$$APPDIR$$LANGUAGE_EXTENSION$>$FTPUSERNAME$";
    ExpandReplacers(nullptr, text);
    EXPECT_EQ("<>$FTPUSERNAME$", text);
}

TEST_F(ReplacersTest, FoldersOfTheSystemAreTheSystems) {
    char windows[MAX_PATH] = {};
    GetWindowsDirectoryA(windows, sizeof(windows));
    char system[MAX_PATH] = {};
    GetSystemDirectoryA(system, sizeof(system));
    char temporary[MAX_PATH] = {};
    GetTempPathA(sizeof(temporary), temporary);
    EXPECT_EQ(system, Expand("$SYSDIR$"));
    EXPECT_EQ(std::string(windows, 2), Expand("$WINDRIVE$"));
    EXPECT_EQ(RemoveTrailingBackslash(temporary), Expand("$TEMPDIR$"));
    EXPECT_EQ(std::string(system) + "\\rundll32.exe", Expand("$RUNDLL32PATH$"));
}

TEST_F(ReplacersTest, LogonNameIsTheUsers) {
    char name[260] = {};
    DWORD size = sizeof(name);
    ASSERT_TRUE(GetUserNameA(name, &size));
    EXPECT_EQ(name, Expand("$USERNAME$"));
}

TEST_F(ReplacersTest, ShellFoldersAreThoseOfTheRegistry) {
    ASSERT_NE("", ShellFolder(HKEY_CURRENT_USER, "Desktop"));
    EXPECT_EQ(ShellFolder(HKEY_CURRENT_USER, "Desktop"), Expand("$DESKTOP$"));
    EXPECT_EQ(ShellFolder(HKEY_CURRENT_USER, "AppData"), Expand("$USERWINAPPDATA$"));
    const std::string common = ShellFolder(HKEY_LOCAL_MACHINE, "Common Desktop");
    EXPECT_EQ(common.empty() ? Expand("$DESKTOP$") : common, Expand("$ALLUSER-DESKTOP$"));
}

TEST_F(ReplacersTest, DocumentsAreTheUsersAsTheShellGivesThem) {
    ITEMIDLIST* list = nullptr;
    ASSERT_THAT(SHGetSpecialFolderLocation(nullptr, 5, &list), IsOk());
    char path[MAX_PATH] = {};
    ASSERT_TRUE(SHGetPathFromIDListA(list, path));
    ILFree(list);
    ASSERT_STRNE("", path);
    EXPECT_EQ(path, Expand("$MYDOCUMENTS$"));
    EXPECT_EQ(std::string(path) + "\\x", Expand("$MYDOCUMENTS$\\x"));
}

TEST_F(ReplacersTest, SoundFolderIsThatOfTheScheme) {
    const test::HiveOverride hive(HKEY_CURRENT_USER);
    EXPECT_EQ("<>", Expand("<$WINDOWSMEDIADIR$>"));
    test::WriteRegistryText(HKEY_CURRENT_USER,
                            "AppEvents\\Schemes\\Apps\\.Default\\SystemStart\\.Default", "",
                            "C:\\media\\x.wav");
    EXPECT_EQ("C:\\media", Expand("$WINDOWSMEDIADIR$"));
}

TEST_F(ReplacersTest, ProgramFilesAreTheMachines) {
    const auto key =
        RegistryKey::Open(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion");
    ASSERT_TRUE(key);
    EXPECT_EQ(key->ReadString("ProgramFilesDir").value_or(""), Expand("$PROGRAMFILES$"));
}

TEST_F(ReplacersTest, EnvironmentIsExpandedFirst) {
    SetEnvironmentVariableA("COMPANY", "$X64$");
    FillSlot(values_.languageCode, "eng");
    EXPECT_EQ("x64\\eng", Expand("%COMPANY%\\$LANGUAGE_CODE$"));
    SetEnvironmentVariableA("COMPANY", nullptr);
    EXPECT_EQ("%COMPANY%", Expand("%COMPANY%"));
}

TEST_F(ReplacersTest, ShortFormOfAnExistingFolderNamesTheSameFolder) {
    const test::ScratchFolder folder;
    const std::string longName = folder.MakeFolder("a long folder name");
    folder.MakeFile("a long folder name\\probe.txt", "here");
    FillSlot(values_.applicationFolder, longName + "\\");
    const std::string shortName = Expand("$APPDIR_SHORTNAME$");
    EXPECT_NE(longName, shortName);
    EXPECT_EQ("here", test::FileBytes(shortName + "\\probe.txt"));
}

TEST_F(ReplacersTest, ShortFormOfAMissingFolderIsEmpty) {
    FillSlot(values_.applicationFolder, "C:\\no such folder");
    EXPECT_EQ("<>", Expand("<$APPDIR_SHORTNAME$>"));
}

TEST_F(ReplacersTest, DeploymentPathIsTheServersOfItsClass) {
    const test::ScratchKey user(HKEY_CURRENT_USER, kDeployment);
    const test::ScratchKey machine(HKEY_LOCAL_MACHINE, kDeployment);
    EXPECT_EQ("$DEPLOYRUNPATH$", Expand("$DEPLOYRUNPATH$"));
    machine.Text("InprocServer32", "ThreadingModel", "Apartment");
    EXPECT_EQ("<>", Expand("<$DEPLOYRUNPATH$>"));
    machine.Text("InprocServer32", "", "C:\\no such\\deploy.dll");
    EXPECT_EQ("C:\\no such\\deploy.dll", Expand("$DEPLOYRUNPATH$"));
    user.Text("InprocServer32", "", "C:\\windows");
    EXPECT_EQ("C:\\windows", Expand("$DEPLOYRUNPATH$"));
}

using OpenKey = decltype(&RegOpenKeyExA);

std::set<REGSAM> rights;
OpenKey openKey = nullptr;

LSTATUS WINAPI NoteRights(HKEY root, const char* path, DWORD options, REGSAM wanted, HKEY* key) {
    rights.insert(wanted);
    return openKey(root, path, options, wanted, key);
}

TEST_F(ReplacersTest, KeysOfProductsAreOpenedForTheirValuesAlone) {
    const test::ImportPatch<OpenKey> opening("RegOpenKeyExA", &NoteRights);
    ASSERT_TRUE(opening.IsInPlace());
    openKey = opening.Genuine();
    rights.clear();
    Expand("$FATUSERDIR$$FATHOMEDIR$$DEPLOYRUNPATH$");
    EXPECT_EQ(std::set<REGSAM>{1}, rights);
}

BOOL WINAPI NameNobody(char*, DWORD*) {
    SetLastError(ERROR_MORE_DATA);
    return FALSE;
}

TEST_F(ReplacersTest, UserWithoutANameIsUser) {
    const test::ImportPatch<decltype(&GetUserNameA)> naming("GetUserNameA", &NameNobody);
    ASSERT_TRUE(naming.IsInPlace());
    EXPECT_EQ("User", Expand("$USERNAME$"));
}

// The path is as long as no buffer of the component.
UINT WINAPI GiveTooLongFolder(char* folder, UINT room) {
    folder[0] = '\0';
    return room + 1;
}

TEST_F(ReplacersTest, FoldersOfTheSystemThatDoNotFitAreEmpty) {
    using FolderCall = UINT(WINAPI*)(char*, UINT);
    const test::ImportPatch<FolderCall> system("GetSystemDirectoryA", &GiveTooLongFolder);
    const test::ImportPatch<FolderCall> windows("GetWindowsDirectoryA", &GiveTooLongFolder);
    ASSERT_TRUE(system.IsInPlace() && windows.IsInPlace());
    EXPECT_EQ("<>", Expand("<$SYSDIR$$WINDRIVE$>"));
}

BOOL WINAPI BeOldFamily(OSVERSIONINFOA* version) {
    version->dwPlatformId = VER_PLATFORM_WIN32_WINDOWS;
    return version->dwOSVersionInfoSize == 148 ? TRUE : FALSE;
}

TEST_F(ReplacersTest, OldFamilyHasNoFoldersOfAllUsers) {
    const test::HiveOverride user(HKEY_CURRENT_USER);
    const test::HiveOverride machine(HKEY_LOCAL_MACHINE);
    test::WriteRegistryText(HKEY_CURRENT_USER, kShellFolders, "Common Desktop", "C:\\own");
    test::WriteRegistryText(HKEY_LOCAL_MACHINE, kShellFolders, "Common Desktop", "C:\\common");
    EXPECT_EQ("C:\\common", Expand("$ALLUSER-DESKTOP$"));
    const test::ImportPatch<decltype(&GetVersionExA)> version("GetVersionExA", &BeOldFamily);
    ASSERT_TRUE(version.IsInPlace());
    EXPECT_EQ("C:\\own", Expand("$ALLUSER-DESKTOP$"));
}

TEST_F(ReplacersTest, ProductValueOf260BytesIsReadAndOneOf261IsNot) {
    for (const std::size_t bytes : {259u, 260u, 261u}) {
        SCOPED_TRACE(bytes);
        // The sizes count the terminating NUL.
        const std::string value(bytes - 1, 'v');
        user_.Text(kWharfside, "UserDir", value);
        EXPECT_EQ(bytes <= 260 ? value : "", Expand("$FATUSERDIR$"));
    }
}

TEST_F(ReplacersTest, ProductValueWithoutANulIsReadWhole) {
    for (const std::size_t bytes : {1u, 259u, 260u, 261u}) {
        SCOPED_TRACE(bytes);
        const std::string value(bytes, 'v');
        user_.Raw(kWharfside, "UserDir", REG_BINARY, value);
        EXPECT_EQ(bytes <= 260 ? value : "", Expand("$FATUSERDIR$"));
    }
}

TEST_F(ReplacersTest, ProductValueOfAnyTypeIsReadAsText) {
    const std::string text("C:\\u\\\0more\0", 11);
    for (const DWORD type : {REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ, REG_BINARY}) {
        SCOPED_TRACE(type);
        user_.Raw(kWharfside, "UserDir", type, text);
        EXPECT_EQ("C:\\u", Expand("$FATUSERDIR$"));
    }
    user_.Raw(kWharfside, "UserDir", REG_EXPAND_SZ, std::string("%windir%\0", 9));
    EXPECT_EQ("%windir%", Expand("$FATUSERDIR$"));
    user_.Raw(kWharfside, "UserDir", REG_BINARY, "");
    EXPECT_EQ("<>", Expand("<$FATUSERDIR$>"));
}

TEST_F(ReplacersTest, HomeFolderOfTheMachineServesWithoutTheUsers) {
    EXPECT_EQ("$FATHOMEDIR$", Expand("$FATHOMEDIR$"));
    machine_.Text(kWharfside, "HomeDir64", "C:\\machine\\");
    EXPECT_EQ("C:\\machine", Expand("$FATHOMEDIR$"));
    user_.Text(kWharfside, "HomeDir64", "C:\\user\\");
    EXPECT_EQ("C:\\user", Expand("$FATHOMEDIR$"));
}

TEST_F(ReplacersTest, ApplicationDataOfAllUsersIsMadeBesideTheStartMenu) {
    const test::ScratchFolder folder;
    const test::HiveOverride hive(HKEY_LOCAL_MACHINE);
    test::WriteRegistryText(HKEY_LOCAL_MACHINE, kShellFolders, "Common Start Menu",
                            folder.At("Start Menu"));
    EXPECT_EQ(folder.At("Application Data"), Expand("$ALLUSERWINAPPDATA$"));
    EXPECT_TRUE(test::Exists(folder.At("Application Data")));
    // The folder exists now, and no record names it.
    EXPECT_EQ("C:", Expand("$ALLUSERWINAPPDATA$"));
}

TEST_F(ReplacersTest, EmptyHivesGiveFallbacksThroughout) {
    const test::HiveOverride user(HKEY_CURRENT_USER);
    EXPECT_EQ("<>", Expand("<$DESKTOP$$STARTMENU$$STARTMENU-PROGRAMS$$WINDOWSMEDIADIR$>"));
    EXPECT_EQ("C:", Expand("$USERWINAPPDATA$"));
    EXPECT_EQ("<>$FATHOMEDIR$", Expand("<$FATUSERDIR$>$FATHOMEDIR$"));
}

TEST_F(ReplacersTest, MissingMachineHiveGivesFallbacksThroughout) {
    const test::HiveOverride machine(HKEY_LOCAL_MACHINE);
    EXPECT_EQ("C:", Expand("$ALLUSERWINAPPDATA$"));
    EXPECT_EQ("$PROGRAMFILES$", Expand("$PROGRAMFILES$"));
    EXPECT_EQ(Expand("$DESKTOP$"), Expand("$ALLUSER-DESKTOP$"));
    FillSlot(values_.applicationFolderX86, "$APPDIRX86$");
    FillSlot(values_.applicationFolder, "C:\\Program Files\\a");
    EXPECT_EQ("C:\\Program Files (x86)\\a", Expand("$APPDIRX86$"));
}

TEST_F(ReplacersTest, LongAndOddTextsComeBackUnchanged) {
    for (const std::string& text :
         {std::string(), std::string("$"), std::string("$$$$"), std::string("$USERDIR"),
          std::string(100000, 'x'), std::string(100000, '$'), std::string(100000, '%')}) {
        EXPECT_EQ(text, Expand(text));
    }
}

}  // namespace
}  // namespace depot
