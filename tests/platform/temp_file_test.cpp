#include "platform/temp_file.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "support/import_patch.h"
#include "support/scratch.h"
// After the Windows headers.
#include <shellapi.h>

#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;

// Sends temporary files into a folder while it lives.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::string& path) {
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            char value[MAX_PATH] = {};
            GetEnvironmentVariableA(kNames[i], value, sizeof(value));
            old_[i] = value;
            SetEnvironmentVariableA(kNames[i], path.c_str());
        }
    }
    ~TemporaryFolder() {
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            SetEnvironmentVariableA(kNames[i], old_[i].c_str());
        }
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

private:
    static constexpr std::array<const char*, 2> kNames = {"TMP", "TEMP"};
    std::array<std::string, 2> old_;
};

// Returns a folder below `parent` whose path has exactly that many characters.
std::string MakeFolderOfLength(const test::ScratchFolder& parent, std::size_t length) {
    std::string name;
    while (parent.At(name).size() < length) {
        const std::size_t left = length - parent.At(name).size();
        name.append(std::min<std::size_t>(left, 40), 'f');
        // Enough must be left for a backslash and one more letter.
        if (left > 42) name += "\\";
    }
    return parent.MakeFolder(name);
}

// Whether a file's rights give the group of all users anything.
bool IsOpenToEveryone(const std::string& path) {
    DWORD size = 0;
    GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<BYTE> descriptor(size);
    EXPECT_TRUE(
        GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), size, &size));
    BOOL present = FALSE, defaulted = FALSE;
    ACL* list = nullptr;
    EXPECT_TRUE(GetSecurityDescriptorDacl(descriptor.data(), &present, &list, &defaulted));
    if (!present || list == nullptr) return true;
    for (DWORD index = 0; index < list->AceCount; ++index) {
        void* entry = nullptr;
        EXPECT_TRUE(GetAce(list, index, &entry));
        auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        if (IsWellKnownSid(&allowed->SidStart, WinWorldSid) && allowed->Mask != 0) return true;
    }
    return false;
}

TEST(TempFileNameTest, NewFileIsForItsUserAlone) {
    const test::ScratchFolder folder;
    const TemporaryFolder temporary(folder.Path());
    ASSERT_TRUE(IsOpenToEveryone(folder.MakeFile("other", "x")));
    const std::string name = MakeTempFileName();
    EXPECT_FALSE(IsOpenToEveryone(name));
    EXPECT_TRUE(WriteLocalFile(name, "of its user", 11));
    EXPECT_EQ("of its user", test::FileBytes(name));
    EXPECT_TRUE(DeleteFileA(name.c_str()));
}

TEST(TempFileNameTest, NewEmptyFileStandsInTheTemporaryFolder) {
    const test::ScratchFolder folder;
    const TemporaryFolder temporary(folder.Path());
    const std::string first = MakeTempFileName();
    const std::string second = MakeTempFileName();
    EXPECT_NE(first, second);
    EXPECT_TRUE(EqualsNoCase(folder.Path(), ParentFolder(first))) << first;
    EXPECT_TRUE(StartsWithNoCase(NamePart(first), "lda")) << first;
    EXPECT_EQ("", test::FileBytes(first));
    EXPECT_EQ("", test::FileBytes(second));
}

TEST(TempFileNameTest, MissingTemporaryFolderGivesNothing) {
    const TemporaryFolder temporary("C:\\no such folder");
    EXPECT_EQ("", MakeTempFileName());
}

using NameTemporaryFile = decltype(&GetTempFileNameA);

// The prefix and the number with which a temporary file was last asked for.
std::string askedPrefix;
UINT askedNumber = 0;
NameTemporaryFile nameTemporaryFile = nullptr;

UINT WINAPI NoteTemporaryFile(const char* folder, const char* prefix, UINT number, char* name) {
    askedPrefix = prefix;
    askedNumber = number;
    return nameTemporaryFile(folder, prefix, number, name);
}

TEST(TempFileNameTest, SystemIsLeftToFindTheNumberAndToMakeTheFile) {
    const test::ScratchFolder folder;
    const TemporaryFolder temporary(folder.Path());
    const test::ImportPatch<NameTemporaryFile> naming("GetTempFileNameA", &NoteTemporaryFile);
    nameTemporaryFile = naming.Genuine();
    askedNumber = 1;
    EXPECT_NE("", MakeTempFileName());
    EXPECT_EQ("lda", askedPrefix);
    EXPECT_EQ(0u, askedNumber);
}

DWORD WINAPI AskForMoreRoom(DWORD room, char* folder) {
    folder[0] = '\0';
    return room;
}

TEST(TempFileNameTest, TemporaryFolderThatDoesNotFitGivesNothing) {
    const test::ImportPatch<decltype(&GetTempPathA)> asking("GetTempPathA", &AskForMoreRoom);
    ASSERT_TRUE(asking.IsInPlace());
    EXPECT_EQ("", MakeTempFileName());
    EXPECT_EQ("", MakeTempFolder());
}

BOOL WINAPI OpenNoProcessToken(HANDLE, DWORD, HANDLE*) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

