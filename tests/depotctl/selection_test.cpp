// Paths with wildcards.
#include "depotctl/directory_tool.h"
#include "platform/wide_text.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> Names(const ToolRun& run, const char* member = "name") {
    std::vector<std::string> names;
    for (const auto& row : run.Json()) names.push_back(row.at(member));
    return names;
}

// The same files in the folder that both kinds of depot are tried with.
class SelectionTest : public ToolTest, public testing::WithParamInterface<const char*> {
protected:
    SelectionTest() {
        RunTool({"mkdir", "<Dir>\\Own"});
        for (const char* name : {"a.kre", "B.KRE", "c.kra"}) {
            Write(name, std::string("[Host]\r\nName=") + name + "\r\n");
        }
        EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", In("sub")}).exitCode);
        Write("sub\\d.kre", "d");
    }

    static std::string In(const std::string& name) { return GetParam() + name; }
    void Write(const std::string& name, const std::string& text) const {
        const std::string file = folder_.MakeFile("source", text);
        ASSERT_EQ(ExitCode::kDone, RunTool({"cp", file, In(name)}).exitCode);
    }
    static std::vector<std::string> Listed(const std::string& place) {
        return Names(RunTool({"ls", "--json", "-r", place}));
    }

    DirectoryDepot dir_{key_};
};

TEST_P(SelectionTest, LsListsWhatMatchesWithoutRegardToLetterCase) {
    EXPECT_THAT(Names(RunTool({"ls", "--json", In("*.kre")})), ElementsAre("a.kre", "B.KRE"));
    EXPECT_THAT(Names(RunTool({"ls", "--json", In("?.kr?")})),
                ElementsAre("a.kre", "B.KRE", "c.kra"));
    EXPECT_THAT(Names(RunTool({"ls", "--json", "-r", In("S*")})), ElementsAre("sub", "sub\\d.kre"));
    EXPECT_THAT(Names(RunTool({"ls", "--json", In("sub\\*")})), ElementsAre("d.kre"));
}

TEST_P(SelectionTest, NoMatchIsRefusedByEveryCommandAndChangesNothing) {
    const std::vector<std::vector<std::string>> commands = {
        {"ls", In("*.x")},
        {"cat", In("*.x")},
        {"get", In("*.x")},
        {"rm", In("a.kre"), In("*.x")},
        {"cp", In("*.x"), "<Team>\\"},
        {"mv", In("*.x"), "<Team>\\"},
        {"copy-name", In("*.x")},
        {"publish", In("*.x")},
        {"set", In("*.x"), "S", "K", "V"},
        {"download", In("*.x"), folder_.Path()}};
    for (const auto& arguments : commands) {
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(ExitCode::kRefused, run.exitCode) << arguments.front();
        EXPECT_THAT(run.errors, HasSubstr("nothing matches")) << arguments.front();
    }
    EXPECT_THAT(Listed(In("*.*")), ElementsAre("a.kre", "B.KRE", "c.kra"));
}

TEST_P(SelectionTest, CpCopiesAllThatMatchesIntoAFolderOnly) {
    const ToolRun run = RunTool({"cp", "--json", In("*.kre"), "<Team>\\"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(2, run.Json()["files"]);
    EXPECT_THAT(run.Json()["copied"], ElementsAre("<Team>\\a.kre", "<Team>\\B.KRE"));
    EXPECT_THAT(Bytes("team\\a.kre"), HasSubstr("Name=a.kre"));
    EXPECT_EQ("copied 2 files to <Team>\\\n",
              RunTool({"cp", "-f", In("*.kre"), "<Team>\\"}).output);
    const ToolRun onto = RunTool({"cp", In("*.kre"), "<Team>\\new.kre"});
    EXPECT_EQ(ExitCode::kRefused, onto.exitCode);
    EXPECT_THAT(onto.errors, HasSubstr("the folder \"<Team>\\new.kre\" is not there"));
}

TEST_P(SelectionTest, CpCopiesNothingWhenOneMatchCannotBeCopied) {
    folder_.MakeFile("team\\B.KRE", "old");
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cp", In("*.kre"), "<Team>\\"}).exitCode);
    EXPECT_FALSE(Holds("team\\a.kre"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cp", In("*"), "<Team>\\"}).exitCode);
    EXPECT_FALSE(Holds("team\\a.kre"));
    EXPECT_EQ(ExitCode::kDone, RunTool({"cp", "-rf", In("*"), "<Team>\\"}).exitCode);
    EXPECT_EQ("d", Bytes("team\\sub\\d.kre"));
}

TEST_P(SelectionTest, LocalPathsAreExpandedByTheUploadAndDepotsByTheDownload) {
    folder_.MakeFolder("local");
    folder_.MakeFile("local\\x1.kre", "1");
    folder_.MakeFile("local\\x2.kre", "2");
    EXPECT_EQ(ExitCode::kDone, RunTool({"upload", folder_.At("local\\X?.*"), In("sub")}).exitCode);
    EXPECT_THAT(Listed(In("sub")), ElementsAre("d.kre", "x1.kre", "x2.kre"));
    folder_.MakeFolder("back");
    EXPECT_EQ(ExitCode::kDone, RunTool({"download", In("sub\\x*"), folder_.At("back")}).exitCode);
    EXPECT_EQ("2", Bytes("back\\x2.kre"));
    EXPECT_FALSE(Holds("back\\d.kre"));
}

TEST_P(SelectionTest, MvAndRmTakeAllThatMatches) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"mv", In("?.kre"), "<Team>\\"}).exitCode);
    EXPECT_TRUE(Holds("team\\a.kre"));
    EXPECT_TRUE(Holds("team\\B.KRE"));
    EXPECT_THAT(Listed(In("")), ElementsAre("sub", "sub\\d.kre", "c.kra"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"rm", In("*")}).exitCode) << "a folder is among them";
    EXPECT_EQ("removed 2\n", RunTool({"rm", "-r", In("*")}).output);
    EXPECT_THAT(Listed(In("")), ElementsAre());
}

