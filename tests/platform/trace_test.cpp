#include "platform/trace.h"

#include <gmock/gmock.h>

#include "platform/local_file.h"
#include "support/import_patch.h"
#include "support/scratch.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

class TraceTest : public testing::Test {
protected:
    ~TraceTest() override {
        StopTrace();
        SetEnvironmentVariableA(kTraceVariable, nullptr);
    }

    void Start(const std::string& target) {
        SetEnvironmentVariableA(kTraceVariable, target.c_str());
        StartTrace();
    }
    std::string Written() const {
        const auto bytes = ReadLocalFile(path_);
        return bytes ? std::string(bytes->begin(), bytes->end()) : "(no file)";
    }

    ScratchFolder folder_;
    const std::string path_ = folder_.At("trace.txt");
};

TEST_F(TraceTest, WithoutTheVariableNothingIsTraced) {
    StartTrace();
    EXPECT_FALSE(IsTracing());
    TraceSpan("DPLoadFile").EndWithResult(S_OK);
    EXPECT_EQ("(no file)", Written());
}

TEST_F(TraceTest, StartReportsWhetherItCanBeWritten) {
    EXPECT_EQ(TraceStart::kOff, StartTrace());
    SetEnvironmentVariableA(kTraceVariable, folder_.At("none\\trace.txt").c_str());
    EXPECT_EQ(TraceStart::kUnwritable, StartTrace());
    EXPECT_FALSE(IsTracing());
    SetEnvironmentVariableA(kTraceVariable, path_.c_str());
    EXPECT_EQ(TraceStart::kStarted, StartTrace());
    EXPECT_TRUE(IsTracing());
}

TEST_F(TraceTest, LineHoldsTimePlaceOperationDurationAndResult) {
    Start(path_);
    ASSERT_TRUE(IsTracing());
    TraceSpan("DPLoadFile").EndWithResult(S_FALSE);
    EXPECT_THAT(
        Written(),
        MatchesRegex("\\d\\d\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d \\d+:\\d+ "
                     "DPLoadFile \\d+\\.\\d\\d\\d ms S_FALSE\r\n"));
}

TEST_F(TraceTest, ResultsAreNamedOrNumbered) {
    Start(path_);
    TraceSpan("a").EndWithResult(S_OK);
    TraceSpan("b").EndWithResult(E_FAIL);
    TraceSpan("c").EndWithCode(49);
    const std::string written = Written();
    EXPECT_THAT(written, HasSubstr(" ms S_OK\r\n"));
    EXPECT_THAT(written, HasSubstr(" ms 0x80004005\r\n"));
    EXPECT_THAT(written, HasSubstr(" ms 49\r\n"));
}

TEST_F(TraceTest, SubjectIsCutAndItsControlCharactersReplaced) {
    Start(path_);
    TraceSpan("x", "one\r\ntwo%s%n").EndWithCode(0);
    EXPECT_THAT(Written(), HasSubstr("x \"one??two%s%n\" "));
    const std::string longSubject(100000, 'n');
    TraceSpan("y", longSubject).EndWithCode(0);
    EXPECT_THAT(Written(), HasSubstr("y \"" + std::string(200, 'n') + "\" "));
}

TEST_F(TraceTest, LinesAreAppendedToAFileThatExists) {
    folder_.MakeFile("trace.txt", "before\n");
    Start(path_);
    TraceSpan("x").EndWithCode(0);
    EXPECT_EQ(0U, Written().find("before\n"));
    EXPECT_THAT(Written(), HasSubstr(" x "));
}

TEST_F(TraceTest, FileThatCannotBeOpenedTracesNothing) {
    Start(folder_.At("missing\\trace.txt"));
    EXPECT_FALSE(IsTracing());
    Start(std::string(30000, 'x'));
    EXPECT_FALSE(IsTracing());
}

TEST_F(TraceTest, ElevatedProcessIgnoresTheVariableUnlessTheMachineAllowsIt) {
    // The program is elevated, and tests allow traces.
    WriteRegistryDword(HKEY_LOCAL_MACHINE, kTraceKey, kTraceElevated, 0);
    for (const std::string& target : {path_, std::string("debugger")}) {
        Start(target);
        EXPECT_FALSE(IsTracing()) << target;
    }
    EXPECT_EQ("(no file)", Written());
    WriteRegistryDword(HKEY_LOCAL_MACHINE, kTraceKey, kTraceElevated, 1);
    Start(path_);
    EXPECT_TRUE(IsTracing());
}

TEST_F(TraceTest, FileOfSeveralNamesIsNotWritten) {
    folder_.MakeFile("other.txt", "before\n");
    ASSERT_TRUE(CreateHardLinkA(path_.c_str(), folder_.At("other.txt").c_str(), nullptr));
    Start(path_);
    EXPECT_FALSE(IsTracing());
    EXPECT_EQ("before\n", Written());
}

TEST_F(TraceTest, DeviceIsNotWritten) {
    for (const char* device : {"NUL", "\\\\.\\NUL"}) {
        Start(device);
        EXPECT_FALSE(IsTracing()) << device;
    }
}

BOOL WINAPI TellALink(HANDLE /*file*/, BY_HANDLE_FILE_INFORMATION* found) {
    *found = {};
    found->dwFileAttributes = FILE_ATTRIBUTE_REPARSE_POINT;
    found->nNumberOfLinks = 1;
    return TRUE;
}

using OpenFileCall = decltype(&CreateFileA);
OpenFileCall openFile = nullptr;
DWORD openedWith = 0;

HANDLE WINAPI NoteOpening(const char* path, DWORD access, DWORD sharing,
                          SECURITY_ATTRIBUTES* security, DWORD disposition, DWORD flags,
                          HANDLE pattern) {
    openedWith = flags;
    return openFile(path, access, sharing, security, disposition, flags, pattern);
}

TEST_F(TraceTest, LinkIsOpenedItselfAndNotWritten) {
    const ImportPatch<decltype(&GetFileInformationByHandle)> links("GetFileInformationByHandle",
                                                                   &TellALink);
    const ImportPatch<OpenFileCall> opening("CreateFileA", &NoteOpening);
    ASSERT_TRUE(links.IsInPlace() && opening.IsInPlace());
    openFile = opening.Genuine();
    Start(path_);
    EXPECT_FALSE(IsTracing());
    EXPECT_NE(0U, openedWith & FILE_FLAG_OPEN_REPARSE_POINT);
    EXPECT_EQ(DWORD{SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS},
              openedWith & (SECURITY_SQOS_PRESENT | SECURITY_VALID_SQOS_FLAGS));
}

TEST_F(TraceTest, DebuggerTakesTheLinesWithoutAFile) {
    Start("Debugger");
    EXPECT_TRUE(IsTracing());
    TraceSpan("x").EndWithCode(0);
    EXPECT_EQ("(no file)", Written());
}

TEST_F(TraceTest, OperationKeepsItsLastError) {
    Start(path_);
    const TraceSpan span("x");
    SetLastError(1234);
    span.EndWithCode(0);
    EXPECT_EQ(1234U, GetLastError());
}

}  // namespace
}  // namespace depot::test
