// How answers and failures are put: JSON, times, files, colours, the completion, the trace.
#include <set>

#include "depotctl/console.h"
#include "depotctl/directory_tool.h"
#include "depotctl/program.h"
#include "platform/trace.h"
#include "support/import_patch.h"

namespace depot::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class OutputTest : public ToolTest {
protected:
    OutputTest() { folder_.MakeFile("work\\a.kre", "[Host]\r\nName=mail\r\n"); }

    std::string OutFile() const { return folder_.At("out.txt"); }
};

TEST_F(OutputTest, FailuresAreJsonWhereJsonIsWanted) {
    const struct {
        std::vector<std::string> arguments;
        ExitCode code;
    } rows[] = {{{"ls", "--json", "<Work>\\none"}, ExitCode::kRefused},
                {{"--json", "cat", "<Nope>\\x"}, ExitCode::kRefused},
                {{"nonsense", "--json"}, ExitCode::kUsage},
                {{"compare", "--json", "<Work>\\none", "<Team>\\"}, ExitCode::kFailed}};
    for (const auto& [arguments, code] : rows) {
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(code, run.exitCode);
        const auto error = nlohmann::json::parse(run.errors, nullptr, false);
        ASSERT_TRUE(error.is_object()) << run.errors;
        EXPECT_EQ(static_cast<int>(code), error["error"]["code"]);
        EXPECT_NE("", error["error"]["text"]);
    }
    EXPECT_THAT(RunTool({"cat", "<Work>\\none.kre"}).errors, StartsWith("depotctl: "));
}

TEST_F(OutputTest, TimesAreIsoInJsonAndWhereTheyAreWantedSo) {
    const char* const iso = "20\\d\\d-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ";
    EXPECT_THAT(RunTool({"ls", "--json", "<Work>\\"}).output, ContainsRegex(iso));
    EXPECT_THAT(RunTool({"stat", "--json", "<Work>\\a.kre"}).output, ContainsRegex(iso));
    EXPECT_THAT(RunTool({"ls", "-l", "--iso", "<Work>\\"}).output, ContainsRegex(iso));
    EXPECT_THAT(RunTool({"ls", "-l", "<Work>\\"}).output, Not(ContainsRegex(iso)));
}

TEST_F(OutputTest, OutputGoesIntoAFileWhole) {
    const std::string shown = RunTool({"ls", "<Work>\\"}).output;
    const ToolRun run = RunTool({"ls", "<Work>\\", "--output", OutFile()});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("", run.output);
    EXPECT_EQ(shown, FileBytes(OutFile()));
    EXPECT_EQ(ExitCode::kDone, RunTool({"--output=" + OutFile(), "cat", "<Work>\\a.kre"}).exitCode);
    EXPECT_EQ("[Host]\r\nName=mail\r\n", FileBytes(OutFile()));
}

TEST_F(OutputTest, FileStaysWhereThereIsNoAnswer) {
    folder_.MakeFile("out.txt", "before");
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"cat", "<Work>\\none.kre", "--output", OutFile()}).exitCode);
    EXPECT_EQ("before", FileBytes(OutFile()));
    EXPECT_EQ(ExitCode::kUsage, RunTool({"ls", "--output", "<Work>\\x.txt"}).exitCode);
    EXPECT_EQ(ExitCode::kUsage, RunTool({"ls", "--output", ""}).exitCode);
}

TEST_F(OutputTest, AnswerIsStoredThoughTheExitCodeIsNotZero) {
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"compare", "<Work>\\", "<Team>\\", "--output", OutFile()}).exitCode);
    EXPECT_THAT(FileBytes(OutFile()), HasSubstr("only in the first"));
}

TEST_F(OutputTest, FileThatCannotBeWrittenIsAFailure) {
    for (const std::string& path : {folder_.At("none\\out.txt"), folder_.At("work")}) {
        const ToolRun run = RunTool({"ls", "<Work>\\", "--output", path});
        EXPECT_EQ(ExitCode::kRefused, run.exitCode);
        EXPECT_THAT(run.errors, HasSubstr("cannot write the output to"));
    }
}

using WriteFileCall = decltype(&WriteFile);

