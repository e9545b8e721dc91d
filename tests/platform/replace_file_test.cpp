#include "platform/replace_file.h"

#include <gtest/gtest.h>

#include <set>

#include "platform/private_file.h"
#include "support/import_patch.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::Exists;
using test::FileBytes;

using CreateFileCall = HANDLE(WINAPI*)(LPCSTR, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD,
                                       HANDLE);
using WriteFileCall = BOOL(WINAPI*)(HANDLE, LPCVOID, DWORD, DWORD*, OVERLAPPED*);
using MoveFileCall = BOOL(WINAPI*)(LPCSTR, LPCSTR, DWORD);

CreateFileCall realCreate = nullptr;
WriteFileCall realWrite = nullptr;
// How many writes succeed before the disk is full. The one that fails writes half of its bytes.
int writesLeft = 0;

HANDLE WINAPI RefuseNewFiles(LPCSTR path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* rights,
                             DWORD creation, DWORD flags, HANDLE model) {
    if (creation != CREATE_NEW || Exists(path)) {
        return realCreate(path, access, sharing, rights, creation, flags, model);
    }
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI FillDisk(HANDLE file, LPCVOID bytes, DWORD length, DWORD* written,
                     OVERLAPPED* overlapped) {
    if (writesLeft-- != 0) return realWrite(file, bytes, length, written, overlapped);
    realWrite(file, bytes, length / 2, written, overlapped);
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

BOOL WINAPI RefuseMove(LPCSTR, LPCSTR, DWORD) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

class ReplaceFileTest : public testing::Test {
protected:
    bool Replace(const std::string& path, const std::string& bytes) {
        return ReplaceLocalFile(path, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    }
    // The names in the folder.
    std::set<std::string> Names() const {
        std::set<std::string> names;
        WIN32_FIND_DATAA found = {};
        const HANDLE search = FindFirstFileA(folder_.At("*").c_str(), &found);
        do {
            if (found.cFileName[0] != '.') names.insert(found.cFileName);
        } while (FindNextFileA(search, &found));
        FindClose(search);
        return names;
    }
    void ExpectOnly(const std::string& bytes) {
        EXPECT_EQ(bytes, FileBytes(file_));
        EXPECT_EQ(std::set<std::string>{"a.kra"}, Names());
    }

    const test::ScratchFolder folder_;
    const std::string file_ = folder_.At("a.kra");
};

TEST_F(ReplaceFileTest, NewFileIsCreatedWithNormalAttributes) {
    EXPECT_TRUE(Replace(file_, std::string("\0x", 2)));
    ExpectOnly(std::string("\0x", 2));
    EXPECT_EQ(0u, GetFileAttributesA(file_.c_str()) &
                      ~DWORD{FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_ARCHIVE});
    EXPECT_TRUE(Replace(folder_.At("empty"), ""));
    EXPECT_EQ("", FileBytes(folder_.At("empty")));
}

TEST_F(ReplaceFileTest, ExistingFileIsReplacedAndNothingElseStays) {
    for (const char* bytes : {"much longer than before", "", "x"}) {
        folder_.MakeFile("a.kra", "before");
        EXPECT_TRUE(Replace(file_, bytes));
        ExpectOnly(bytes);
    }
}

TEST_F(ReplaceFileTest, HiddenFileBecomesANormalOne) {
    folder_.MakeFile("a.kra", "old");
    SetFileAttributesA(file_.c_str(), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(Replace(file_, "new"));
    EXPECT_EQ("new", FileBytes(file_));
    EXPECT_EQ(0u, GetFileAttributesA(file_.c_str()) & FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(ReplaceFileTest, RelativeNamesAreReplacedInTheirFolder) {
    char before[MAX_PATH] = {};
    GetCurrentDirectoryA(sizeof(before), before);
    SetCurrentDirectoryA(folder_.Path().c_str());
    for (const char* name : {"a.kra", ".\\a.kra", "./a.kra"}) {
        EXPECT_TRUE(Replace(name, name));
        ExpectOnly(name);
    }
    SetCurrentDirectoryA(before);
}

TEST_F(ReplaceFileTest, FoldersReadOnlyFilesAndImpossiblePlacesAreRefused) {
    folder_.MakeFolder("folder");
    EXPECT_FALSE(Replace(folder_.At("folder"), "x"));
    EXPECT_FALSE(Replace(folder_.At("none\\a.kra"), "x"));
    EXPECT_FALSE(Replace("", "x"));
    folder_.MakeFile("a.kra", "old");
    SetFileAttributesA(file_.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(Replace(file_, "x"));
    SetFileAttributesA(file_.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ("old", FileBytes(file_));
    EXPECT_EQ((std::set<std::string>{"a.kra", "folder"}), Names());
}

TEST_F(ReplaceFileTest, FileThatOthersOnlyReadWithoutSharingStays) {
    folder_.MakeFile("a.kra", "old");
    const HANDLE reader = CreateFileA(file_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_FALSE(Replace(file_, "x"));
    CloseHandle(reader);
    ExpectOnly("old");
}

TEST_F(ReplaceFileTest, RightsOfTheOldFileStay) {
    folder_.MakeFile("a.kra", "old");
    MakePrivate(file_);
    const auto rights = [&] {
        DWORD size = 0;
        GetFileSecurityA(file_.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
        std::string descriptor(size, '\0');
        GetFileSecurityA(file_.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), size, &size);
        return descriptor;
    };
    const std::string before = rights();
    EXPECT_TRUE(Replace(file_, "new"));
    EXPECT_EQ(before, rights());
    ExpectOnly("new");
}

// Writes that fail half-way.
class FullDiskTest : public ReplaceFileTest {
protected:
    FullDiskTest() {
        EXPECT_TRUE(patch_.IsInPlace());
        realWrite = patch_.Genuine();
    }

    const test::ImportPatch<WriteFileCall> patch_{"WriteFile", &FillDisk};
};

TEST_F(FullDiskTest, OldFileStaysAndANewOneIsRemoved) {
    folder_.MakeFile("a.kra", "old");
    writesLeft = 0;
    EXPECT_FALSE(Replace(file_, "much longer than before"));
    EXPECT_EQ(-1, writesLeft);
    ExpectOnly("old");
    writesLeft = 0;
    EXPECT_FALSE(Replace(folder_.At("b.kra"), "x"));
    ExpectOnly("old");
}

TEST_F(FullDiskTest, FileThatIsWrittenOverIsPutBack) {
    folder_.MakeFile("a.kra", "old bytes");
    const test::ImportPatch<MoveFileCall> refused("MoveFileExA", &RefuseMove);
    ASSERT_TRUE(refused.IsInPlace());
    for (const char* bytes : {"x", "much longer than before"}) {
        // The one beside it succeeds.
        writesLeft = 1;
        EXPECT_FALSE(Replace(file_, bytes));
        EXPECT_EQ(-2, writesLeft);
        ExpectOnly("old bytes");
    }
}

TEST_F(ReplaceFileTest, FileThatCannotBeExchangedIsWrittenOver) {
    folder_.MakeFile("a.kra", "much longer than afterwards");
    const test::ImportPatch<MoveFileCall> refused("MoveFileExA", &RefuseMove);
    ASSERT_TRUE(refused.IsInPlace());
    EXPECT_TRUE(Replace(file_, "new"));
    ExpectOnly("new");
}

TEST_F(ReplaceFileTest, FileInAFolderThatTakesNoOthersIsWrittenOver) {
    folder_.MakeFile("a.kra", "much longer than afterwards");
    SetFileAttributesA(file_.c_str(), FILE_ATTRIBUTE_HIDDEN);
    const test::ImportPatch<CreateFileCall> refused("CreateFileA", &RefuseNewFiles);
    ASSERT_TRUE(refused.IsInPlace());
    realCreate = refused.Genuine();
    EXPECT_TRUE(Replace(file_, "new"));
    EXPECT_EQ("new", FileBytes(file_));
    EXPECT_EQ(0u, GetFileAttributesA(file_.c_str()) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_FALSE(Replace(folder_.At("b.kra"), "x"));
    EXPECT_EQ(std::set<std::string>{"a.kra"}, Names());
}

}  // namespace
}  // namespace depot
