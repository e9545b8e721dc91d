// --dry-run, --update and --verbose.
#include "depotctl/directory_tool.h"
#include "platform/handles.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A tree of two files in the one depot of each pair, and an empty place in the other one.
struct Depots {
    const char* from;
    const char* to;
};

class StepsTest : public ToolTest, public testing::WithParamInterface<Depots> {
protected:
    StepsTest() {
        folder_.MakeFolder("local\\tree\\inner");
        folder_.MakeFile("local\\tree\\one.kre", "[S]\r\nK=1\r\n");
        folder_.MakeFile("local\\tree\\inner\\two.kre", "2");
        EXPECT_EQ(ExitCode::kDone,
                  RunTool({"cp", "-r", folder_.At("local\\tree"), From("")}).exitCode);
    }

    static std::string From(const std::string& name) { return GetParam().from + name; }
    static std::string To(const std::string& name) { return GetParam().to + name; }

    // Everything in both depots with its bytes.
    static std::string World() {
        std::string world;
        for (const std::string& top : {From(""), To("")}) {
            for (const auto& row : RunTool({"ls", "-r", "--json", top}).Json()) {
                const std::string path = row.at("path");
                world += path + "\n";
                if (row.at("kind") == "file") world += RunTool({"cat", path}).output + "\n";
            }
        }
        return world;
    }
    static void Write(const std::string& place, const std::string& value) {
        ASSERT_EQ(ExitCode::kDone, RunTool({"set", place, "S", "K", value}).exitCode);
    }
    static std::vector<std::string> StepsOf(std::vector<std::string> arguments) {
        arguments.emplace_back("--json");
        std::vector<std::string> steps;
        const nlohmann::json answer = RunTool(arguments).Json();
        for (const auto& step : answer.at("steps")) {
            steps.push_back(step.at("step").get<std::string>() + " " +
                            step.value(step.contains("to") ? "to" : "from", ""));
        }
        return steps;
    }

    DirectoryDepot dir_{key_};
};

TEST_P(StepsTest, DryRunOfEveryCommandShowsItsStepsAndChangesNothing) {
    const struct {
        std::vector<std::string> arguments;
        std::string step;
    } rows[] = {
        {{"cp", "-r", From("tree"), To("")}, "would copy " + From("tree\\one.kre") + " to "},
        {{"cp", From("tree\\*.kre"), To("")}, "would copy "},
        {{"mv", From("tree"), To("moved")}, "would move " + From("tree") + " to " + To("moved")},
        {{"rm", "-r", From("tree")}, "would remove " + From("tree\\inner\\two.kre") + "\n"},
        {{"mkdir", "-p", To("x\\y")}, "would make " + To("x") + "\nwould make " + To("x\\y")},
        {{"set", From("tree\\one.kre"), "S", "K", "9"},
         "would set " + From("tree\\one.kre") + " [S] K=9\n"},
        {{"set", "--create", To("new.kre"), "S", "K", "9"}, "would make " + To("new.kre")},
        {{"copy-name", From("tree\\one.kre")}, "to " + From("tree\\one - copy.kre")},
        {{"download", From("tree"), folder_.At("back")}, "would make "},
    };
    const std::string before = World();
    for (auto [arguments, step] : rows) {
        SCOPED_TRACE(arguments.front());
        arguments.emplace_back("--dry-run");
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        EXPECT_THAT(run.output, HasSubstr(step));
        EXPECT_THAT(run.output, HasSubstr("nothing was changed\n"));
        EXPECT_EQ(before, World());
    }
    EXPECT_FALSE(Holds("back"));
}

TEST_P(StepsTest, DryRunRefusesWhatTheCommandWouldRefuse) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"cp", "-r", From("tree"), To("")}).exitCode);
    const std::vector<std::vector<std::string>> refused = {{"cp", "-r", From("tree"), To("")},
                                                           {"cp", From("tree"), To("x")},
                                                           {"mv", From("tree"), To("")},
                                                           {"rm", From("tree")},
                                                           {"mkdir", To("x\\y")},
                                                           {"set", To("none.kre"), "S", "K", "1"}};
    for (auto arguments : refused) {
        arguments.emplace_back("--dry-run");
        EXPECT_EQ(ExitCode::kRefused, RunTool(arguments).exitCode)
            << testing::PrintToString(arguments);
    }
}

TEST_P(StepsTest, UpdateCopiesOnlyWhatIsMissingOrDifferent) {
    const std::vector<std::string> update = {"cp", "-ru", From("tree"), To("")};
    EXPECT_THAT(StepsOf({"cp", "-ru", "-v", From("tree"), To("")}),
                ElementsAre("make " + To("tree"), "make " + To("tree\\inner"),
                            "copy " + To("tree\\one.kre"), "copy " + To("tree\\inner\\two.kre")));
    EXPECT_EQ(0, RunTool({"cp", "-ru", "--json", From("tree"), To("")}).Json()["files"]);
    Write(From("tree\\one.kre"), "12345");
    folder_.MakeFile("three.kre", "3");
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"cp", folder_.At("three.kre"), From("tree\\inner")}).exitCode);
    const std::string before = World();
    EXPECT_THAT(
        StepsOf({"cp", "-ru", "--dry-run", From("tree"), To("")}),
        ElementsAre("replace " + To("tree\\one.kre"), "copy " + To("tree\\inner\\three.kre")));
    EXPECT_EQ(before, World());
    EXPECT_EQ(2, RunTool({"cp", "-ru", "--json", From("tree"), To("")}).Json()["files"]);
    EXPECT_EQ("12345\n", RunTool({"get", To("tree\\one.kre"), "S", "K"}).output);
    EXPECT_EQ("3", RunTool({"cat", To("tree\\inner\\three.kre")}).output);
    EXPECT_THAT(StepsOf({"cp", "-ru", "--dry-run", From("tree"), To("")}), IsEmpty());
}

