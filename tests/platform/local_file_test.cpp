#include "platform/local_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "platform/full_path.h"
#include "platform/system_code_page.h"
#include "platform/temp_file.h"
#include "support/page_names.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::Exists;
using test::FileBytes;
using testing::ElementsAre;
using testing::IsEmpty;

class LocalFileTest : public testing::Test {
protected:
    const test::ScratchFolder folder_;
};

TEST_F(LocalFileTest, ReadsAllBytes) {
    const std::string file = folder_.MakeFile("a", std::string("\0\x1a\xff\n", 4));
    EXPECT_THAT(ReadLocalFile(file).value(), ElementsAre(0, 0x1A, 0xFF, '\n'));
    EXPECT_THAT(ReadLocalFile(folder_.MakeFile("b", "")).value(), IsEmpty());
}

TEST_F(LocalFileTest, WhatCannotBeReadIsNothing) {
    EXPECT_EQ(std::nullopt, ReadLocalFile(folder_.At("none")));
    EXPECT_EQ(std::nullopt, ReadLocalFile(folder_.Path()));
    EXPECT_EQ(std::nullopt, ReadLocalFile(""));
}

TEST_F(LocalFileTest, WritingCreatesOrTruncates) {
    const std::string file = folder_.MakeFile("a", "much longer");
    EXPECT_TRUE(WriteLocalFile(file, "\0x", 2));
    EXPECT_EQ(std::string("\0x", 2), FileBytes(file));
    EXPECT_TRUE(WriteLocalFile(folder_.At("b"), nullptr, 0));
    EXPECT_EQ("", FileBytes(folder_.At("b")));
    EXPECT_FALSE(WriteLocalFile(folder_.At("none\\a"), "x", 1));
    EXPECT_FALSE(WriteLocalFile("", "x", 1));
}

