// The stand-in for the maker's directory-service library, called as any client of it would.
#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstring>

#include "platform/compiler.h"
#include "platform/handles.h"
#include "platform/module_state.h"
#include "platform/system_folder.h"
#include "support/import_patch.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;

constexpr char kProductKey[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";

using FolderLookup = int(__stdcall*)(int category, int item, char* buffer, unsigned size);

class QdirsvcTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(library_);
        lookup_ = FunctionCast<FolderLookup>(GetProcAddress(library_.get(), MAKEINTRESOURCEA(34)));
        ASSERT_NE(nullptr, lookup_);
    }

    // Asks with a buffer full of junk, of which only `size` characters are offered.
    std::string Ask(int category, int item, unsigned size = 260) {
        std::memset(buffer_, '#', sizeof(buffer_));
        result_ = lookup_(category, item, buffer_, size);
        EXPECT_EQ('#', buffer_[size]) << "written past the end";
        return size == 0 ? std::string() : std::string(buffer_);
    }

    static std::string Documents() {
        char folder[MAX_PATH] = {};
        SHGetFolderPathA(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, folder);
        const std::string documents = folder;
        return documents.ends_with('\\') ? documents : documents + "\\";
    }

    UniqueModule library_{LoadLibraryA((OwnModuleFolder() + "qdirsvc.dll").c_str())};
    FolderLookup lookup_ = nullptr;
    int result_ = -1;
    char buffer_[400];
    test::ScratchKey user_{HKEY_CURRENT_USER, kProductKey};
    test::ScratchKey machine_{HKEY_LOCAL_MACHINE, kProductKey};
};

TEST_F(QdirsvcTest, OnlyOrdinal34IsExported) {
    EXPECT_EQ(nullptr, GetProcAddress(library_.get(), "LookUpFolder"));
    EXPECT_EQ(nullptr, GetProcAddress(library_.get(), MAKEINTRESOURCEA(1)));
    EXPECT_EQ(nullptr, GetProcAddress(library_.get(), MAKEINTRESOURCEA(33)));
    EXPECT_EQ(nullptr, GetProcAddress(library_.get(), MAKEINTRESOURCEA(35)));
}

TEST_F(QdirsvcTest, UserFolderIsTheCurrentUsersBeforeTheMachines) {
    machine_.Text("", "UserDir", "C:\\Machine");
    EXPECT_EQ("C:\\Machine", Ask(18, 0));
    user_.Text("", "UserDir", "C:\\User\\");
    EXPECT_EQ("C:\\User\\", Ask(18, 0));
    EXPECT_THAT(result_, IsDone());
}

TEST_F(QdirsvcTest, LibraryOfTheProductInTheSystemFolderAnswersInItsPlace) {
    user_.Text("", "UserDir", "C:\\User");
    const std::string products = OwnModuleFolder() + "dependent_service\\";
    const char* const names[] = {"qdirsvc.dll", "depot_test_part.dll"};
    for (const char* const name : names) {
        EXPECT_TRUE(CopyFileA((products + name).c_str(), (SystemFolder() + name).c_str(), TRUE));
    }
    EXPECT_EQ("C:\\Quietly", Ask(18, 0));
    EXPECT_THAT(result_, IsDone());
    for (const char* const name : names) EXPECT_TRUE(DeleteFileA((SystemFolder() + name).c_str()));
    EXPECT_EQ("C:\\User", Ask(18, 0));
}

TEST_F(QdirsvcTest, EmptyUserFolderCountsAsMissing) {
    user_.Text("", "UserDir", "");
    machine_.Text("", "UserDir", "C:\\Machine");
    EXPECT_EQ("C:\\Machine", Ask(18, 0));
}

TEST_F(QdirsvcTest, ConfiguredUserFolderIsNotCreated) {
    const test::ScratchFolder scratch;
    user_.Text("", "UserDir", scratch.At("none"));
    EXPECT_EQ(scratch.At("none"), Ask(18, 0));
    EXPECT_FALSE(test::Exists(scratch.At("none")));
}

TEST_F(QdirsvcTest, WithoutAnyUserFolderOneIsCreatedBelowTheDocuments) {
    const std::string expected = Documents() + "Quillon\\Farrow";
    RemoveDirectoryA(expected.c_str());
    ASSERT_FALSE(test::Exists(expected));
    EXPECT_EQ(expected, Ask(18, 0));
    EXPECT_TRUE(test::Exists(expected));
    EXPECT_EQ(expected, Ask(18, 0));
}

TEST_F(QdirsvcTest, ResourceFolderIsTheCurrentUsersBeforeTheMachines) {
    machine_.Text("", "HomeDir64", "C:\\Machine");
    EXPECT_EQ("C:\\Machine", Ask(1, 3));
    user_.Text("", "HomeDir64", "C:\\User");
    EXPECT_EQ("C:\\User", Ask(1, 3));
    EXPECT_THAT(result_, IsDone());
}

