#include "depotctl/tool.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

class FilesTest : public ToolTest {
protected:
    FilesTest() {
        folder_.MakeFile("work\\a.kre", "alpha");
        folder_.MakeFolder("work\\tree\\inner");
        folder_.MakeFile("work\\tree\\one.kre", "1");
        folder_.MakeFile("work\\tree\\inner\\two.kre", "2");
        folder_.MakeFile("team\\taken.kre", "old");
    }

    bool Holds(const std::string& name) const { return Exists(folder_.At(name)); }
    std::string Bytes(const std::string& name) const { return FileBytes(folder_.At(name)); }
};

TEST_F(FilesTest, CpCopiesToANewNameOrIntoAFolder) {
    EXPECT_EQ(0, RunTool({"cp", "<Work>\\a.kre", "<Team>\\b.kre"}).exitCode);
    EXPECT_EQ("alpha", Bytes("team\\b.kre"));
    const ToolRun run = RunTool({"cp", "--json", "<Work>\\a.kre", "<Team>\\"});
    EXPECT_EQ("<Team>\\a.kre", run.Json()["copied"]);
    EXPECT_EQ("alpha", Bytes("team\\a.kre"));
    EXPECT_TRUE(Holds("work\\a.kre"));
}

TEST_F(FilesTest, CpOntoAFileIsRefusedUnlessForced) {
    const ToolRun run = RunTool({"cp", "<Work>\\a.kre", "<Team>\\taken.kre"});
    EXPECT_EQ(1, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("is there already; --force replaces it"));
    EXPECT_EQ("old", Bytes("team\\taken.kre"));
    EXPECT_EQ(0, RunTool({"cp", "-f", "<Work>\\a.kre", "<Team>\\taken.kre"}).exitCode);
    EXPECT_EQ("alpha", Bytes("team\\taken.kre"));
}

TEST_F(FilesTest, CpOfAFolderNeedsRecursiveAndCopiesTheWholeTree) {
    EXPECT_EQ(1, RunTool({"cp", "<Work>\\tree", "<Team>\\"}).exitCode);
    EXPECT_FALSE(Holds("team\\tree"));
    const ToolRun run = RunTool({"cp", "-r", "<Work>\\tree", "<Team>\\"});
    EXPECT_EQ("copied 2 files to <Team>\\tree\n", run.output) << run.errors;
    EXPECT_EQ("1", Bytes("team\\tree\\one.kre"));
    EXPECT_EQ("2", Bytes("team\\tree\\inner\\two.kre"));
    EXPECT_EQ("", run.errors);
}

TEST_F(FilesTest, CpOfATreeOntoExistingFilesCopiesNothingUnlessForced) {
    folder_.MakeFolder("team\\tree\\inner");
    folder_.MakeFile("team\\tree\\inner\\two.kre", "old");
    EXPECT_EQ(1, RunTool({"cp", "-r", "<Work>\\tree", "<Team>\\"}).exitCode);
    EXPECT_FALSE(Holds("team\\tree\\one.kre"));
    EXPECT_EQ(0, RunTool({"cp", "-rf", "<Work>\\tree", "<Team>\\"}).exitCode);
    EXPECT_EQ("2", Bytes("team\\tree\\inner\\two.kre"));
}

TEST_F(FilesTest, CpIntoItselfOrIntoAMissingFolderIsRefused) {
    EXPECT_EQ(1, RunTool({"cp", "-r", "<Work>\\tree", "<Work>\\tree\\inner"}).exitCode);
    EXPECT_EQ(1, RunTool({"cp", "<Work>\\a.kre", "<Team>\\nowhere\\a.kre"}).exitCode);
    EXPECT_EQ(1, RunTool({"cp", "<Work>\\a.kre", "<Team>\\nowhere\\"}).exitCode);
    EXPECT_EQ(1, RunTool({"cp", "<Work>\\none.kre", "<Team>\\"}).exitCode);
}

TEST_F(FilesTest, MvMovesWithinAndBetweenDepots) {
    EXPECT_EQ(0, RunTool({"mv", "<Work>\\a.kre", "<Work>\\b.kre"}).exitCode);
    EXPECT_EQ(0, RunTool({"mv", "<Work>\\b.kre", "<Team>\\"}).exitCode);
    EXPECT_EQ("alpha", Bytes("team\\b.kre"));
    EXPECT_FALSE(Holds("work\\a.kre"));
    EXPECT_FALSE(Holds("work\\b.kre"));
    EXPECT_EQ(0, RunTool({"mv", "<Work>\\tree", folder_.Path()}).exitCode);
    EXPECT_EQ("2", Bytes("tree\\inner\\two.kre"));
    EXPECT_FALSE(Holds("work\\tree"));
}