BOOL WINAPI FindNoRoom(HANDLE, LPCVOID, DWORD, DWORD* written, LPOVERLAPPED) {
    if (written != nullptr) *written = 0;
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(OutputTest, FullDiskIsAFailureAndTheFileStays) {
    folder_.MakeFile("out.txt", "before");
    ctl::Program program;
    program.CollectOutput();
    program.output.Write("an answer");
    std::string reason;
    {
        const ImportPatch<WriteFileCall> full("WriteFile", &FindNoRoom);
        ASSERT_TRUE(full.IsInPlace());
        try {
            program.StoreOutput(OutFile());
        } catch (const ctl::CommandFailure& failure) {
            reason = failure.what();
        }
    }
    EXPECT_THAT(reason, HasSubstr("cannot write the output to"));
    EXPECT_EQ("before", FileBytes(OutFile()));
    program.StoreOutput(OutFile());
    EXPECT_EQ("an answer", FileBytes(OutFile()));
}

TEST_F(OutputTest, HeadingsHaveAColourOnATerminalOnly) {
    TestConsole console(80);
    EXPECT_EQ(ExitCode::kDone, console.Run({"ls", "<Work>\\"}));
    EXPECT_NE(console.AttributesAt(0), console.AttributesAt(1));
    EXPECT_EQ("NAME   KIND\na.kre  file\n", RunTool({"ls", "<Work>\\"}).output);
}

TEST_F(OutputTest, NoColourWithTheVariable) {
    SetEnvironmentVariableW(L"NO_COLOR", L"1");
    {
        TestConsole console(80);
        EXPECT_EQ(ExitCode::kDone, console.Run({"ls", "<Work>\\"}));
        EXPECT_EQ(console.AttributesAt(0), console.AttributesAt(1));
    }
    SetEnvironmentVariableW(L"NO_COLOR", nullptr);
}

// The words behind `marker` at the beginnings of the lines of a help.
std::set<std::string> WordsOfHelp(const std::string& help, bool options) {
    std::set<std::string> words;
    for (std::size_t at = 0; at < help.size(); at = help.find('\n', at) + 1) {
        std::string line = help.substr(at, help.find('\n', at) - at);
        if (!line.starts_with("  ") || line.starts_with("   ") || line.starts_with("  depotctl")) {
            continue;
        }
        line.erase(0, 2);
        if (line.starts_with('-') != options) continue;
        line.resize(std::min(line.find(' '), line.size()));
        for (std::size_t from = 0; from <= line.size();) {
            const std::size_t end = std::min(line.find(',', from), line.size());
            words.insert(line.substr(from, end - from));
            from = end + 1;
        }
    }
    return words;
}

TEST_F(OutputTest, CompletionHasEveryCommandAndOptionOfTheHelp) {
    const ToolRun run = RunTool({"completion", "powershell"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    const std::string help = RunTool({"--help"}).output;
    std::set<std::string> commands;
    for (const char* command :
         {"ls",    "cat",       "get",    "set",      "cp",      "mv",        "rm",
          "mkdir", "copy-name", "upload", "download", "publish", "sync",      "compare",
          "tree",  "find",      "stat",   "depots",   "check",   "completion"}) {
        SCOPED_TRACE(command);
        EXPECT_THAT(help, HasSubstr(std::string("\n  ") + command + " "));
        EXPECT_THAT(run.output, HasSubstr(std::string("\n            '") + command + "' = "));
        const std::size_t table =
            run.output.find(std::string("\n        '") + command + "' = [ordered]@{");
        ASSERT_NE(std::string::npos, table);
        const std::string words =
            run.output.substr(table, run.output.find("\n        }", table) - table);
        for (const std::string& option : WordsOfHelp(RunTool({command, "--help"}).output, true)) {
            EXPECT_THAT(words, HasSubstr("'" + option + "' = "));
        }
        EXPECT_THAT(words, HasSubstr("'--json' = "));
    }
    EXPECT_THAT(run.output, HasSubstr("'depots add' = [ordered]@{"));
    EXPECT_EQ(ExitCode::kUsage, RunTool({"completion", "other"}).exitCode);
}

class ToolTraceTest : public ToolTest {
protected:
    ToolTraceTest() = default;
    ~ToolTraceTest() override { SetEnvironmentVariableA(kTraceVariable, nullptr); }

    static ToolRun RunTraced(const std::string& file, const std::vector<std::string>& arguments) {
        SetEnvironmentVariableA(kTraceVariable, file.c_str());
        return RunTool(arguments);
    }

    DirectoryDepot dir_{key_};
};

TEST_F(ToolTraceTest, CommandsAndTheirRequestsAreTraced) {
    const std::string file = folder_.At("trace.txt");
    const ToolRun run = RunTraced(file, {"get", "<Dir>\\Sessions\\office.kre", "Host", "Name"});
    EXPECT_EQ("mail\n", run.output) << run.errors;
    EXPECT_EQ("", run.errors);
    const std::string trace = FileBytes(file);
    EXPECT_THAT(trace, HasSubstr(" ldap_"));
    EXPECT_THAT(trace, HasSubstr("CN=office.kre,CN=Sessions,"));
    EXPECT_THAT(trace, ContainsRegex(" depotctl \"get\" .* ms done"));
    EXPECT_THAT(trace, Not(HasSubstr("mail")));
    EXPECT_THAT(trace, Not(HasSubstr(kEditorPassword)));
}

TEST_F(ToolTraceTest, CommandThatFailsIsTracedSo) {
    const std::string file = folder_.At("trace.txt");
    EXPECT_EQ(ExitCode::kRefused, RunTraced(file, {"cat", "<Work>\\none.kre"}).exitCode);
    EXPECT_THAT(FileBytes(file), ContainsRegex(" depotctl \"cat\" .* ms failed"));
}

TEST_F(ToolTraceTest, TraceThatCannotBeWrittenIsReportedInOneLine) {
    const ToolRun run = RunTraced(folder_.At("none\\trace.txt"), {"ls", "<Work>\\"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("the trace cannot be written"));
    EXPECT_EQ(run.errors.size() - 1, run.errors.find('\n'));
    EXPECT_EQ("{\"trace\":\"unwritable\"}\n",
              RunTraced(folder_.At("none\\trace.txt"), {"ls", "--json", "<Work>\\"}).errors);
}

}  // namespace
}  // namespace depot::test
