// The commands on a depot that is kept in a real directory.
#include "depotctl/directory_tool.h"
#include "support/folder_link.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

TEST_F(DirectoryToolTest, EntriesAreListedReadAndWritten) {
    EXPECT_THAT(RunTool({"ls", "-r", "<Dir>\\"}).output, HasSubstr("Sessions\\office.kre"));
    EXPECT_EQ("[Host]\r\nName=mail\r\n", RunTool({"cat", "<Dir>\\Sessions\\office.kre"}).output);
    EXPECT_EQ("mail\n", RunTool({"get", "<Dir>\\Sessions\\office.kre", "Host", "Name"}).output);
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"set", "<Dir>\\Sessions\\office.kre", "Host", "Name", "x"}).exitCode);
    EXPECT_EQ("x\n", RunTool({"get", "<Dir>\\Sessions\\office.kre", "Host", "Name"}).output);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"ls", "<Dir>\\Nowhere"}).exitCode);
}

TEST_F(DirectoryToolTest, ListingOfEntriesWhoseClassesAreHiddenSaysSo) {
    EXPECT_EQ("", RunTool({"ls", "<Dir>\\"}).errors);
    DirectoryServer hiding(
        "database access to attrs=userPassword by anonymous auth by * none\n"
        "database access to attrs=objectClass by * search\n"
        "database access to * by * read");
    hiding.AddFolder("Sessions", kSuffix);
    key_.Text("Dir", "Path1", kSuffix);
    key_.Dword("Dir", "Port1", hiding.Port());
    ToolRun run = RunTool({"ls", "<Dir>\\"});
    EXPECT_EQ("", run.output);
    EXPECT_THAT(run.errors, HasSubstr("entries are there but their class may not be read"));
    EXPECT_EQ(ExitCode::kDone, run.exitCode);
    run = RunTool({"ls", "--json", "<Dir>\\"});
    EXPECT_EQ("[]\n", run.output);
    EXPECT_EQ("{\"hiddenClasses\":true}\n", run.errors);
    // Nothing is nothing.
    dir_.server.AddFolder("Empty", dir_.base);
    key_.Text("Dir", "Path1", "cn=Empty," + dir_.base);
    key_.Dword("Dir", "Port1", dir_.server.Port());
    EXPECT_EQ("", RunTool({"ls", "<Dir>\\"}).errors);
}

TEST_F(DirectoryToolTest, EntriesAreCopiedMovedAndRemoved) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", "<Dir>\\New"}).exitCode);
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"cp", "<Dir>\\Sessions\\office.kre", "<Dir>\\New"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"mv", "<Dir>\\New\\office.kre", "<Work>\\"}).exitCode);
    EXPECT_THAT(FileBytes(folder_.At("work\\office.kre")), HasSubstr("Name=mail"));
    EXPECT_EQ("", RunTool({"ls", "<Dir>\\New"}).output);
    EXPECT_EQ(ExitCode::kDone, RunTool({"mv", "<Dir>\\Sessions", "<Dir>\\Moved"}).exitCode);
    EXPECT_TRUE(dir_.server.Holds("cn=office.kre,cn=Moved," + dir_.base));
    EXPECT_EQ("<Dir>\\Moved\\office - copy.kre\n",
              RunTool({"copy-name", "<Dir>\\Moved\\office.kre"}).output);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"rm", "<Dir>\\Moved"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"rm", "-r", "<Dir>\\Moved"}).exitCode);
    EXPECT_FALSE(dir_.server.Holds("cn=Moved," + dir_.base));
}

TEST_F(DirectoryToolTest, EntryThatIsMovedToItsOtherNameIsRenamed) {
    dir_.server.AddFile("x\xC2\xB2.kre", "cn=Sessions," + dir_.base, "1");
    // The server takes both for one name.
    const std::string folder = "<Dir>\\Sessions\\";
    const ToolRun run = RunTool({"mv", "-f", folder + "x\xC2\xB2.kre", folder + "x2.kre"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("1", RunTool({"cat", folder + "x2.kre"}).output);
    EXPECT_THAT(RunTool({"ls", "<Dir>\\Sessions"}).output, HasSubstr("x2.kre"));
}

TEST_F(DirectoryToolTest, TreesAreUploadedAndDownloaded) {
    folder_.MakeFolder("tree\\inner");
    for (int number = 0; number < 20; ++number) {
        folder_.MakeFile("tree\\inner\\f" + std::to_string(number) + ".kre", "x");
    }
    const ToolRun up = RunTool({"upload", folder_.At("tree"), "<Dir>\\"});
    EXPECT_EQ("uploaded 20 files to <Dir>\\tree\n", up.output);
    EXPECT_EQ("", up.errors) << "no bar without a terminal";
    EXPECT_EQ(ExitCode::kRefused, RunTool({"upload", folder_.At("tree"), "<Dir>\\"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"upload", "-f", folder_.At("tree"), "<Dir>\\"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"download", "<Dir>\\tree", folder_.At("back")}).exitCode);
    EXPECT_EQ("x", FileBytes(folder_.At("back\\inner\\f19.kre")));
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"download", "<Dir>\\tree\\inner", folder_.At("back")}).exitCode);
}

TEST_F(DirectoryToolTest, TreeWithNamesThatNoFileCanHaveIsNotMoved) {
    dir_.server.AddFile("CON", "cn=Sessions," + dir_.base, "x");
    const ToolRun run = RunTool({"mv", "<Dir>\\Sessions", "<Work>\\Sessions"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("1 entry was left out"));
    EXPECT_TRUE(dir_.server.Holds("cn=office.kre,cn=Sessions," + dir_.base));
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"cp", "-r", "<Dir>\\Sessions", "<Work>\\Copy"}).exitCode);
    EXPECT_THAT(FileBytes(folder_.At("work\\Copy\\office.kre")), HasSubstr("Name=mail"));
}