TEST_F(FilesTest, MvOntoAFileIsRefusedUnlessForced) {
    EXPECT_EQ(1, RunTool({"mv", "<Work>\\a.kre", "<Team>\\taken.kre"}).exitCode);
    EXPECT_EQ("alpha", Bytes("work\\a.kre"));
    EXPECT_EQ("old", Bytes("team\\taken.kre"));
    EXPECT_EQ(0, RunTool({"mv", "-f", "<Work>\\a.kre", "<Team>\\taken.kre"}).exitCode);
    EXPECT_EQ("alpha", Bytes("team\\taken.kre"));
    EXPECT_FALSE(Holds("work\\a.kre"));
}

TEST_F(FilesTest, RmDeletesFilesAndWithRecursiveFolders) {
    EXPECT_EQ(1, RunTool({"rm", "<Work>\\a.kre", "<Work>\\tree"}).exitCode);
    EXPECT_TRUE(Holds("work\\a.kre")) << "nothing is removed before all can be";
    EXPECT_EQ(0, RunTool({"rm", "-r", "<Work>\\a.kre", "<Work>\\tree"}).exitCode);
    EXPECT_FALSE(Holds("work\\a.kre"));
    EXPECT_FALSE(Holds("work\\tree"));
    EXPECT_EQ(1, RunTool({"rm", "<Work>\\a.kre"}).exitCode);
    EXPECT_EQ(1, RunTool({"rm", "-r", "<Work>\\"}).exitCode);
    EXPECT_TRUE(Holds("work"));
}

TEST_F(FilesTest, MkdirMakesAFolderAndWithParentsThoseAboveIt) {
    EXPECT_EQ(0, RunTool({"mkdir", "<Team>\\new"}).exitCode);
    EXPECT_TRUE(Holds("team\\new"));
    EXPECT_EQ(1, RunTool({"mkdir", "<Team>\\new"}).exitCode);
    EXPECT_EQ(1, RunTool({"mkdir", "<Team>\\x\\y"}).exitCode);
    EXPECT_FALSE(Holds("team\\x"));
    EXPECT_EQ(0, RunTool({"mkdir", "-p", "<Team>\\x\\y"}).exitCode);
    EXPECT_TRUE(Holds("team\\x\\y"));
    EXPECT_EQ(0, RunTool({"mkdir", "-p", "<Team>\\x\\y"}).exitCode);
}

TEST_F(FilesTest, CopyNameMakesNumberedCopies) {
    EXPECT_EQ("<Work>\\a - copy.kre\n", RunTool({"copy-name", "<Work>\\a.kre"}).output);
    EXPECT_EQ("alpha", Bytes("work\\a - copy.kre"));
    const auto second = RunTool({"copy-name", "--json", folder_.At("work\\a.kre")}).Json();
    EXPECT_EQ("<Work>\\a - copy (2).kre", second["copy"]);
    EXPECT_EQ(1, RunTool({"copy-name", "<Work>\\tree"}).exitCode);
}

TEST_F(FilesTest, UploadAndDownloadTakeTreesIntoAndOutOfADepot) {
    folder_.MakeFolder("local\\deep");
    folder_.MakeFile("local\\deep\\x.kre", "x");
    EXPECT_EQ(0, RunTool({"upload", folder_.At("local"), "<Team>\\"}).exitCode);
    EXPECT_EQ("x", Bytes("team\\local\\deep\\x.kre"));
    EXPECT_EQ(0, RunTool({"download", "<Team>\\local", folder_.At("back")}).exitCode);
    EXPECT_EQ("x", Bytes("back\\deep\\x.kre"));
    EXPECT_EQ(1, RunTool({"upload", "<Work>\\a.kre", "<Team>\\"}).exitCode);
    EXPECT_EQ(1, RunTool({"download", folder_.At("local"), folder_.At("other")}).exitCode);
}

TEST_F(FilesTest, PublishCopiesClientsBesideTheProfileAndTellsWhatIsMissing) {
    const std::string client = folder_.MakeFile("c1.kre", "client");
    const std::string profile = "[Skein]\r\nCount=2\r\n[Clients]\r\nC1=" + client + "\r\nC2=";
    folder_.MakeFile("team\\p.kra", profile + "u:c2.cfg\r\n[Server]\r\nConfiguration File=x\r\n");
    const ToolRun run = RunTool({"publish", "--json", "<Team>\\p.kra"});
    EXPECT_EQ(0, run.exitCode) << run.errors;
    EXPECT_EQ("<Team>\\c1.kre", run.Json()[0]["entry"]);
    EXPECT_EQ(true, run.Json()[0]["present"]);
    EXPECT_EQ("c2.cfg", run.Json()[1]["entry"]);
    EXPECT_EQ("client", Bytes("team\\c1.kre"));
    EXPECT_EQ(1, RunTool({"get", "<Team>\\p.kra", "Server", "Configuration File"}).exitCode);

    folder_.MakeFile("team\\q.kra", "[Skein]\r\nCount=1\r\n[Clients]\r\nC1=C:\\none\\n.kre\r\n");
    const ToolRun missing = RunTool({"publish", "<Team>\\q.kra"});
    EXPECT_EQ(1, missing.exitCode);
    EXPECT_THAT(missing.errors, HasSubstr("could not be copied: C:\\none\\n.kre"));
}

}  // namespace
}  // namespace depot::test
