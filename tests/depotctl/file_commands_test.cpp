#include "depotctl/tool.h"
#include "platform/local_file.h"
#include "support/folder_link.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

// Makes a tree of two files in the depot "Work" and returns its path.
std::string MakeTree(const ScratchFolder& folder) {
    folder.MakeFolder("work\\tree\\inner");
    folder.MakeFile("work\\tree\\one.kre", "1");
    folder.MakeFile("work\\tree\\inner\\two.kre", "2");
    return folder.At("work\\tree");
}

class FilesTest : public ToolTest {
protected:
    FilesTest() {
        folder_.MakeFile("work\\a.kre", "alpha");
        MakeTree(folder_);
        folder_.MakeFile("team\\taken.kre", "old");
    }
};

TEST_F(FilesTest, CpCopiesToANewNameOrIntoAFolder) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"cp", "<Work>\\a.kre", "<Team>\\b.kre"}).exitCode);
    EXPECT_EQ("alpha", Bytes("team\\b.kre"));
    const ToolRun run = RunTool({"cp", "--json", "<Work>\\a.kre", "<Team>\\"});
    EXPECT_EQ("<Team>\\a.kre", run.Json()["copied"]);
    EXPECT_EQ("alpha", Bytes("team\\a.kre"));
    EXPECT_TRUE(Holds("work\\a.kre"));
}

TEST_F(FilesTest, CpOntoAFileIsRefusedUnlessForced) {
    const ToolRun run = RunTool({"cp", "<Work>\\a.kre", "<Team>\\taken.kre"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("is there already; --force replaces it"));
    EXPECT_EQ("old", Bytes("team\\taken.kre"));
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"cp", "-f", "<Work>\\a.kre", "<Team>\\taken.kre"}).exitCode);
    EXPECT_EQ("alpha", Bytes("team\\taken.kre"));
}

TEST_F(FilesTest, CpOfAFolderNeedsRecursiveAndCopiesTheWholeTree) {
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cp", "<Work>\\tree", "<Team>\\"}).exitCode);
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
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cp", "-r", "<Work>\\tree", "<Team>\\"}).exitCode);
    EXPECT_FALSE(Holds("team\\tree\\one.kre"));
    EXPECT_EQ(ExitCode::kDone, RunTool({"cp", "-rf", "<Work>\\tree", "<Team>\\"}).exitCode);
    EXPECT_EQ("2", Bytes("team\\tree\\inner\\two.kre"));
}

TEST_F(FilesTest, CpIntoItselfOrIntoAMissingFolderIsRefused) {
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"cp", "-r", "<Work>\\tree", "<Work>\\tree\\inner"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"cp", "<Work>\\a.kre", "<Team>\\nowhere\\a.kre"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cp", "<Work>\\a.kre", "<Team>\\nowhere\\"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cp", "<Work>\\none.kre", "<Team>\\"}).exitCode);
}

TEST_F(FilesTest, MvMovesWithinAndBetweenDepots) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"mv", "<Work>\\a.kre", "<Work>\\b.kre"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"mv", "<Work>\\b.kre", "<Team>\\"}).exitCode);
    EXPECT_EQ("alpha", Bytes("team\\b.kre"));
    EXPECT_FALSE(Holds("work\\a.kre"));
    EXPECT_FALSE(Holds("work\\b.kre"));
    EXPECT_EQ(ExitCode::kDone, RunTool({"mv", "<Work>\\tree", folder_.Path()}).exitCode);
    EXPECT_EQ("2", Bytes("tree\\inner\\two.kre"));
    EXPECT_FALSE(Holds("work\\tree"));
}

TEST_F(FilesTest, MvOntoAFileIsRefusedUnlessForced) {
    EXPECT_EQ(ExitCode::kRefused, RunTool({"mv", "<Work>\\a.kre", "<Team>\\taken.kre"}).exitCode);
    EXPECT_EQ("alpha", Bytes("work\\a.kre"));
    EXPECT_EQ("old", Bytes("team\\taken.kre"));
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"mv", "-f", "<Work>\\a.kre", "<Team>\\taken.kre"}).exitCode);
    EXPECT_EQ("alpha", Bytes("team\\taken.kre"));
    EXPECT_FALSE(Holds("work\\a.kre"));
}

// A folder on another volume than the temporary files, removed at the end.
class OtherVolume {
public:
    OtherVolume() : path_("Z:\\dev\\shm\\tst" + std::to_string(GetCurrentProcessId())) {
        EXPECT_TRUE(CreateDirectoryA(path_.c_str(), nullptr)) << path_;
    }
    ~OtherVolume() { EXPECT_EQ(ExitCode::kDone, RunTool({"rm", "-r", path_}).exitCode); }
    OtherVolume(const OtherVolume&) = delete;
    OtherVolume& operator=(const OtherVolume&) = delete;

    std::string At(const std::string& name) const { return path_ + "\\" + name; }

private:
    std::string path_;
};