TEST_P(SelectionTest, ValuesOfAllThatMatchesAreReadAndWritten) {
    const ToolRun read = RunTool({"get", "--json", In("*.kr*"), "Host", "Name"});
    EXPECT_THAT(Names(read, "value"), ElementsAre("a.kre", "B.KRE", "c.kra"));
    EXPECT_EQ(In("a.kre"), read.Json()[0]["path"].get<std::string>());
    EXPECT_EQ(ExitCode::kDone, RunTool({"set", In("*.kre"), "Host", "Name", "x"}).exitCode);
    EXPECT_THAT(Names(RunTool({"get", "--json", In("*.kr*"), "Host", "Name"}), "value"),
                ElementsAre("x", "x", "c.kra"));
    EXPECT_EQ("[Host]\r\nName=x\r\n[Host]\r\nName=x\r\n", RunTool({"cat", In("*.kre")}).output);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cat", In("*")}).exitCode);
}

TEST_P(SelectionTest, WildcardsInFoldersAreNotExpanded) {
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cat", In("s*\\d.kre")}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cat", "<*>\\a.kre"}).exitCode);
}

INSTANTIATE_TEST_SUITE_P(Depots, SelectionTest, testing::Values("<Work>\\", "<Dir>\\Own\\"),
                         [](const auto& depot) {
                             return depot.index == 0 ? "Folder" : "Directory";
                         });

TEST_F(DirectoryToolTest, LiteralNameWithWildcardsWins) {
    const std::string sessions = "cn=Sessions," + dir_.base;
    dir_.server.AddFile("o*e.kre", sessions, "literal");
    EXPECT_EQ("literal", RunTool({"cat", "<Dir>\\Sessions\\o*e.kre"}).output);
    EXPECT_THAT(Names(RunTool({"ls", "--json", "<Dir>\\Sessions\\o*e.kre"})),
                ElementsAre("o*e.kre"));
    EXPECT_EQ("removed 1\n", RunTool({"rm", "<Dir>\\Sessions\\o*e.kre"}).output);
    EXPECT_TRUE(dir_.server.Holds("cn=office.kre," + sessions));
}

TEST_F(DirectoryToolTest, NamesThatWouldLeadElsewhereAreNeverSelected) {
    const std::string sessions = "cn=Sessions," + dir_.base;
    dir_.server.AddFile("c:victim.kre", sessions, "x");
    folder_.MakeFile("victim.kre", "mine");
    const ToolRun run = RunTool({"rm", "<Dir>\\Sessions\\*"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_THAT(run.errors, HasSubstr("1 name"));
    EXPECT_EQ("removed 1\n", run.output);
    EXPECT_EQ("mine", Bytes("victim.kre"));
}

// In every code page that the program can run in.
class SelectionNamesTest : public ToolTest {};

TEST_F(SelectionNamesTest, CharactersOfSeveralBytesAreMatchedAsOne) {
    const bool isJapanese = ExactAnsiFromUtf8("\u8868").has_value();
    // The bytes of the first are a backslash and a bar in a Japanese code page.
    const std::vector<std::string> names =
        isJapanese ? std::vector<std::string>{"\u30DD.kra", "\u8868.kra"}
                   : std::vector<std::string>{"\u00D6.kra", "\u00FC.kra"};
    for (const std::string& name : names) {
        ASSERT_EQ(ExitCode::kDone,
                  RunTool({"set", "--create", "<Work>\\" + name, "S", "K", name}).exitCode);
    }
    const ToolRun run = RunTool({"get", "--json", "<Work>\\?.kra", "S", "K"});
    EXPECT_EQ(2u, Names(run, "value").size()) << run.output;
    EXPECT_EQ(ExitCode::kRefused, RunTool({"ls", "<Work>\\??.kra"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"cp", "<Work>\\*.kra", "<Team>\\"}).exitCode);
    for (const std::string& name : names) {
        EXPECT_EQ(name + "\n", RunTool({"get", "<Team>\\" + name, "S", "K"}).output);
    }
}

}  // namespace
}  // namespace depot::test
