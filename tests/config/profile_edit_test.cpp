#include "config/profile_edit.h"

#include <gtest/gtest.h>

#include "support/full_disk.h"

namespace depot {
namespace {

using test::CutWrite;
using test::FileBytes;
using test::FullDisk;

constexpr char kOld[] = "[S]\r\nA=1\r\nK=old\r\nZ=26\r\n";

class ProfileEditTest : public testing::Test {
protected:
    DWORD Edit(const char* value) {
        ProfileEdit edit = {"S", "K", {}};
        if (value != nullptr) edit.value = value;
        AmpleRoom room;
        outcome_ = EditProfile(edit, file_, room);
        return outcome_.error;
    }

    const test::ScratchFolder folder_;
    const std::string file_ = folder_.MakeFile("a.kra", kOld);
    EditOutcome outcome_;
};

TEST_F(ProfileEditTest, ValueIsWrittenAndDeleted) {
    EXPECT_EQ(0u, Edit(" new "));
    EXPECT_EQ("[S]\r\nA=1\r\nK=' new '\r\nZ=26\r\n", FileBytes(file_));
    EXPECT_EQ(0u, Edit(nullptr));
    EXPECT_EQ("[S]\r\nA=1\r\nZ=26\r\n", FileBytes(file_));
    EXPECT_EQ(0u, Edit(nullptr));
}

TEST_F(ProfileEditTest, CutFileGetsBackWhatItHeld) {
    for (const CutWrite answer : {CutWrite::kFails, CutWrite::kSucceeds}) {
        const FullDisk full(file_, answer);
        EXPECT_EQ(DWORD{ERROR_DISK_FULL}, Edit("new"));
        EXPECT_EQ(kOld, FileBytes(file_));
        EXPECT_EQ(DWORD{ERROR_DISK_FULL}, Edit(nullptr));
        EXPECT_EQ(kOld, FileBytes(file_));
        EXPECT_FALSE(outcome_.lost);
    }
}

TEST_F(ProfileEditTest, CutFileInUtf16GetsBackWhatItHeld) {
    const std::wstring text = L"\xFEFF[S]\r\nA=\x8868\r\nK=old\r\nZ=26\r\n";
    const std::string bytes(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    folder_.MakeFile("a.kra", bytes);
    for (const CutWrite answer : {CutWrite::kFails, CutWrite::kSucceeds}) {
        const FullDisk full(file_, answer);
        EXPECT_EQ(DWORD{ERROR_DISK_FULL}, Edit("new"));
        EXPECT_EQ(bytes, FileBytes(file_));
    }
}

BOOL WINAPI RefuseToWrite(HANDLE, LPCVOID, DWORD, LPDWORD, OVERLAPPED*) {
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(ProfileEditTest, BytesOfACutFileThatCannotBePutBackAreReturned) {
    const FullDisk full(file_, CutWrite::kFails);
    const test::ImportPatch<decltype(&WriteFile)> refused("WriteFile", &RefuseToWrite);
    ASSERT_TRUE(refused.IsInPlace());
    EXPECT_EQ(DWORD{ERROR_DISK_FULL}, Edit("new"));
    ASSERT_TRUE(outcome_.lost);
    EXPECT_EQ(kOld, std::string(outcome_.lost->begin(), outcome_.lost->end()));
}

std::string othersFile;
constexpr char kOthers[] = "[S]\r\nA=other\r\n";

BOOL WINAPI LoseToAnother(LPCSTR, LPCSTR, LPCSTR, LPCSTR) {
    const UniqueHandle file = OwnFile(
        CreateFileA(othersFile.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    WriteFile(file.get(), kOthers, sizeof(kOthers) - 1, &written, nullptr);
    SetLastError(ERROR_SHARING_VIOLATION);
    return FALSE;
}

TEST_F(ProfileEditTest, RefusedWriteLeavesWhatOthersWroteMeanwhile) {
    othersFile = file_;
    const test::ImportPatch<decltype(&WritePrivateProfileStringA)> writing(
        "WritePrivateProfileStringA", &LoseToAnother);
    ASSERT_TRUE(writing.IsInPlace());
    EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, Edit("new"));
    EXPECT_EQ(kOthers, FileBytes(file_));
}

BOOL WINAPI AnswerLittleRoom(LPCSTR, ULARGE_INTEGER* room, ULARGE_INTEGER*, ULARGE_INTEGER*) {
    room->QuadPart = 4096;
    return TRUE;
}

TEST_F(ProfileEditTest, LittleRoomAloneRefusesNoEdit) {
    const test::ImportPatch<decltype(&GetDiskFreeSpaceExA)> room("GetDiskFreeSpaceExA",
                                                                 &AnswerLittleRoom);
    ASSERT_TRUE(room.IsInPlace());
    const std::string strange =
        "\xEF\xBB\xBF; a comment\n\n[S]\n  A = 1\nK=old\n\n[T]\nK=2\n[S]\nZ=x\x81";
    for (const std::string& text :
         {std::string(kOld), strange, std::string(), std::string("[S]")}) {
        SCOPED_TRACE(text);
        for (const char* value : {"new", " 'quoted' ", "\x81\xFF", "\"x\"", "a=b;c", ""}) {
            folder_.MakeFile("a.kra", text);
            EXPECT_EQ(0u, Edit(value)) << value;
        }
        folder_.MakeFile("a.kra", text);
        EXPECT_EQ(0u, Edit(nullptr));
    }
    ::DeleteFileA(file_.c_str());
    EXPECT_EQ(0u, Edit("new"));
    EXPECT_EQ("[S]\r\nK=new\r\n", FileBytes(file_));
}

TEST_F(ProfileEditTest, TextsThatNeverReachTheSystemAreNoFailureOfTheFile) {
    const std::string huge(32'767, 'x');
    EXPECT_EQ(0u, Edit(huge.c_str()));
    EXPECT_EQ(kOld, FileBytes(file_));
}

// Answers with a room of its own, and counts the questions.
class RoomProbe {
public:
    explicit RoomProbe(ULONGLONG bytes) {
        EXPECT_TRUE(room_.IsInPlace());
        bytes_ = bytes;
        asked_ = 0;
    }
    static int Asked() { return asked_; }

private:
    static BOOL WINAPI Answer(LPCSTR, ULARGE_INTEGER* room, ULARGE_INTEGER*, ULARGE_INTEGER*) {
        ++asked_;
        room->QuadPart = bytes_;
        return TRUE;
    }

    static inline ULONGLONG bytes_ = 0;
    static inline int asked_ = 0;
    const test::ImportPatch<decltype(&GetDiskFreeSpaceExA)> room_{"GetDiskFreeSpaceExA", &Answer};
};

ULONGLONG now = 0;

ULONGLONG WINAPI StoppedClock() {
    return now;
}

TEST(AmpleRoomTest, PlentyIsLookedAtOnceASecond) {
    const test::ImportPatch<decltype(&GetTickCount64)> time("GetTickCount64", &StoppedClock);
    const RoomProbe probe(4096ull * 1024 * 1024);
    AmpleRoom room;
    now = 1'000'000;
    for (int count = 0; count < 3; ++count) EXPECT_TRUE(room.IsThere("C:\\a.kra"));
    EXPECT_EQ(1, RoomProbe::Asked());
    now += 1000;
    EXPECT_TRUE(room.IsThere("C:\\a.kra"));
    EXPECT_EQ(2, RoomProbe::Asked());
}

TEST(AmpleRoomTest, LittleRoomIsLookedAtEachTime) {
    AmpleRoom room;
    {
        const RoomProbe probe(16ull * 1024 * 1024);
        EXPECT_TRUE(room.IsThere("C:\\a.kra"));
        EXPECT_TRUE(room.IsThere("C:\\a.kra"));
        EXPECT_EQ(2, RoomProbe::Asked());
    }
    const RoomProbe probe(16ull * 1024 * 1024 - 1);
    EXPECT_FALSE(room.IsThere("C:\\a.kra"));
    EXPECT_EQ(1, RoomProbe::Asked());
}

}  // namespace
}  // namespace depot