TEST_F(FilesTest, MvToAnotherVolumeTakesTheWholeTree) {
    const OtherVolume other;
    SetFileAttributesA(folder_.At("work\\tree\\one.kre").c_str(), FILE_ATTRIBUTE_READONLY);
    const ToolRun run = RunTool({"mv", "<Work>\\tree", other.At("tree")});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("1", FileBytes(other.At("tree\\one.kre")));
    EXPECT_EQ("2", FileBytes(other.At("tree\\inner\\two.kre")));
    EXPECT_FALSE(Holds("work\\tree"));
}

// A tree that holds a link to a folder elsewhere.
class LinkedFilesTest : public ToolTest {
protected:
    LinkedFilesTest() { folder_.MakeFile("elsewhere\\three.kre", "3"); }
    void ExpectSource() const {
        EXPECT_EQ("1", Bytes("work\\tree\\one.kre"));
        EXPECT_EQ("2", Bytes("work\\tree\\inner\\two.kre"));
        EXPECT_EQ("3", Bytes("work\\tree\\inner\\link\\three.kre"));
    }

    const FolderLink link_{MakeTree(folder_) + "\\inner\\link", folder_.MakeFolder("elsewhere")};
    const OtherVolume other_;
};

TEST_F(LinkedFilesTest, MvToAnotherVolumeLeavesATreeWithALinkWhereItIsAndReportsIt) {
    const ToolRun run = RunTool({"mv", "<Work>\\tree", other_.At("tree")});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("1 link to a folder was left out"));
    ExpectSource();
    EXPECT_FALSE(Exists(other_.At("tree")));
}

TEST_F(LinkedFilesTest, MvToAnotherVolumeLeavesALinkWhereItIsAndReportsIt) {
    const ToolRun run = RunTool({"mv", "<Work>\\tree\\inner\\link", other_.At("moved")});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("1 link to a folder was left out"));
    ExpectSource();
    EXPECT_FALSE(Exists(other_.At("moved")));
}

TEST_F(LinkedFilesTest, CpCopiesAllButALinkAndReportsIt) {
    const ToolRun run = RunTool({"cp", "-r", "<Work>\\tree", "<Team>\\"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("1 link to a folder was left out"));
    EXPECT_EQ("1", Bytes("team\\tree\\one.kre"));
    EXPECT_EQ("2", Bytes("team\\tree\\inner\\two.kre"));
    EXPECT_FALSE(Holds("team\\tree\\inner\\link"));
    ExpectSource();
}

TEST_F(LinkedFilesTest, RmDeletesAllButALinkAndReportsIt) {
    const ToolRun run = RunTool({"rm", "-r", "<Work>\\tree"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("1 link to a folder was left out"));
    EXPECT_FALSE(Holds("work\\tree\\one.kre"));
    EXPECT_FALSE(Holds("work\\tree\\inner\\two.kre"));
    EXPECT_EQ("3", Bytes("work\\tree\\inner\\link\\three.kre"));
    EXPECT_EQ("3", Bytes("elsewhere\\three.kre"));
}

TEST_F(LinkedFilesTest, RmOfALinkDeletesNothing) {
    const ToolRun run = RunTool({"rm", "-r", "<Work>\\tree\\inner\\link"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("is a link to a folder"));
    ExpectSource();
}

TEST_F(FilesTest, RmDeletesFilesAndWithRecursiveFolders) {
    EXPECT_EQ(ExitCode::kRefused, RunTool({"rm", "<Work>\\a.kre", "<Work>\\tree"}).exitCode);
    EXPECT_TRUE(Holds("work\\a.kre")) << "nothing is removed before all can be";
    EXPECT_EQ(ExitCode::kDone, RunTool({"rm", "-r", "<Work>\\a.kre", "<Work>\\tree"}).exitCode);
    EXPECT_FALSE(Holds("work\\a.kre"));
    EXPECT_FALSE(Holds("work\\tree"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"rm", "<Work>\\a.kre"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"rm", "-r", "<Work>\\"}).exitCode);
    EXPECT_TRUE(Holds("work"));
}

TEST_F(FilesTest, MkdirMakesAFolderAndWithParentsThoseAboveIt) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", "<Team>\\new"}).exitCode);
    EXPECT_TRUE(Holds("team\\new"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"mkdir", "<Team>\\new"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"mkdir", "<Team>\\x\\y"}).exitCode);
    EXPECT_FALSE(Holds("team\\x"));
    EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", "-p", "<Team>\\x\\y"}).exitCode);
    EXPECT_TRUE(Holds("team\\x\\y"));
    EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", "-p", "<Team>\\x\\y"}).exitCode);
}

