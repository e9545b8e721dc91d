#include "platform/replace_file.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <set>
#include <thread>
#include <utility>

#include "platform/private_file.h"
#include "support/full_disk.h"
#include "support/scratch.h"
// After the Windows headers.
#include <sddl.h>

namespace depot {
namespace {

using test::Exists;
using test::FileBytes;

using CreateFileCall = HANDLE(WINAPI*)(LPCSTR, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD,
                                       HANDLE);
using WriteFileCall = BOOL(WINAPI*)(HANDLE, LPCVOID, DWORD, DWORD*, OVERLAPPED*);
using ReplaceFileCall = BOOL(WINAPI*)(LPCSTR, LPCSTR, LPCSTR, DWORD, LPVOID, LPVOID);

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

BOOL WINAPI RefuseExchange(LPCSTR, LPCSTR, LPCSTR, DWORD, LPVOID, LPVOID) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

// Leaves the old file under its other name, as the system does where its second rename fails.
BOOL WINAPI StopHalfWay(LPCSTR path, LPCSTR, LPCSTR old, DWORD, LPVOID, LPVOID) {
    MoveFileA(path, old);
    SetLastError(ERROR_UNABLE_TO_MOVE_REPLACEMENT_2);
    return FALSE;
}

ReplaceFileCall realExchange = nullptr;
int exchanges = 0;

// Everything that cannot be merged is to be a failure.
BOOL WINAPI NoteExchange(LPCSTR path, LPCSTR replacement, LPCSTR old, DWORD flags, LPVOID exclude,
                         LPVOID reserved) {
    ++exchanges;
    EXPECT_EQ(0u, flags);
    return realExchange(path, replacement, old, flags, exclude, reserved);
}

int flushes = 0;
decltype(&FlushFileBuffers) realFlush = nullptr;

BOOL WINAPI NoteFlush(HANDLE file) {
    ++flushes;
    return realFlush(file);
}

BOOL WINAPI FailToFlush(HANDLE) {
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

BOOL WINAPI RefuseDeletion(LPCSTR) {
    SetLastError(ERROR_WRITE_PROTECT);
    return FALSE;
}

BOOL WINAPI RefuseRename(LPCSTR, LPCSTR, DWORD) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

std::string makeMeanwhile;

BOOL WINAPI WriteWhileAnotherMakesTheFile(HANDLE file, LPCVOID bytes, DWORD length, DWORD* written,
                                          OVERLAPPED* overlapped) {
    if (const std::string path = std::exchange(makeMeanwhile, {}); !path.empty()) {
        const HANDLE other = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                         FILE_ATTRIBUTE_NORMAL, nullptr);
        DWORD done = 0;
        realWrite(other, "other", 5, &done, nullptr);
        CloseHandle(other);
    }
    return realWrite(file, bytes, length, written, overlapped);
}

using GetSecurityCall = BOOL(WINAPI*)(LPCSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR, DWORD,
                                      DWORD*);
using SetSecurityCall = BOOL(WINAPI*)(LPCSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR);
GetSecurityCall realGetSecurity = nullptr;
SetSecurityCall realSetSecurity = nullptr;
// The owner that the test's file has.
constexpr char kOwner[] = "O:BA";
std::string ownerWasGiven;
bool ownerCanBeGiven = false;

BOOL WINAPI AnswerOwner(LPCSTR path, SECURITY_INFORMATION part, PSECURITY_DESCRIPTOR descriptor,
                        DWORD size, DWORD* needed) {
    if (part != OWNER_SECURITY_INFORMATION || !std::string(path).ends_with("a.kra")) {
        return realGetSecurity(path, part, descriptor, size, needed);
    }
    PSECURITY_DESCRIPTOR made = nullptr;
    ULONG length = 0;
    ConvertStringSecurityDescriptorToSecurityDescriptorA(kOwner, SDDL_REVISION_1, &made, &length);
    *needed = length;
    if (length <= size) std::memcpy(descriptor, made, length);
    LocalFree(made);
    return length <= size;
}

BOOL WINAPI GiveOwner(LPCSTR path, SECURITY_INFORMATION part, PSECURITY_DESCRIPTOR descriptor) {
    if (part != OWNER_SECURITY_INFORMATION) return realSetSecurity(path, part, descriptor);
    ownerWasGiven = path;
    SetLastError(ERROR_INVALID_OWNER);
    return ownerCanBeGiven;
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

std::vector<std::uint8_t> BytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

TEST_F(ReplaceFileTest, OwnFilesOfOneMomentHaveDifferentStates) {
    const std::string path = folder_.At("own");
    std::optional<FileState> first, second;
    ASSERT_TRUE(ExchangeOwnFile(path, BytesOf("first"), Flush::kLater, &first));
    ASSERT_TRUE(first);
    EXPECT_EQ(first, StateOf(path));
    EXPECT_FALSE(IsSettled(*first));
    ASSERT_TRUE(ExchangeOwnFile(path, BytesOf("other"), Flush::kLater, &second));
    EXPECT_EQ(second, StateOf(path));
    EXPECT_NE(first, second);
    EXPECT_EQ(std::nullopt, StateOf(folder_.At("missing")));
    const FileState old = {.size = first->size, .time = first->time - 30'000'000};
    EXPECT_TRUE(IsSettled(old));
}

// Whoever reads meanwhile gets one version or the other, whole.
TEST_F(ReplaceFileTest, OwnFileIsExchangedUnderItsReaders) {
    const std::string path = folder_.At("own");
    const std::string versions[] = {std::string(10'000, 'a'), std::string(20'000, 'b')};
    const auto exchange = [&](const std::string& bytes) {
        return ExchangeOwnFile(path, BytesOf(bytes), Flush::kLater);
    };
    ASSERT_TRUE(exchange(versions[0]));
    std::atomic<bool> isOver = false;
    std::atomic<int> torn = 0, reads = 0;
    std::thread reader([&] {
        while (!isOver) {
            const auto bytes = ReadOwnFile(path);
            const std::string text = bytes ? std::string(bytes->begin(), bytes->end()) : "";
            if (text != versions[0] && text != versions[1]) ++torn;
            ++reads;
            // One that had it open all the time would leave no moment for an exchange.
            Sleep(5);
        }
    });
    int failed = 0;
    for (int round = 0; round < 200 || reads < 10; ++round) {
        if (!exchange(versions[round % 2])) ++failed;
    }
    isOver = true;
    reader.join();
    EXPECT_EQ(0, failed);
    EXPECT_EQ(0, torn);
    EXPECT_EQ(std::set<std::string>{"own"}, Names());
}

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

TEST_F(ReplaceFileTest, FileThatOthersHoldForGoodStays) {
    folder_.MakeFile("a.kra", "old");
    const HANDLE reader = CreateFileA(file_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const test::NoPauses pauses;
    EXPECT_FALSE(Replace(file_, "x"));
    EXPECT_EQ(3000, (pauses.Count() + 1) * 50);
    CloseHandle(reader);
    ExpectOnly("old");
}

TEST_F(ReplaceFileTest, FileThatOthersHoldForAMomentIsReplaced) {
    folder_.MakeFile("a.kra", "old");
    const HANDLE reader = CreateFileA(file_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    std::thread release([reader] {
        Sleep(300);
        CloseHandle(reader);
    });
    EXPECT_TRUE(Replace(file_, "new"));
    release.join();
    ExpectOnly("new");
}

TEST_F(ReplaceFileTest, ExchangeKeepsWhatBelongsToTheOldFileOrFails) {
    folder_.MakeFile("a.kra", "old");
    const test::ImportPatch<ReplaceFileCall> noted("ReplaceFileA", &NoteExchange);
    ASSERT_TRUE(noted.IsInPlace());
    realExchange = noted.Genuine();
    exchanges = 0;
    EXPECT_TRUE(Replace(file_, "new"));
    EXPECT_EQ(1, exchanges);
    ExpectOnly("new");
}

TEST_F(ReplaceFileTest, ExchangeThatStopsHalfWayIsUndoneAndTheFileWrittenOver) {
    folder_.MakeFile("a.kra", "much longer than afterwards");
    const test::ImportPatch<ReplaceFileCall> stopped("ReplaceFileA", &StopHalfWay);
    ASSERT_TRUE(stopped.IsInPlace());
    EXPECT_TRUE(Replace(file_, "new"));
    ExpectOnly("new");
}

TEST_F(ReplaceFileTest, FileOfAnotherOwnerKeepsItOrIsWrittenOver) {
    const test::ImportPatch<GetSecurityCall> owner("GetFileSecurityA", &AnswerOwner);
    const test::ImportPatch<SetSecurityCall> giving("SetFileSecurityA", &GiveOwner);
    const test::ImportPatch<ReplaceFileCall> noted("ReplaceFileA", &NoteExchange);
    ASSERT_TRUE(owner.IsInPlace() && giving.IsInPlace() && noted.IsInPlace());
    realGetSecurity = owner.Genuine();
    realSetSecurity = giving.Genuine();
    realExchange = noted.Genuine();
    for (const bool canBeGiven : {true, false}) {
        folder_.MakeFile("a.kra", "old");
        ownerCanBeGiven = canBeGiven;
        exchanges = 0;
        EXPECT_TRUE(Replace(file_, "new"));
        EXPECT_TRUE(ownerWasGiven.ends_with(".tmp")) << ownerWasGiven;
        EXPECT_EQ(canBeGiven ? 1 : 0, exchanges);
        ExpectOnly("new");
    }
}

TEST_F(ReplaceFileTest, NewFileIsFlushedWhereItsSourceIsDeleted) {
    const test::ImportPatch<decltype(&FlushFileBuffers)> noted("FlushFileBuffers", &NoteFlush);
    ASSERT_TRUE(noted.IsInPlace());
    realFlush = noted.Genuine();
    flushes = 0;
    EXPECT_EQ(FileCreation::kDone, CreateLocalFile(folder_.At("a"), "x", 1, Flush::kLater));
    EXPECT_EQ(0, flushes);
    EXPECT_EQ(FileCreation::kDone, CreateLocalFile(folder_.At("b"), "x", 1, Flush::kNow));
    EXPECT_EQ(1, flushes);
    EXPECT_TRUE(ReplaceLocalFile(folder_.At("c"), "x", 1, Flush::kNow));
    EXPECT_EQ(2, flushes);
    EXPECT_TRUE(CopyLocalFile(folder_.At("a"), folder_.At("d"), true, Flush::kLater));
    EXPECT_EQ(2, flushes);
    EXPECT_TRUE(CopyLocalFile(folder_.At("a"), folder_.At("e"), true, Flush::kNow));
    EXPECT_EQ(3, flushes);
}

TEST_F(ReplaceFileTest, NewFileThatDoesNotReachTheDiskIsNoFile) {
    const test::ImportPatch<decltype(&FlushFileBuffers)> failing("FlushFileBuffers", &FailToFlush);
    ASSERT_TRUE(failing.IsInPlace());
    EXPECT_EQ(FileCreation::kFailed, CreateLocalFile(file_, "x", 1, Flush::kNow));
    EXPECT_FALSE(test::Exists(file_));
}

TEST_F(ReplaceFileTest, NewFileThatCanBeNeitherFilledNorDeletedNeverGetsItsName) {
    const test::ImportPatch<WriteFileCall> full("WriteFile", &FillDisk);
    const test::ImportPatch<decltype(&DeleteFileA)> staying("DeleteFileA", &RefuseDeletion);
    ASSERT_TRUE(full.IsInPlace() && staying.IsInPlace());
    realWrite = full.Genuine();
    writesLeft = 0;
    EXPECT_EQ(FileCreation::kFailed, CreateLocalFile(file_, "text", 4));
    EXPECT_EQ(DWORD{ERROR_DISK_FULL}, GetLastError());
    writesLeft = 0;
    EXPECT_FALSE(Replace(file_, "text"));
    EXPECT_FALSE(Exists(file_));
}

TEST_F(ReplaceFileTest, NewFileIsMadeWhereNothingCanBeRenamed) {
    const test::ImportPatch<decltype(&MoveFileExA)> staying("MoveFileExA", &RefuseRename);
    ASSERT_TRUE(staying.IsInPlace());
    EXPECT_EQ(FileCreation::kDone, CreateLocalFile(file_, "new", 3));
    ExpectOnly("new");
    EXPECT_EQ(FileCreation::kExists, CreateLocalFile(file_, "other", 5));
    ExpectOnly("new");
}

TEST_F(ReplaceFileTest, NewFileLeavesOneThatAnotherProgramMadeMeanwhile) {
    const test::ImportPatch<WriteFileCall> slow("WriteFile", &WriteWhileAnotherMakesTheFile);
    ASSERT_TRUE(slow.IsInPlace());
    realWrite = slow.Genuine();
    makeMeanwhile = file_;
    EXPECT_EQ(FileCreation::kExists, CreateLocalFile(file_, "new", 3));
    ExpectOnly("other");
}

TEST_F(ReplaceFileTest, CopyOntoAnOrdinaryFileExchangesItAndTakesTheSourcesAttributes) {
    folder_.MakeFile("source", "new");
    SetFileAttributesA(folder_.At("source").c_str(), FILE_ATTRIBUTE_HIDDEN);
    folder_.MakeFile("a.kra", "old");
    const test::ImportPatch<ReplaceFileCall> noted("ReplaceFileA", &NoteExchange);
    realExchange = noted.Genuine();
    exchanges = 0;
    EXPECT_FALSE(CopyLocalFile(folder_.At("source"), file_, true));
    EXPECT_EQ(DWORD{ERROR_FILE_EXISTS}, GetLastError());
    EXPECT_TRUE(CopyLocalFile(folder_.At("source"), file_, false));
    EXPECT_EQ(1, exchanges);
    EXPECT_EQ("new", FileBytes(file_));
    EXPECT_NE(0u, GetFileAttributesA(file_.c_str()) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_EQ((std::set<std::string>{"a.kra", "source"}), Names());
}

BOOL WINAPI CopyHalf(LPCSTR, LPCSTR path, BOOL) {
    const HANDLE file = CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    CloseHandle(file);
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(ReplaceFileTest, CopyThatDoesNotFitLeavesTheOldFile) {
    folder_.MakeFile("source", "new");
    folder_.MakeFile("a.kra", "old");
    const test::ImportPatch<decltype(&CopyFileA)> full("CopyFileA", &CopyHalf);
    ASSERT_TRUE(full.IsInPlace());
    EXPECT_FALSE(CopyLocalFile(folder_.At("source"), file_, false));
    EXPECT_EQ(DWORD{ERROR_DISK_FULL}, GetLastError());
    EXPECT_EQ("old", FileBytes(file_));
    EXPECT_EQ((std::set<std::string>{"a.kra", "source"}), Names());
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
    const test::ImportPatch<ReplaceFileCall> refused("ReplaceFileA", &RefuseExchange);
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
    const test::ImportPatch<ReplaceFileCall> refused("ReplaceFileA", &RefuseExchange);
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
