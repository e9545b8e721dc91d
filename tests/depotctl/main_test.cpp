// Usage and help of all commands.
#include "depotctl/tool.h"

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

}  // namespace
}  // namespace depot::test