TEST_F(FilesTest, CopyNameMakesNumberedCopies) {
    EXPECT_EQ("<Work>\\a - copy.kre\n", RunTool({"copy-name", "<Work>\\a.kre"}).output);
    EXPECT_EQ("alpha", Bytes("work\\a - copy.kre"));
    const auto second = RunTool({"copy-name", "--json", folder_.At("work\\a.kre")}).Json();
    EXPECT_EQ("<Work>\\a - copy (2).kre", second["copy"]);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"copy-name", "<Work>\\tree"}).exitCode);
}

TEST_F(FilesTest, UploadAndDownloadTakeTreesIntoAndOutOfADepot) {
    folder_.MakeFolder("local\\deep");
    folder_.MakeFile("local\\deep\\x.kre", "x");
    EXPECT_EQ(ExitCode::kDone, RunTool({"upload", folder_.At("local"), "<Team>\\"}).exitCode);
    EXPECT_EQ("x", Bytes("team\\local\\deep\\x.kre"));
    EXPECT_EQ(ExitCode::kDone, RunTool({"download", "<Team>\\local", folder_.At("back")}).exitCode);
    EXPECT_EQ("x", Bytes("back\\deep\\x.kre"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"upload", "<Work>\\a.kre", "<Team>\\"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"download", folder_.At("local"), folder_.At("other")}).exitCode);
}

TEST_F(FilesTest, PublishCopiesClientsBesideTheProfileAndReportsWhatIsMissing) {
    const std::string client = folder_.MakeFile("c1.kre", "client");
    const std::string profile = "[Skein]\r\nCount=2\r\n[Clients]\r\nC1=" + client + "\r\nC2=";
    folder_.MakeFile("team\\p.kra", profile + "u:c2.cfg\r\n[Server]\r\nConfiguration File=x\r\n");
    const ToolRun run = RunTool({"publish", "--json", "<Team>\\p.kra"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("<Team>\\c1.kre", run.Json()[0]["entry"]);
    EXPECT_EQ(true, run.Json()[0]["present"]);
    EXPECT_EQ("c2.cfg", run.Json()[1]["entry"]);
    EXPECT_EQ("client", Bytes("team\\c1.kre"));
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"get", "<Team>\\p.kra", "Server", "Configuration File"}).exitCode);

    folder_.MakeFile("team\\q.kra", "[Skein]\r\nCount=1\r\n[Clients]\r\nC1=C:\\none\\n.kre\r\n");
    const ToolRun missing = RunTool({"publish", "<Team>\\q.kra"});
    EXPECT_EQ(ExitCode::kRefused, missing.exitCode);
    EXPECT_THAT(missing.errors, HasSubstr("could not be copied: C:\\none\\n.kre"));
}

TEST_F(FilesTest, PublishShowsBeforehandWhatItWouldCopyAndChangesNothing) {
    folder_.MakeFolder("private");
    const std::string secret = folder_.MakeFile("private\\key.pem", "k");
    const std::string profile =
        "[Skein]\r\nCount=6\r\n[Clients]\r\nC1=<Work>\\a.kre\r\nC2=" + secret +
        "\r\nC3=" + folder_.At("private") +
        "\r\nC4=<Work>\\..\\private\\key.pem\r\nC5=u:c2.cfg\r\n"
        "C6=<Work>\\none.kre\r\n";
    folder_.MakeFile("team\\p.kra", profile);
    const ToolRun run = RunTool({"publish", "--dry-run", "--json", "<Team>\\p.kra"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    struct Row {
        std::string from;
        std::string to;
        std::string kind;
        bool isOutside;
    };
    const Row rows[] = {
        {"<Work>\\a.kre", "<Team>\\a.kre", "file", false},
        {secret, "<Team>\\key.pem", "file", true},
        {folder_.At("private"), "<Team>\\private", "folder, not copied", true},
        {"<Work>\\..\\private\\key.pem", "<Team>\\key.pem", "file", true},
    };
    const nlohmann::json shownRows = run.Json();
    ASSERT_EQ(6u, shownRows.size());
    for (std::size_t at = 0; at < std::size(rows); ++at) {
        const nlohmann::json& shown = shownRows[at];
        EXPECT_EQ(rows[at].from, shown["from"].get<std::string>());
        EXPECT_EQ(rows[at].to, shown["to"].get<std::string>());
        EXPECT_EQ(rows[at].kind, shown["kind"].get<std::string>());
        EXPECT_EQ(rows[at].isOutside, shown["outside"]) << at;
    }
    EXPECT_TRUE(shownRows[4]["to"].is_null());
    EXPECT_EQ("missing", shownRows[5]["kind"]);
    EXPECT_EQ(profile, Bytes("team\\p.kra"));
    EXPECT_FALSE(PathExists(folder_.At("team\\a.kre")));

    const ToolRun table = RunTool({"publish", "--dry-run", "<Team>\\p.kra"});
    EXPECT_THAT(table.output, HasSubstr("OUTSIDE DEPOTS"));
    EXPECT_THAT(table.output, HasSubstr("folder, not copied"));
}

}  // namespace
}  // namespace depot::test
