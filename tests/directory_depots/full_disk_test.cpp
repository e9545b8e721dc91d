// Edits of working copies while the volume of the temporary files is full.
#include "support/full_disk.h"
#include "directory_depots/depot_fixture.h"
#include "platform/handles.h"

namespace depot {
namespace {

using test::CutWrite;
using test::FileBytes;
using test::RecoveredFiles;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kKeys = 800;
const std::string kLong(9000, 'x');

std::string Line(int number, const std::string& value) {
    return "Key" + std::to_string(number) + "=" + value + "\r\n";
}

// A profile of some 30 KB, with another value for one of its keys.
std::string Profile(int changed = -1, const std::string& value = {}) {
    std::string text = "[S]\r\n";
    for (int number = 0; number < kKeys; ++number) {
        text += Line(number, number == changed ? value : "value number " + std::to_string(number));
    }
    return text;
}

std::string TemporaryFolder() {
    char folder[MAX_PATH] = {};
    GetTempPathA(sizeof(folder), folder);
    return folder;
}

// The temporary files' folder, elsewhere while this lives.
class TemporaryFolderAt {
public:
    explicit TemporaryFolderAt(const std::string& folder) {
        GetEnvironmentVariableA("TMP", before_, sizeof(before_));
        SetEnvironmentVariableA("TMP", folder.c_str());
    }
    ~TemporaryFolderAt() { SetEnvironmentVariableA("TMP", before_); }
    TemporaryFolderAt(const TemporaryFolderAt&) = delete;
    TemporaryFolderAt& operator=(const TemporaryFolderAt&) = delete;

private:
    char before_[MAX_PATH] = {};
};

void Fill(const std::string& folder) {
    const UniqueHandle file = OwnFile(CreateFileA((folder + "\\fill").c_str(), GENERIC_WRITE, 0,
                                                  nullptr, CREATE_ALWAYS, 0, nullptr));
    const std::string block(1024, 'f');
    for (DWORD written = 1; written > 0;) {
        WriteFile(file.get(), block.data(), static_cast<DWORD>(block.size()), &written, nullptr);
    }
}

class FullDiskTest : public test::DepotFixture {
protected:
    FullDiskTest() {
        server_.AddFile("a.kra", base_, Profile());
        Choose();
    }

    void ExpectKept(const std::string& text) {
        EXPECT_TRUE(Profile() == Stored("a.kra"));
        ASSERT_THAT(RecoveredFiles(), SizeIs(1));
        EXPECT_TRUE(text == FileBytes(RecoveredFiles().front()));
        ASSERT_THAT(boxes_.Texts(), SizeIs(1));
        EXPECT_THAT(boxes_.Texts().front(), testing::EndsWith("\n" + RecoveredFiles().front()));
        EXPECT_THAT(boxes_.Texts().front(), HasSubstr("\"a.kra\""));
    }
};

TEST_F(FullDiskTest, EditThatAFullVolumeCutsLeavesTheEntryAndIsRecoveredWhole) {
    const std::string volume = server_.SmallVolume();
    const TemporaryFolderAt elsewhere(volume.empty() ? TemporaryFolder() : volume);
    const auto file = Load();
    ASSERT_TRUE(Profile() == FileBytes(file->localPath));
    std::optional<test::FullDisk> full;
    if (volume.empty()) {
        full.emplace(file->localPath, CutWrite::kSucceeds);
    } else {
        Fill(volume);
    }
    file->WriteString("S", "Key1", kLong);
    EXPECT_EQ("value number 799", file->ReadString("S", "Key799", "", 100));
    EXPECT_FALSE(file->Release());
    ExpectKept(Profile(1, kLong));
}

TEST_F(FullDiskTest, EditThatTheSystemFailsToWriteLeavesTheEntryAndIsRecoveredWhole) {
    const auto file = Load();
    const test::FullDisk full(file->localPath, CutWrite::kFails);
    file->WriteString("S", "Key1", kLong);
    EXPECT_FALSE(file->Release());
    ExpectKept(Profile(1, kLong));
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
}

TEST_F(FullDiskTest, LaterEditsThatAreWrittenDoNotHaveTheCopyStored) {
    const auto file = Load();
    {
        const test::FullDisk full(file->localPath, CutWrite::kSucceeds);
        file->WriteString("S", "Key1", kLong);
    }
    file->WriteString("S", "Key1", "short");
    file->WriteString("S", "Key1", "last");
    EXPECT_EQ("last", file->ReadString("S", "Key1", "", 100));
    EXPECT_FALSE(file->Release());
    ExpectKept(Profile(1, "last"));
}

TEST_F(FullDiskTest, NextWorkingCopyOfTheFileIsStoredAgain) {
    {
        const auto file = Load();
        const test::FullDisk full(file->localPath, CutWrite::kFails);
        file->WriteString("S", "Key1", kLong);
        EXPECT_FALSE(file->Release());
    }
    const auto file = Load();
    file->WriteString("S", "Key1", "new");
    EXPECT_TRUE(file->Release());
    EXPECT_TRUE(Profile(1, "new") == Stored("a.kra"));
}

BOOL WINAPI WriteNowhere(HANDLE, LPCVOID, DWORD, LPDWORD, OVERLAPPED*) {
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(FullDiskTest, CutCopyThatCannotBePutBackIsRecoveredWhole) {
    const auto file = Load();
    {
        const test::FullDisk full(file->localPath, CutWrite::kFails);
        const test::ImportPatch<decltype(&WriteFile)> writing("WriteFile", &WriteNowhere);
        ASSERT_TRUE(writing.IsInPlace());
        file->WriteString("S", "Key1", kLong);
    }
    file->WriteString("S", "Key2", "new");
    EXPECT_FALSE(file->Release());
    std::string expected = Profile(1, kLong);
    const std::string old = Line(2, "value number 2");
    expected.replace(expected.find(old), old.size(), Line(2, "new"));
    ExpectKept(expected);
}

TEST_F(FullDiskTest, CopyStaysWhereNothingCanBeRecovered) {
    const auto file = Load();
    const std::string localPath = file->localPath;
    const test::FullDisk full(localPath, CutWrite::kFails);
    file->WriteString("S", "Key1", kLong);
    const test::ImportPatch<decltype(&WriteFile)> writing("WriteFile", &WriteNowhere);
    EXPECT_FALSE(file->Release());
    EXPECT_TRUE(Profile() == Stored("a.kra"));
    EXPECT_TRUE(Profile() == FileBytes(localPath));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    ASSERT_THAT(boxes_.Texts(), SizeIs(1));
    EXPECT_THAT(boxes_.Texts().front(), testing::EndsWith("\n" + localPath));
}

TEST_F(FullDiskTest, FileThatCouldNotBeFetchedIsNotReplacedByItsEdit) {
    const std::string volume = server_.SmallVolume();
    const TemporaryFolderAt elsewhere(volume.empty() ? TemporaryFolder() : volume);
    if (!volume.empty()) Fill(volume);
    const auto file = Load();
    if (volume.empty()) ::DeleteFileA(file->localPath.c_str());
    file->WriteString("S", "Key1", "new");
    EXPECT_FALSE(file->Release());
    EXPECT_TRUE(Profile() == Stored("a.kra"));
    EXPECT_FALSE(boxes_.Texts().empty());
}

}  // namespace
}  // namespace depot