TEST_F(DirectoryToolTest, TreeWithALinkIsUploadedWithoutItAndNotMoved) {
    folder_.MakeFolder("elsewhere");
    folder_.MakeFile("elsewhere\\x.kre", "x");
    folder_.MakeFolder("work\\tree");
    folder_.MakeFile("work\\tree\\a.kre", "a");
    const FolderLink link(folder_.At("work\\tree\\link"), folder_.At("elsewhere"));
    const ToolRun moved = RunTool({"mv", "<Work>\\tree", "<Dir>\\moved"});
    EXPECT_EQ(ExitCode::kRefused, moved.exitCode);
    EXPECT_THAT(moved.errors, HasSubstr("1 link to a folder was left out"));
    EXPECT_FALSE(dir_.server.Holds("cn=moved," + dir_.base));
    const ToolRun copied = RunTool({"cp", "-r", "<Work>\\tree", "<Dir>\\copied"});
    EXPECT_EQ(ExitCode::kRefused, copied.exitCode);
    EXPECT_THAT(copied.errors, HasSubstr("1 link to a folder was left out"));
    EXPECT_TRUE(dir_.server.Holds("cn=a.kre,cn=copied," + dir_.base));
    EXPECT_FALSE(dir_.server.Holds("cn=link,cn=copied," + dir_.base));
    EXPECT_EQ("x", FileBytes(folder_.At("work\\tree\\link\\x.kre")));
    EXPECT_EQ("a", FileBytes(folder_.At("work\\tree\\a.kre")));
}

TEST_F(DirectoryToolTest, TreeMovesIntoItselfThroughNoSecondDepot) {
    dir_.Define("Same");
    for (const char* target : {"<Same>\\Sessions\\x", "<Same>\\SESSIONS\\x"}) {
        const ToolRun run = RunTool({"mv", "<Dir>\\Sessions", target});
        EXPECT_EQ(ExitCode::kRefused, run.exitCode);
        EXPECT_THAT(run.errors, HasSubstr("cannot go into itself"));
    }
    EXPECT_TRUE(dir_.server.Holds("cn=office.kre,cn=Sessions," + dir_.base));
}

TEST_F(DirectoryToolTest, NamesThatWouldChangeTheirKindAreRefused) {
    EXPECT_EQ(ExitCode::kRefused, RunTool({"mkdir", "<Dir>\\a.b"}).exitCode);
    folder_.MakeFile("README", "x");
    const ToolRun run = RunTool({"upload", folder_.At("README"), "<Dir>\\"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("a name without a dot is a folder's"));
}

TEST_F(DirectoryToolTest, ServerThatDoesNotAnswerGivesExitCodeThree) {
    dir_.Define("Dead");
    key_.Dword("Dead", "Port1", ClosedPort());
    const std::vector<std::vector<std::string>> commands = {
        {"ls", "<Dead>\\"}, {"cat", "<Dead>\\a.kre"}, {"cp", "<Dead>\\a.kre", "<Work>\\"}};
    for (const auto& arguments : commands) {
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(ExitCode::kUnreachable, run.exitCode);
        EXPECT_THAT(run.errors, HasSubstr("depot Dead: nobody answers at 127.0.0.1"));
        EXPECT_EQ(run.errors.size() - 1, run.errors.find('\n'));
    }
    const auto depots = RunTool({"depots", "--json"}).Json();
    for (const auto& depot : depots) {
        EXPECT_EQ(depot["key"] != "Dead", depot["locations"][0]["reachable"].get<bool>());
    }
}

TEST_F(DirectoryToolTest, SecondLocationIsUsedWhenTheFirstDoesNotAnswer) {
    dir_.Define("Dir");
    key_.Dword("Dir", "Port1", ClosedPort());
    key_.Text("Dir", "Path2", folder_.MakeFolder("second"));
    folder_.MakeFile("second\\s.kre", "second");
    EXPECT_EQ("second", RunTool({"cat", "<Dir>\\s.kre"}).output);
}

TEST_F(DirectoryToolTest, WrongPasswordIsRefusedAndNoPromptAppearsWithoutATerminal) {
    key_.Text("Dir", "Password1", "wrong");
    const ToolRun run = RunTool({"ls", "<Dir>\\"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("the user name or the password is wrong"));
    key_.Text("Dir", "Username1", "");
    EXPECT_THAT(RunTool({"ls", "<Dir>\\"}).errors, HasSubstr("none are stored"));
    // Other programs may still ask.
    key_.Text("Dir", "Username1", kEditor);
    key_.Text("Dir", "Password1", kEditorPassword);
    EXPECT_EQ(ExitCode::kDone, RunTool({"ls", "<Dir>\\"}).exitCode);
}

TEST_F(DirectoryToolTest, ReaderMayReadButWritingIsRefused) {
    key_.Text("Dir", "Username1", kReader);
    key_.Text("Dir", "Password1", kReaderPassword);
    EXPECT_EQ(ExitCode::kDone, RunTool({"ls", "<Dir>\\"}).exitCode);
    const ToolRun run = RunTool({"mkdir", "<Dir>\\New"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    const auto depots = RunTool({"depots", "--json"}).Json();
    for (const auto& depot : depots) {
        EXPECT_EQ(depot["key"] != "Dir", depot["locations"][0]["writable"].get<bool>());
    }
}

}  // namespace
}  // namespace depot::test