TEST(TempFileNameTest, FileOfAnUnknownUserIsMadeAllTheSame) {
    const test::ScratchFolder folder;
    const TemporaryFolder temporary(folder.Path());
    const test::ImportPatch<decltype(&OpenProcessToken)> opening("OpenProcessToken",
                                                                 &OpenNoProcessToken);
    ASSERT_TRUE(opening.IsInPlace());
    const std::string name = MakeTempFileName();
    EXPECT_EQ("", test::FileBytes(name));
    EXPECT_TRUE(IsOpenToEveryone(name));
}

// How often a folder could not be made, as if another process had always been faster.
int refusedFolders = 0;

BOOL WINAPI MakeNoFolder(const char*, SECURITY_ATTRIBUTES*) {
    ++refusedFolders;
    SetLastError(ERROR_ALREADY_EXISTS);
    return FALSE;
}

TEST(TempFolderTest, NamesThatOthersAlwaysTakeFirstGiveNoFolderAndLeaveNothing) {
    const test::ScratchFolder folder;
    const TemporaryFolder temporary(folder.Path());
    {
        const test::ImportPatch<decltype(&CreateDirectoryA)> making("CreateDirectoryA",
                                                                    &MakeNoFolder);
        refusedFolders = 0;
        EXPECT_EQ("", MakeTempFolder());
    }
    EXPECT_EQ(16, refusedFolders);
    EXPECT_TRUE(RemoveDirectoryA(folder.Path().c_str())) << "something was left in it";
}

using ShellOperation = decltype(&SHFileOperationA);

SHFILEOPSTRUCTA askedOperation = {};
std::string askedPaths;
bool shellAborts = false;

int WINAPI NoteOperation(SHFILEOPSTRUCTA* operation) {
    askedOperation = *operation;
    askedPaths.assign(operation->pFrom, 262);
    operation->fAnyOperationsAborted = shellAborts ? TRUE : FALSE;
    return 0;
}

class ShellDeletionTest : public testing::Test {
protected:
    ShellDeletionTest() {
        shellAborts = false;
        EXPECT_TRUE(patch_.IsInPlace());
    }

    const test::ImportPatch<ShellOperation> patch_{"SHFileOperationA", &NoteOperation};
};

TEST_F(ShellDeletionTest, ShellIsAskedToDeleteForGoodAndToShowItsErrors) {
    EXPECT_THAT(DeleteContainingFolder("C:\\a\\b"), IsDone());
    EXPECT_EQ(3u, askedOperation.wFunc);
    EXPECT_EQ(0x10, askedOperation.fFlags);
    EXPECT_EQ(nullptr, askedOperation.hwnd);
    EXPECT_EQ(nullptr, askedOperation.pTo);
    EXPECT_EQ("C:\\a" + std::string(258, '\0'), askedPaths);
}

TEST_F(ShellDeletionTest, AbortedDeletionFails) {
    shellAborts = true;
    EXPECT_THAT(DeleteContainingFolder("C:\\a\\b"), Fails());
}

TEST(DeleteContainingFolderTest, FolderIsDeletedWithAllThatIsInIt) {
    const test::ScratchFolder folder;
    const std::string file = folder.MakeFile("keep.txt", "x");
    folder.MakeFolder("doomed\\below");
    folder.MakeFile("doomed\\below\\other.txt", "x");
    const std::string named = folder.MakeFile("doomed\\a.txt", "x");
    EXPECT_THAT(DeleteContainingFolder(named), IsDone());
    EXPECT_FALSE(test::Exists(folder.At("doomed")));
    EXPECT_TRUE(test::Exists(file));
}

TEST(DeleteContainingFolderTest, NamedFileNeedNotExist) {
    const test::ScratchFolder folder;
    folder.MakeFolder("doomed");
    EXPECT_THAT(DeleteContainingFolder(folder.At("doomed\\nothing")), IsDone());
    EXPECT_FALSE(test::Exists(folder.At("doomed")));
}

TEST(DeleteContainingFolderTest, TrailingBackslashMeansTheFolderAbove) {
    const test::ScratchFolder folder;
    folder.MakeFolder("above\\below");
    EXPECT_THAT(DeleteContainingFolder(folder.At("above\\below\\")), IsDone());
    EXPECT_FALSE(test::Exists(folder.At("above")));
    EXPECT_TRUE(test::Exists(folder.Path()));
}

TEST(DeleteContainingFolderTest, MissingFolderFails) {
    const test::ScratchFolder folder;
    EXPECT_THAT(DeleteContainingFolder(folder.At("missing\\a.txt")), Fails());
}

TEST(DeleteContainingFolderTest, EmptyPathDeletesNothing) {
    EXPECT_THAT(DeleteContainingFolder(""), Fails());
    EXPECT_THAT(DeleteContainingFolder("\\"), Fails());
}

TEST(DeleteContainingFolderTest, FolderOfTheGreatestLengthIsTakenAndALongerPathIsRefused) {
    const test::ScratchFolder parent;
    const std::string fit = MakeFolderOfLength(parent, 260);
    ASSERT_EQ(260u, fit.size());
    // Cut to 260 characters, the longer path would name the other folder.
    EXPECT_THAT(DeleteContainingFolder(fit + "f\\a.txt"), Fails());
    EXPECT_TRUE(test::Exists(fit));
    EXPECT_THAT(DeleteContainingFolder(fit + "\\a.txt"), IsDone());
    EXPECT_FALSE(test::Exists(fit));
}

}  // namespace
}  // namespace depot
