// Writing profiles while the disk is full or another program writes, in this process: there the
// system's functions can be replaced.
#include <CLI/CLI.hpp>
#include <algorithm>

#include "depotctl/commands.h"
#include "depotctl/failure.h"
#include "depotctl/program.h"
#include "depotctl/tool.h"
#include "support/import_patch.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

constexpr char kBefore[] = "[Host]\r\nName=mail\r\nPort=992\r\n";
constexpr char kByOthers[] = "[Host]\r\nName=news\r\n";

std::string profile;    // the profile that a replaced function concerns
int failingWrites = 0;  // how many writes of a file find no room

using WriteValueCall = decltype(&WritePrivateProfileStringW);
using WriteFileCall = decltype(&WriteFile);
WriteValueCall realWriteValue = nullptr;
WriteFileCall realWriteFile = nullptr;

// A disk without room cuts a file of values in its middle.
BOOL CutFile(LPCWSTR path) {
    const UniqueHandle file =
        OwnFile(CreateFileW(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    SetFilePointer(file.get(), static_cast<LONG>(GetFileSize(file.get(), nullptr) / 2), nullptr,
                   FILE_BEGIN);
    return SetEndOfFile(file.get());
}

BOOL WINAPI CutAndFail(LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR path) {
    CutFile(path);
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

BOOL WINAPI CutAndSucceed(LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR path) {
    return CutFile(path);
}

// Another program writes the profile after it was read.
BOOL WINAPI WriteBesideOthers(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR path) {
    const UniqueHandle file =
        OwnFile(CreateFileA(profile.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    realWriteFile(file.get(), kByOthers, sizeof(kByOthers) - 1, &written, nullptr);
    return realWriteValue(section, key, value, path);
}

// Half of the bytes still fit.
BOOL WINAPI WriteHalf(HANDLE file, LPCVOID bytes, DWORD length, DWORD* written, LPOVERLAPPED how) {
    char path[MAX_PATH] = {};
    GetFinalPathNameByHandleA(file, path, sizeof(path), FILE_NAME_NORMALIZED);
    const bool isProfile = std::string(path).ends_with("office.kre");
    if (!isProfile || failingWrites == 0) return realWriteFile(file, bytes, length, written, how);
    --failingWrites;
    realWriteFile(file, bytes, length / 2, written, how);
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

class ProfileFailureTest : public ToolTest {
protected:
    ProfileFailureTest() {
        EXPECT_TRUE(writing_.IsInPlace());
        realWriteFile = writing_.Genuine();
        failingWrites = 0;
        profile = folder_.MakeFile("work\\office.kre", kBefore);
    }

    // Sets a value by the command of this process.
    void Set() {
        ctl::Program program;
        CLI::App app;
        ctl::AddProfileCommands(app, program);
        std::vector<std::string> arguments = {"set", "<Work>\\office.kre", "Host", "Name",
                                              "a longer name than before"};
        std::reverse(arguments.begin(), arguments.end());
        app.parse(arguments);
        try {
            program.command();
            code_ = ExitCode::kDone;
        } catch (const ctl::CommandFailure& failure) {
            code_ = failure.Code();
            reason_ = failure.what();
        }
    }

    ExitCode code_ = ExitCode::kDone;
    std::string reason_;
    const ImportPatch<WriteFileCall> writing_{"WriteFile", &WriteHalf};
};

// Each write of a value takes this way while the object lives.
class ValueWriting {
public:
    explicit ValueWriting(WriteValueCall call) : patch_("WritePrivateProfileStringW", call) {
        EXPECT_TRUE(patch_.IsInPlace());
        realWriteValue = patch_.Genuine();
    }

private:
    const ImportPatch<WriteValueCall> patch_;
};

TEST_F(ProfileFailureTest, SetWhereTheCopyFindsNoRoomIsRefusedAndTheProfileStays) {
    for (const WriteValueCall call : {&CutAndFail, &CutAndSucceed}) {
        const ValueWriting full(call);
        Set();
        EXPECT_EQ(ExitCode::kRefused, code_);
        EXPECT_THAT(reason_, HasSubstr("cannot write \"<Work>\\office.kre\""));
        EXPECT_EQ(kBefore, FileBytes(profile));
    }
}

TEST_F(ProfileFailureTest, SetWhereTheProfileFindsNoRoomIsRefusedAndTheProfileStays) {
    failingWrites = 1;
    Set();
    EXPECT_EQ(0, failingWrites);
    EXPECT_EQ(ExitCode::kRefused, code_);
    EXPECT_THAT(reason_, HasSubstr("cannot write \"<Work>\\office.kre\""));
    EXPECT_EQ(kBefore, FileBytes(profile));
}

TEST_F(ProfileFailureTest, SetOfAProfileThatIsLostOnAFullDiskReportsWhereItIsKept) {
    failingWrites = 2;
    Set();
    EXPECT_EQ(ExitCode::kRefused, code_);
    const std::size_t path = reason_.find("it lost what it held, which is kept in ");
    ASSERT_NE(std::string::npos, path) << reason_;
    const std::string kept = reason_.substr(reason_.find("kept in ") + 8);
    EXPECT_EQ(kBefore, FileBytes(kept));
    DeleteFileA(kept.c_str());
}

TEST_F(ProfileFailureTest, SetOfAProfileThatAnotherProgramWritesMeanwhileIsRefused) {
    const ValueWriting others(&WriteBesideOthers);
    Set();
    EXPECT_EQ(ExitCode::kRefused, code_);
    EXPECT_EQ("\"<Work>\\office.kre\" was changed by another program meanwhile", reason_);
    EXPECT_EQ(kByOthers, FileBytes(profile));
}

}  // namespace
}  // namespace depot::test
