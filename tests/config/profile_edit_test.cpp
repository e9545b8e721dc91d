#include "config/profile_edit.h"

#include <gtest/gtest.h>

#include "config/profile_file.h"
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

// Bytes of which some are no characters, or second spellings of one, in each code page: in another
// one the full stop's last byte begins a character.
const std::string kForeign[] = {"\x95\x5C",
                                "\x87\x9A",
                                "\x83",
                                "\xE3\x80\x82",
                                "\xED\xA0\xBD",
                                "\xFF\xFE\xE9",
                                std::string("1\0x", 3)};

class ForeignBytesTest : public ProfileEditTest, public testing::WithParamInterface<std::string> {
protected:
    // A profile whose key has that value, and whose other lines have foreign bytes.
    static std::string Profile(const std::string& line) {
        return "[\xE3\x80\x82" + GetParam() + "]\r\nK=" + GetParam() + "\r\n[S]\r\n" + GetParam() +
               "=1\r\nA=" + GetParam() + "\r\n" + line + "Z=" + GetParam() + "\r\n";
    }

    // What the file holds once the bytes were edited.
    std::string Edited(const std::string& bytes, const char* value) {
        folder_.MakeFile("a.kra", bytes);
        EXPECT_EQ(0u, Edit(value));
        EXPECT_EQ(0u, outcome_.refusal);
        return FileBytes(file_);
    }
};

TEST_P(ForeignBytesTest, LinesThatTheEditDoesNotConcernStay) {
    for (const std::string mark : {"", "\xEF\xBB\xBF"}) {
        const std::string old = mark + Profile("K=old\r\n");
        EXPECT_EQ(mark + Profile("K=new\r\n"), Edited(old, "new"));
        EXPECT_EQ(mark + Profile("K=' new '\r\n"), Edited(old, " new "));
        EXPECT_EQ(mark + Profile(""), Edited(old, nullptr));
        EXPECT_EQ(mark + Profile("") + "K=new\r\n", Edited(mark + Profile(""), "new"));
        EXPECT_EQ(mark + Profile(""), Edited(mark + Profile(""), nullptr));
    }
}

INSTANTIATE_TEST_SUITE_P(Bytes, ForeignBytesTest, testing::ValuesIn(kForeign));

constexpr char kForeignProfile[] = "\xEF\xBB\xBF[S]\r\nA=\x81\r\nK=old\r\n";

TEST_F(ProfileEditTest, Utf16ThatIsNotWholeRefusesEditsAndStays) {
    const std::wstring text = L"\xFEFF[S]\r\nA=1";
    const std::string whole(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    for (const std::string& end : {std::string("x"), std::string("\0\0\r\0", 4)}) {
        folder_.MakeFile("a.kra", whole + end);
        EXPECT_EQ(0u, Edit("new"));
        EXPECT_EQ(DWORD{ERROR_NO_UNICODE_TRANSLATION}, outcome_.refusal);
        EXPECT_EQ(whole + end, FileBytes(file_));
    }
}

DWORD WINAPI ReadNothing(LPCSTR, LPCSTR, LPCSTR, LPSTR, DWORD, LPCSTR) {
    return 0;
}

TEST_F(ProfileEditTest, EditOfForeignBytesThatCannotBeReadBackIsTakenBack) {
    folder_.MakeFile("a.kra", kForeignProfile);
    const test::ImportPatch<decltype(&GetPrivateProfileStringA)> reading("GetPrivateProfileStringA",
                                                                         &ReadNothing);
    ASSERT_TRUE(reading.IsInPlace());
    EXPECT_EQ(0u, Edit("new"));
    EXPECT_EQ(DWORD{ERROR_NO_UNICODE_TRANSLATION}, outcome_.refusal);
    EXPECT_EQ(kForeignProfile, FileBytes(file_));
}

TEST_F(ProfileEditTest, ForeignBytesOfACutFileAreReturned) {
    folder_.MakeFile("a.kra", kForeignProfile);
    const test::ImportPatch<decltype(&WriteFile)> refused("WriteFile", &RefuseToWrite);
    ASSERT_TRUE(refused.IsInPlace());
    EXPECT_EQ(DWORD{ERROR_DISK_FULL}, Edit("new"));
    const std::string left = outcome_.lost
                                 ? std::string(outcome_.lost->begin(), outcome_.lost->end())
                                 : FileBytes(file_);
    EXPECT_EQ(kForeignProfile, left);
}

TEST_F(ProfileEditTest, ForeignBytesTakeNoTextThatTheSystemCannotCount) {
    folder_.MakeFile("a.kra", kForeignProfile);
    EXPECT_EQ(0u, Edit(std::string(32'767, 'x').c_str()));
    EXPECT_EQ(kProfileTextTooLong, outcome_.refusal);
    EXPECT_EQ(kForeignProfile, FileBytes(file_));
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