TEST_F(LocalFileTest, FolderIsMadeWithThoseAboveIt) {
    for (const char* name : {"a\\b\\c", "d\\e\\"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(EnsureLocalFolder(folder_.At(name)));
        EXPECT_TRUE(EnsureLocalFolder(folder_.At(name)));
        EXPECT_TRUE(Exists(folder_.At(name)));
    }
    folder_.MakeFile("file", "");
    EXPECT_FALSE(EnsureLocalFolder(folder_.At("file\\below")));
    EXPECT_FALSE(EnsureLocalFolder(folder_.At("file")));
    EXPECT_FALSE(EnsureLocalFolder(folder_.At(std::string(100'000, 'x'))));
}

// In whatever ANSI code page the process runs.
class LocalFolderCharactersTest : public LocalFileTest {
protected:
    LocalFolderCharactersTest() { InstallSystemCodePage(); }
    ~LocalFolderCharactersTest() override { InstallCodePage(before_); }

    std::wstring At(const std::wstring& name) const {
        return WideFromAnsi(folder_.Path()) + L"\\" + name;
    }
    // The names of what the folder holds, one a line, in their order.
    std::wstring Names(const std::wstring& folder) const {
        std::wstring names;
        WIN32_FIND_DATAW found = {};
        const HANDLE search = FindFirstFileW((At(folder) + L"\\*").c_str(), &found);
        if (search == INVALID_HANDLE_VALUE) return L"(none)";
        do {
            if (found.cFileName[0] != L'.') names.append(found.cFileName).append(L"\n");
        } while (FindNextFileW(search, &found));
        FindClose(search);
        return names;
    }

    const CodePage before_ = InstalledCodePage();
    const test::PageNames page_ = test::NamesOfThisPage();
};

TEST_F(LocalFolderCharactersTest, FoldersAreMadeByTheirNamesAndNoOthers) {
    for (const std::wstring& name : page_.files) {
        const std::wstring top = L"t" + name;
        SCOPED_TRACE(test::Narrowed(name));
        for (const wchar_t* end : {L"", L"\\"}) {
            EXPECT_TRUE(EnsureLocalFolder(
                test::Narrowed(At(top + L"\\" + page_.subfolder + L"\\" + name + end))));
        }
        EXPECT_EQ(page_.subfolder + L"\n", Names(top));
        EXPECT_EQ(name + L"\n", Names(top + L"\\" + page_.subfolder));
        EXPECT_EQ(L"", Names(top + L"\\" + page_.subfolder + L"\\" + name));
    }
}

TEST_F(LocalFolderCharactersTest, FileOfThatNameIsNoFolder) {
    for (const std::wstring& name : page_.files) {
        SCOPED_TRACE(test::Narrowed(name));
        test::MakeWideFile(At(name), "x");
        EXPECT_FALSE(EnsureLocalFolder(test::Narrowed(At(name))));
        EXPECT_FALSE(EnsureLocalFolder(test::Narrowed(At(name + L"\\" + page_.subfolder))));
        EXPECT_EQ("x", test::WideBytes(At(name)));
    }
}

TEST(MakeTempFolderTest, EachFolderIsNewEmptyAndNamedDir) {
    const std::string first = MakeTempFolder(), second = MakeTempFolder();
    EXPECT_NE(first, second);
    for (const std::string& folder : {first, second}) {
        SCOPED_TRACE(folder);
        EXPECT_NE(std::string::npos, folder.find("\\Dir"));
        EXPECT_FALSE(folder.ends_with('\\'));
        // Only an empty folder can be removed this way.
        EXPECT_TRUE(RemoveDirectoryA(folder.c_str()));
    }
}

// Whether the rights of what has this path grant anything to every user.
bool IsForEveryone(const std::string& path) {
    std::vector<BYTE> descriptor(4096);
    DWORD size = 0;
    EXPECT_TRUE(GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(),
                                 static_cast<DWORD>(descriptor.size()), &size));
    BOOL present = FALSE, isDefault = FALSE;
    ACL* list = nullptr;
    EXPECT_TRUE(GetSecurityDescriptorDacl(descriptor.data(), &present, &list, &isDefault));
    if (list == nullptr) return true;
    for (DWORD index = 0; index < list->AceCount; ++index) {
        void* entry = nullptr;
        EXPECT_TRUE(GetAce(list, index, &entry));
        auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        const bool grants =
            allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE && allowed->Mask != 0;
        if (grants && IsWellKnownSid(&allowed->SidStart, WinWorldSid)) return true;
    }
    return false;
}

TEST(MakeTempFolderTest, FolderIsForTheUserAlone) {
    const test::ScratchFolder other;
    EXPECT_TRUE(IsForEveryone(other.Path()));
    const std::string folder = MakeTempFolder();
    EXPECT_FALSE(IsForEveryone(folder));
    EXPECT_TRUE(RemoveDirectoryA(folder.c_str()));
}

TEST(FullPathTest, IsAbsoluteWithoutDotNames) {
    EXPECT_EQ("C:\\a\\c.kra", FullPath("C:\\a\\.\\b\\..\\c.kra"));
    EXPECT_EQ("", FullPath(""));
    char current[MAX_PATH] = {};
    GetCurrentDirectoryA(sizeof(current), current);
    EXPECT_TRUE(FullPath("c.kra").starts_with(current));
}

TEST_F(LocalFileTest, PathExistsForFilesAndFoldersOfAnyKind) {
    EXPECT_TRUE(PathExists(folder_.Path()));
    EXPECT_TRUE(PathExists(folder_.Path() + "\\"));
    const std::string file = folder_.MakeFile("file", "");
    EXPECT_TRUE(PathExists(file));
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(PathExists(file));
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL);
    for (const std::string& path : {std::string(), folder_.At("none"), folder_.At("none\\file"),
                                    std::string("<Work>\\a"), std::string(100'000, 'x')}) {
        SCOPED_TRACE(path.substr(0, 100));
        EXPECT_FALSE(PathExists(path));
    }
}

}  // namespace
}  // namespace depot
