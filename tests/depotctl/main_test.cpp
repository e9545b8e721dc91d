// Usage and help of all commands.
#include "depotctl/tool.h"
#include "platform/handles.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

class ProgramTest : public ToolTest {};

TEST_F(ProgramTest, WrongUsageIsReportedInOneLineWithExitCodeTwo) {
    const std::vector<std::vector<std::string>> mistakes = {
        {}, {"nonsense"}, {"ls", "--nonsense"}, {"ls", "a", "b"}, {"get"}, {"ls", ""}};
    for (const auto& arguments : mistakes) {
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(ExitCode::kUsage, run.exitCode) << testing::PrintToString(arguments);
        EXPECT_THAT(run.errors, testing::StartsWith("depotctl: "));
        EXPECT_EQ(run.errors.size() - 1, run.errors.find('\n'));
        EXPECT_EQ("", run.output);
    }
}

TEST_F(ProgramTest, HelpOfEveryCommandHasExamples) {
    const ToolRun help = RunTool({"--help"});
    EXPECT_EQ(ExitCode::kDone, help.exitCode);
    EXPECT_THAT(help.output, HasSubstr("Exit codes: 0 done"));
    for (const char* command : {"ls", "cat", "get", "set", "depots", "check"}) {
        EXPECT_THAT(help.output, HasSubstr(std::string("\n  ") + command + " "));
        const ToolRun run = RunTool({command, "--help"});
        EXPECT_EQ(ExitCode::kDone, run.exitCode);
        EXPECT_THAT(run.output, HasSubstr("Example")) << command;
        EXPECT_THAT(run.output, HasSubstr("  depotctl " + std::string(command))) << command;
    }
}

TEST_F(ProgramTest, HelpOfTheCommandsBelowDepotsHasExamples) {
    for (const char* command : {"add", "set", "remove"}) {
        const ToolRun run = RunTool({"depots", command, "--help"});
        EXPECT_EQ(ExitCode::kDone, run.exitCode);
        EXPECT_THAT(run.output, HasSubstr("  depotctl depots " + std::string(command)));
        EXPECT_THAT(run.output, HasSubstr("--dry-run"));
    }
}

TEST_F(ProgramTest, VersionIsThatOfTheFile) {
    const ToolRun run = RunTool({"--version"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode);
    EXPECT_EQ("depotctl 13.0.0.208\n", run.output);
}

TEST_F(ProgramTest, OutputThatCannotBeWrittenIsAFailure) {
    const UniqueHandle unwritable = OwnFile(
        CreateFileA(folder_.MakeFile("out", "").c_str(), GENERIC_READ,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    for (const auto& arguments : {std::vector<std::string>{"depots"}, {"--help"}, {"ls"}}) {
        folder_.MakeFile("work\\a.kra", "1");
        const ToolRun run = RunToolWithOutput(arguments, unwritable.get());
        EXPECT_EQ(ExitCode::kRefused, run.exitCode);
        EXPECT_THAT(run.errors, testing::StartsWith("depotctl: cannot write the output: "));
    }
}

TEST_F(ProgramTest, WithoutAnOutputTheWorkIsDone) {
    EXPECT_EQ(ExitCode::kDone, RunToolWithOutput({"mkdir", "<Work>\\new"}, nullptr).exitCode);
    EXPECT_TRUE(Holds("work\\new"));
}

// The command lines that the help of the program and of its commands shows.
std::vector<std::string> HelpExamples() {
    const std::string start = "\n  depotctl ";
    std::vector<std::string> examples;
    for (const std::vector<std::string>& command : {std::vector<std::string>{},
                                                    {"ls"},
                                                    {"cat"},
                                                    {"get"},
                                                    {"set"},
                                                    {"cp"},
                                                    {"mv"},
                                                    {"rm"},
                                                    {"mkdir"},
                                                    {"publish"},
                                                    {"depots"},
                                                    {"depots", "add"},
                                                    {"depots", "set"},
                                                    {"depots", "remove"},
                                                    {"check"}}) {
        std::vector<std::string> arguments = command;
        arguments.emplace_back("--help");
        const std::string help = RunTool(arguments).output;
        for (std::size_t at = help.find(start); at != std::string::npos;
             at = help.find(start, at)) {
            at += start.size();
            examples.push_back(help.substr(at, help.find('\n', at) - at));
        }
    }
    return examples;
}

// What Windows PowerShell hands on for a command line that is typed there: texts in quotes stay in
// them where they hold blanks, and lose them elsewhere.
std::string AsPowerShellHandsOn(const std::string& typed) {
    std::string line;
    for (std::size_t at = 0; at < typed.size(); ++at) {
        if (typed[at] != '"') {
            line += typed[at];
            continue;
        }
        const std::size_t end = typed.find('"', at + 1);
        const std::string text = typed.substr(at + 1, end - at - 1);
        line += text.find(' ') == std::string::npos ? text : "\"" + text + "\"";
        at = end;
    }
    return line;
}

bool IsDefinition(const std::string& example) {
    return example.starts_with("depots add") || example.starts_with("depots set") ||
           example.starts_with("depots remove");
}

TEST_F(ProgramTest, ExamplesOfTheHelpAreUnderstoodAtEveryPrompt) {
    const std::vector<std::string> examples = HelpExamples();
    EXPECT_GE(examples.size(), 20u);
    for (std::string example : examples) {
        SCOPED_TRACE(example);
        // Nothing but the test's own depots is to change.
        example.erase(std::min(example.find(" > "), example.size()));
        if (IsDefinition(example) && example.find("--dry-run") == std::string::npos) {
            example += " --dry-run";
        }
        for (const ToolRun& run :
             {RunToolAtPrompt(example), RunToolByLine(AsPowerShellHandsOn(example))}) {
            EXPECT_NE(ExitCode::kUsage, run.exitCode) << run.errors;
            EXPECT_EQ(std::string::npos, run.errors.find("\\\"\"")) << run.errors;
        }
    }
}

TEST_F(ProgramTest, QuotedRootIsListedAtEveryPrompt) {
    folder_.MakeFile("work\\a.kra", "1");
    for (const char* line :
         {"ls \"<Work>\\\"", "ls \"<Work>\\\" --json", "ls -l \"<Travail>\\\""}) {
        SCOPED_TRACE(line);
        for (const ToolRun& run : {RunToolAtPrompt(line), RunToolByLine(line)}) {
            EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
            EXPECT_THAT(run.output, HasSubstr("a.kra"));
        }
    }
}

}  // namespace
}  // namespace depot::test