TEST_P(StepsTest, UpdateMovesAFileOnlyWhereItIsDifferent) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"cp", From("tree\\one.kre"), To("")}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"mv", "-u", From("tree\\one.kre"), To("")}).exitCode);
    EXPECT_EQ("1\n", RunTool({"get", From("tree\\one.kre"), "S", "K"}).output) << "it stays";
    Write(From("tree\\one.kre"), "12345");
    EXPECT_EQ(ExitCode::kDone, RunTool({"mv", "-u", From("tree\\one.kre"), To("")}).exitCode);
    EXPECT_EQ("12345\n", RunTool({"get", To("one.kre"), "S", "K"}).output);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cat", From("tree\\one.kre")}).exitCode);
}

TEST_P(StepsTest, UpdateOfAValueThatIsThereWritesNothing) {
    EXPECT_THAT(StepsOf({"set", "-u", "-v", From("tree\\one.kre"), "S", "K", "1"}), IsEmpty());
    EXPECT_THAT(StepsOf({"set", "-u", "-v", From("tree\\one.kre"), "S", "K", "2"}),
                ElementsAre("set " + From("tree\\one.kre") + " [S] K=2"));
    EXPECT_EQ("2\n", RunTool({"get", From("tree\\one.kre"), "S", "K"}).output);
}

TEST_P(StepsTest, VerboseShowsWhatIsDone) {
    const ToolRun copied = RunTool({"cp", "-v", "-r", From("tree"), To("")});
    EXPECT_THAT(copied.output,
                HasSubstr("copy " + From("tree\\one.kre") + " to " + To("tree\\one.kre") + "\n"));
    EXPECT_THAT(copied.output, HasSubstr("copied 2 files to " + To("tree") + "\n"));
    EXPECT_EQ("make " + To("n") + "\nmade " + To("n") + "\n",
              RunTool({"mkdir", "-v", To("n")}).output);
    const ToolRun removed = RunTool({"rm", "-v", "-r", To("tree")});
    EXPECT_THAT(removed.output, HasSubstr("remove " + To("tree\\inner\\two.kre") + "\n"));
    EXPECT_THAT(removed.output, HasSubstr("removed 1\n"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"ls", To("tree")}).exitCode);
}

std::string NameOfPair(const testing::TestParamInfo<Depots>& info) {
    const char* const kinds[] = {"FolderToFolder", "FolderToDirectory", "DirectoryToFolder"};
    return kinds[info.index];
}

INSTANTIATE_TEST_SUITE_P(Pairs, StepsTest,
                         testing::Values(Depots{"<Work>\\", "<Team>\\"},
                                         Depots{"<Work>\\", "<Dir>\\"},
                                         Depots{"<Dir>\\Sessions\\", "<Team>\\"}),
                         NameOfPair);

class NewerTest : public ToolTest {
protected:
    // Makes a file that was changed so many minutes ago.
    void MakeFile(const std::string& name, const std::string& text, int minutes) const {
        const UniqueHandle file =
            OwnFile(CreateFileA(folder_.MakeFile(name, text).c_str(), FILE_WRITE_ATTRIBUTES, 0,
                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        FILETIME now = {};
        GetSystemTimeAsFileTime(&now);
        ULARGE_INTEGER time = {{now.dwLowDateTime, now.dwHighDateTime}};
        time.QuadPart -= 600000000ull * static_cast<unsigned>(minutes);
        const FILETIME changed = {time.LowPart, time.HighPart};
        ASSERT_TRUE(SetFileTime(file.get(), nullptr, nullptr, &changed));
    }
};

TEST_F(NewerTest, UpdateOfFilesOfOneSizeGoesByTheirDates) {
    MakeFile("work\\newer.kre", "1", 1);
    MakeFile("team\\newer.kre", "0", 9);
    MakeFile("work\\older.kre", "1", 9);
    MakeFile("team\\older.kre", "0", 1);
    MakeFile("work\\larger.kre", "11", 9);
    MakeFile("team\\larger.kre", "0", 1);
    EXPECT_EQ(ExitCode::kDone, RunTool({"cp", "-u", "<Work>\\*.kre", "<Team>\\"}).exitCode);
    EXPECT_EQ("1", Bytes("team\\newer.kre"));
    EXPECT_EQ("0", Bytes("team\\older.kre"));
    EXPECT_EQ("11", Bytes("team\\larger.kre"));
}

}  // namespace
}  // namespace depot::test