TEST_F(QdirsvcTest, ResourceFolderOnAnotherMachineIsBelievedFromTheMachineOnly) {
    machine_.Text("", "HomeDir64", "C:\\Machine");
    for (const char* folder :
         {"\\\\server\\share", "//server/share", "\\/server\\share", "\\\\?\\UNC\\server\\share",
          "//?/unc/server/share", "\\\\.\\UNC\\server\\share", "\\\\.\\C:\\",
          "\\??\\UNC\\server\\share", "\\\\?\\GLOBALROOT\\Device\\Mup\\server\\share"}) {
        user_.Text("", "HomeDir64", folder);
        EXPECT_EQ("C:\\Machine", Ask(1, 3)) << folder;
    }
    user_.Text("", "HomeDir64", "\\\\?\\C:\\User");
    EXPECT_EQ("\\\\?\\C:\\User", Ask(1, 3));
    user_.Text("", "HomeDir64", "");
    machine_.Text("", "HomeDir64", "\\\\server\\share");
    EXPECT_EQ("\\\\server\\share", Ask(1, 3));
}

UINT WINAPI DriveOfAnotherMachine(const char* root) {
    return std::strcmp(root, "N:\\") == 0 ? DRIVE_REMOTE : DRIVE_FIXED;
}

TEST_F(QdirsvcTest, DriveThatStandsForAnotherMachineIsNotBelievedFromTheUser) {
    const test::ImportPatch<decltype(&GetDriveTypeA)> drives(
        "GetDriveTypeA", &DriveOfAnotherMachine, library_.get());
    ASSERT_TRUE(drives.IsInPlace());
    for (const char* folder : {"N:\\texts", "\\\\?\\N:\\texts", "N:"}) {
        user_.Text("", "HomeDir64", folder);
        EXPECT_EQ(OwnModuleFolder(), Ask(1, 3)) << folder;
    }
    user_.Text("", "HomeDir64", "M:\\texts");
    EXPECT_EQ("M:\\texts", Ask(1, 3));
}

TEST_F(QdirsvcTest, WithoutAnyResourceFolderItIsTheLibrarysOwn) {
    EXPECT_EQ(OwnModuleFolder(), Ask(1, 3));
}

TEST_F(QdirsvcTest, EveryOtherPairIsEmpty) {
    user_.Text("", "UserDir", "C:\\User");
    user_.Text("", "HomeDir64", "C:\\Home");
    const int pairs[][2] = {{0, 0},  {18, 1}, {18, 3}, {18, -1}, {1, 0},
                            {1, 18}, {3, 1},  {0, 18}, {-1, -1}, {0x7FFFFFFF, 3}};
    for (const auto& pair : pairs) {
        SCOPED_TRACE(testing::Message() << pair[0] << ", " << pair[1]);
        EXPECT_EQ("", Ask(pair[0], pair[1]));
        EXPECT_THAT(result_, Fails());
    }
}

TEST_F(QdirsvcTest, PathThatJustFitsIsWrittenAndOneTooLongIsNot) {
    user_.Text("", "UserDir", "C:\\Users\\a");
    EXPECT_EQ("C:\\Users\\a", Ask(18, 0, 11));
    EXPECT_EQ("", Ask(18, 0, 10));
    EXPECT_THAT(result_, Fails());
    EXPECT_EQ("", Ask(18, 0, 1));
}

TEST_F(QdirsvcTest, BufferOfNoSizeIsLeftAlone) {
    user_.Text("", "UserDir", "C:\\Users\\a");
    Ask(18, 0, 0);
    EXPECT_EQ('#', buffer_[0]);
    EXPECT_THAT(result_, Fails());
    EXPECT_THAT(lookup_(18, 0, nullptr, 260), Fails());
}

TEST_F(QdirsvcTest, PathOver260CharactersCountsAsMissing) {
    machine_.Text("", "UserDir", "C:\\Machine");
    user_.Text("", "UserDir", std::string(300, 'x'));
    EXPECT_EQ("C:\\Machine", Ask(18, 0));
    const std::string longest = "C:\\" + std::string(256, 'x');
    user_.Text("", "UserDir", longest);
    EXPECT_EQ(longest, Ask(18, 0));
    EXPECT_EQ("", Ask(18, 0, 259));
}

TEST_F(QdirsvcTest, FolderOfAWrongTypeIsTakenAsItsBytes) {
    user_.Raw("", "UserDir", REG_BINARY, "C:\\Bytes");
    EXPECT_EQ("C:\\Bytes", Ask(18, 0));
}

}  // namespace
}  // namespace depot
