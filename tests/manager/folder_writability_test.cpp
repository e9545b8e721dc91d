// Whether a place of the file system can be written to.
#include "manager/writability.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <utility>

#include "model/depots.h"
#include "platform/error_text.h"
#include "platform/handles.h"
#include "support/current_folder.h"
#include "support/import_patch.h"
#include "support/results.h"
#include "support/scratch.h"
#include "support/working_files.h"

namespace depot {
namespace {

using test::kNo;
using test::kYes;
using testing::IsEmpty;

class FolderWritabilityTest : public testing::Test {
protected:
    int Test(const std::string& path, const std::string& shown = {}) {
        text_ = "junk";
        return TestWritable(kFolderLocation, path, nullptr, &text_, shown);
    }

    static std::string TextOf(DWORD error, const std::string& lead) {
        std::string text;
        FormatErrorText(error, lead.c_str(), "Quillon", &text, nullptr);
        return text;
    }

    test::ScratchFolder folder_;
    std::string text_;
};

TEST_F(FolderWritabilityTest, FolderIsTestedByAProbeFileThatIsDeletedAgain) {
    EXPECT_EQ(kYes, Test(folder_.Path()));
    EXPECT_THAT(test::FilesIn(folder_.Path(), "*"), IsEmpty());
    EXPECT_EQ("junk", text_);
}

TEST_F(FolderWritabilityTest, PlaceOfTheCurrentFolderOrDriveIsNotTried) {
    folder_.MakeFolder("sub");
    const test::CurrentFolder current(folder_.Path());
    const std::string drive = folder_.Path().substr(0, 2);
    for (const std::string& path : {std::string("sub"), std::string("new.kra"), std::string(".\\"),
                                    drive + "new.kra", drive, std::string()}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(kNo, Test(path, "Shown"));
        EXPECT_EQ(TextOf(ERROR_INVALID_PARAMETER, "Shown"), text_);
    }
}

TEST_F(FolderWritabilityTest, ProbeFileIsWhatTheFolderIsTestedBy) {
    const std::string probe = folder_.MakeFile("____Test____Writable____File___.twr", "mine");
    {
        const UniqueHandle lock(CreateFileA(probe.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_EQ(kNo, Test(folder_.Path()));
        EXPECT_EQ(TextOf(ERROR_SHARING_VIOLATION, folder_.Path()), text_);
    }
    EXPECT_EQ(kYes, Test(folder_.Path()));
    EXPECT_EQ("mine", test::FileBytes(probe));
}

TEST_F(FolderWritabilityTest, MissingFileIsCreatedAndDeletedAgain) {
    EXPECT_EQ(kYes, Test(folder_.At("new.kra")));
    EXPECT_FALSE(test::Exists(folder_.At("new.kra")));
}

TEST_F(FolderWritabilityTest, ExistingFileKeepsItsBytes) {
    const std::string path = folder_.MakeFile("a.kra", "bytes");
    EXPECT_EQ(kYes, Test(path));
    EXPECT_EQ("bytes", test::FileBytes(path));
}

TEST_F(FolderWritabilityTest, MissingParentFailsWithItsText) {
    EXPECT_EQ(kNo, Test(folder_.At("none\\a.kra")));
    EXPECT_EQ(TextOf(ERROR_PATH_NOT_FOUND, folder_.At("none\\a.kra")), text_);
    EXPECT_EQ(kNo, Test(folder_.At("none\\a.kra"), "Shown"));
    EXPECT_EQ(TextOf(ERROR_PATH_NOT_FOUND, "Shown"), text_);
}

TEST_F(FolderWritabilityTest, FileHeldWithoutSharingFailsWithItsText) {
    const std::string path = folder_.MakeFile("a.kra", "x");
    const UniqueHandle lock(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_EQ(kNo, Test(path));
    EXPECT_EQ(TextOf(ERROR_SHARING_VIOLATION, path), text_);
}

TEST_F(FolderWritabilityTest, FileThatAnyoneElseReadsIsNotWritable) {
    const std::string path = folder_.MakeFile("a.kra", "x");
    const UniqueHandle reader(CreateFileA(path.c_str(), GENERIC_READ,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(reader);
    EXPECT_EQ(kNo, Test(path));
    EXPECT_EQ(TextOf(ERROR_SHARING_VIOLATION, path), text_);
}

using OpenFile = decltype(&CreateFileA);

// How a file was last asked for, and with which error it could not be had.
struct AskedFile {
    std::string path;
    DWORD access;
    DWORD sharing;
    SECURITY_ATTRIBUTES* security;
    DWORD creation;
    DWORD attributes;
    HANDLE model;
};
std::vector<AskedFile> askedFiles;
DWORD refusal = 0;

HANDLE WINAPI RefuseFile(const char* path, DWORD access, DWORD sharing,
                         SECURITY_ATTRIBUTES* security, DWORD creation, DWORD attributes,
                         HANDLE model) {
    askedFiles.push_back({path, access, sharing, security, creation, attributes, model});
    SetLastError(refusal);
    return INVALID_HANDLE_VALUE;
}

TEST_F(FolderWritabilityTest, EveryRefusalMeansNotWritable) {
    const test::ImportPatch<OpenFile> opening("CreateFileA", &RefuseFile);
    ASSERT_TRUE(opening.IsInPlace());
    for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_FILE_EXISTS, ERROR_ALREADY_EXISTS,
                              ERROR_DISK_FULL, ERROR_WRITE_PROTECT}) {
        SCOPED_TRACE(error);
        askedFiles.clear();
        refusal = error;
        EXPECT_EQ(kNo, Test(folder_.Path() + "\\"));
        EXPECT_EQ(TextOf(error, folder_.Path() + "\\"), text_);
    }
    ASSERT_EQ(2u, askedFiles.size());
    for (const AskedFile& asked : askedFiles) {
        EXPECT_EQ(folder_.At("____Test____Writable____File___.twr"), asked.path);
        EXPECT_EQ(DWORD{GENERIC_WRITE}, asked.access);
        EXPECT_EQ(0u, asked.sharing);
        EXPECT_EQ(nullptr, asked.security);
        EXPECT_EQ(nullptr, asked.model);
    }
    EXPECT_EQ(DWORD{CREATE_NEW}, askedFiles[0].creation);
    EXPECT_EQ(DWORD{FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE}, askedFiles[0].attributes);
    EXPECT_EQ(DWORD{OPEN_EXISTING}, askedFiles[1].creation);
    EXPECT_EQ(DWORD{FILE_ATTRIBUTE_NORMAL}, askedFiles[1].attributes);
}

HANDLE WINAPI RefuseNewFile(const char* path, DWORD access, DWORD sharing,
                            SECURITY_ATTRIBUTES* security, DWORD creation, DWORD attributes,
                            HANDLE model) {
    if (creation != OPEN_EXISTING) {
        SetLastError(refusal);
        return INVALID_HANDLE_VALUE;
    }
    return ::CreateFileW(std::wstring(path, path + std::strlen(path)).c_str(), access, sharing,
                         security, creation, attributes, model);
}

TEST_F(FolderWritabilityTest, FileThatMayOnlyBeOpenedIsWritable) {
    const std::string path = folder_.MakeFile("a.kra", "bytes");
    const test::ImportPatch<OpenFile> opening("CreateFileA", &RefuseNewFile);
    ASSERT_TRUE(opening.IsInPlace());
    refusal = ERROR_ACCESS_DENIED;
    EXPECT_EQ(kYes, Test(path));
    // Of one that is not there, the reason why none can be made is told.
    EXPECT_EQ(kNo, Test(folder_.At("new.kra")));
    EXPECT_EQ(TextOf(ERROR_ACCESS_DENIED, folder_.At("new.kra")), text_);
}

TEST_F(FolderWritabilityTest, FileThatAppearsAndDisappearsIsTriedAFewTimes) {
    const test::ImportPatch<OpenFile> opening("CreateFileA", &RefuseNewFile);
    ASSERT_TRUE(opening.IsInPlace());
    refusal = ERROR_FILE_EXISTS;
    EXPECT_EQ(kNo, Test(folder_.At("new.kra")));
    EXPECT_EQ(TextOf(ERROR_FILE_EXISTS, folder_.At("new.kra")), text_);
}

// The file that somebody stores as soon as the test has closed its own.
std::string storedMeanwhile;
decltype(&CloseHandle) genuineClose = nullptr;

BOOL WINAPI CloseThenStore(HANDLE handle) {
    const BOOL closed = genuineClose(handle);
    if (const std::string path = std::exchange(storedMeanwhile, {}); !path.empty()) {
        std::ofstream(path, std::ios::binary) << "theirs";
    }
    return closed;
}

TEST_F(FolderWritabilityTest, FileThatSomebodyStoresMeanwhileStays) {
    for (const std::string& path : {folder_.At("new.kra"), folder_.At(kProbeFileName)}) {
        const test::ImportPatch<decltype(&CloseHandle)> closing("CloseHandle", &CloseThenStore);
        ASSERT_TRUE(closing.IsInPlace());
        genuineClose = closing.Genuine();
        storedMeanwhile = path;
        EXPECT_EQ(kYes, Test(path.ends_with(".twr") ? folder_.Path() : path));
        EXPECT_EQ("theirs", test::FileBytes(path));
    }
}

// A depot whose root is one folder, tested through what is remembered of it.
class CachedWritabilityTest : public FolderWritabilityTest {
protected:
    static constexpr char kKey[] = "Software\\DepotTests\\Writability";

    CDepot& DepotAt(const std::string& root) {
        key_.Text("Work", "Path1", root);
        depots_ = std::make_unique<CDepots>(kKey);
        return *depots_->At(0);
    }

    const test::ScratchKey key_{HKEY_CURRENT_USER, kKey};
    std::unique_ptr<CDepots> depots_;
};

TEST_F(CachedWritabilityTest, LaterFailuresAreAccessDenied) {
    const std::string root = folder_.At("none\\later");
    CDepot& depot = DepotAt(root);
    EXPECT_EQ(kNo, TestDepotWritable(depot, {}, &text_));
    EXPECT_EQ(TextOf(ERROR_PATH_NOT_FOUND, root), text_);
    folder_.MakeFolder("none\\later");
    EXPECT_EQ(kNo, TestDepotWritable(depot, {}, &text_));
    EXPECT_EQ(TextOf(ERROR_ACCESS_DENIED, root), text_);
    EXPECT_EQ(kNo, TestDepotWritable(depot, "Shown", &text_));
    EXPECT_EQ(TextOf(ERROR_ACCESS_DENIED, "Shown"), text_);
    EXPECT_EQ(kNo, TestDepotWritable(depot, "Shown", nullptr));
    EXPECT_EQ(kYes, TestPathWritable(depot, "<Work>\\", nullptr));
}

TEST_F(CachedWritabilityTest, FirstFailureShowsTheGivenName) {
    EXPECT_EQ(kNo, TestDepotWritable(DepotAt(folder_.At("none\\x")), "Shown", &text_));
    EXPECT_EQ(TextOf(ERROR_PATH_NOT_FOUND, "Shown"), text_);
}

TEST_F(CachedWritabilityTest, WritableHoldsWhenTheFolderIsDeleted) {
    const std::string root = folder_.MakeFolder("root");
    CDepot& depot = DepotAt(root);
    text_ = "junk";
    EXPECT_EQ(CDepotPath::kWritabilityUnknown, depot.paths->At(0)->indexSlot);
    EXPECT_EQ(kYes, TestDepotWritable(depot, {}, &text_));
    EXPECT_EQ(1, depot.paths->At(0)->indexSlot);
    ASSERT_TRUE(RemoveDirectoryA(root.c_str()));
    EXPECT_EQ(kYes, TestDepotWritable(depot, {}, &text_));
    EXPECT_EQ("junk", text_);
}

TEST_F(CachedWritabilityTest, ExactFormNeitherReadsNorWritesTheCache) {
    const std::string root = folder_.MakeFolder("root");
    CDepot& depot = DepotAt(root);
    EXPECT_EQ(kYes, TestPathWritable(depot, "<Work>\\", nullptr));
    EXPECT_EQ(CDepotPath::kWritabilityUnknown, depot.paths->At(0)->indexSlot);
    depot.paths->At(0)->indexSlot = 0;
    EXPECT_EQ(kYes, TestPathWritable(depot, "<Work>\\a.kra", nullptr));
    EXPECT_EQ(kNo, TestDepotWritable(depot, {}, nullptr));
}

}  // namespace
}  // namespace depot
