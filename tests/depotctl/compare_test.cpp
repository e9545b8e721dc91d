// compare, tree, find, stat and sync.
#include "depotctl/directory_tool.h"
#include "support/folder_link.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// What is compared, and what it is compared with.
struct Sides {
    const char* first;
    const char* second;
};

std::string NameOfSides(const testing::TestParamInfo<Sides>& info) {
    const char* const kinds[] = {"Folders", "FolderAndDirectory", "DirectoryAndFolder"};
    return kinds[info.index];
}

// The same tree on both sides.
class TwoTreesTest : public ToolTest, public testing::WithParamInterface<Sides> {
protected:
    TwoTreesTest() {
        folder_.MakeFolder("local\\inner");
        folder_.MakeFile("local\\one.kre", "[PROFILE]\r\nTitle=\"One\"\r\n[Host]\r\nName=mail\r\n");
        folder_.MakeFile("local\\inner\\two.kre", "2");
        for (const std::string& tree : {First(""), Second("")}) {
            EXPECT_EQ(ExitCode::kDone, RunTool({"cp", "-r", folder_.At("local"), tree}).exitCode);
        }
    }

    static std::string First(const std::string& name) { return GetParam().first + name; }
    static std::string Second(const std::string& name) { return GetParam().second + name; }
    static void Put(const std::string& place, const std::string& text,
                    const ScratchFolder& folder) {
        const std::string file = folder.MakeFile("put", text);
        ASSERT_EQ(ExitCode::kDone, RunTool({"cp", "-f", file, place}).exitCode);
    }
    void Put(const std::string& place, const std::string& text) const { Put(place, text, folder_); }
    static std::vector<std::string> Differences() {
        std::vector<std::string> all;
        const ToolRun run = RunTool({"compare", "--json", First("local"), Second("local")});
        const nlohmann::json rows = run.Json();
        for (const auto& row : rows) {
            all.push_back(row.at("difference").get<std::string>() + ": " +
                          row.at("path").get<std::string>());
        }
        EXPECT_EQ(all.empty() ? ExitCode::kDone : ExitCode::kRefused, run.exitCode);
        return all;
    }

    DirectoryDepot dir_{key_};
};

TEST_P(TwoTreesTest, CompareReportsWhatIsDifferentByItsExitCodeToo) {
    EXPECT_THAT(Differences(), IsEmpty());
    Put(Second("local\\inner\\two.kre"), "3");
    Put(First("local\\first.kre"), "x");
    Put(Second("local\\second.kre"), "x");
    EXPECT_THAT(Differences(),
                UnorderedElementsAre("different: inner\\two.kre", "only in the first: first.kre",
                                     "only in the second: second.kre"));
    const ToolRun files = RunTool({"compare", First("local\\one.kre"), Second("local\\one.kre")});
    EXPECT_EQ(ExitCode::kDone, files.exitCode) << files.errors;
    EXPECT_EQ("", files.output);
}

TEST_P(TwoTreesTest, CompareByValuesPaysNoRegardToSpelling) {
    Put(Second("local\\one.kre"),
        "; other\r\n[host]\r\nNAME = mail \r\n[Profile]\r\nTitle=One\r\n");
    const std::vector<std::string> files = {"compare", First("local\\one.kre"),
                                            Second("local\\one.kre"), "--values", "--json"};
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"compare", First("local\\one.kre"), Second("local\\one.kre")}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool(files).exitCode);
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"compare", "--values", First("local"), Second("local")}).exitCode);
    Put(Second("local\\one.kre"), "[Host]\r\nName=post\r\nPort=1\r\n");
    const ToolRun run = RunTool(files);
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    const nlohmann::json rows = run.Json();
    ASSERT_EQ(3u, rows.size());
    EXPECT_TRUE(rows[0]["second"].is_null()) << "the title";
    EXPECT_EQ("mail", rows[1]["first"]);
    EXPECT_EQ("post", rows[1]["second"]);
    EXPECT_EQ("Port", rows[2]["key"]);
    EXPECT_TRUE(rows[2]["first"].is_null());
}

TEST_P(TwoTreesTest, CompareOfWhatCannotBeReadEndsWithFour) {
    EXPECT_EQ(ExitCode::kFailed, RunTool({"compare", First("none"), Second("local")}).exitCode);
    EXPECT_EQ(ExitCode::kFailed, RunTool({"compare", First("local"), "<None>\\"}).exitCode);
    EXPECT_EQ(ExitCode::kUsage, RunTool({"compare", First("local")}).exitCode);
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"compare", First("local"), Second("local\\one.kre")}).exitCode);
}

TEST_P(TwoTreesTest, TreeShowsFoldersFirstDownToItsDepth) {
    EXPECT_EQ(First("local") + "\n  inner\\\n    two.kre\n  one.kre\n",
              RunTool({"tree", First("local")}).output);
    EXPECT_EQ(First("local") + "\n  inner\\\n  one.kre\n",
              RunTool({"tree", "--depth", "1", First("local")}).output);
    const nlohmann::json tree = RunTool({"tree", "--json", First("local")}).Json();
    EXPECT_EQ("two.kre", tree["children"][0]["children"][0]["name"]);
    EXPECT_EQ("file", tree["children"][1]["kind"]);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"tree", First("local\\one.kre")}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"tree", First("none")}).exitCode);
}

TEST_P(TwoTreesTest, FindFindsNamesAtEveryDepth) {
    EXPECT_EQ(First("local\\inner\\two.kre") + "\n" + First("local\\one.kre") + "\n",
              RunTool({"find", First("local"), "*.KRE"}).output);
    const ToolRun none = RunTool({"find", "--json", First("local"), "*.x"});
    EXPECT_EQ(ExitCode::kDone, none.exitCode);
    EXPECT_EQ("[]\n", none.output);
    EXPECT_EQ("folder", RunTool({"find", "--json", First("local"), "in*"}).Json()[0]["kind"]);
}

TEST_P(TwoTreesTest, StatReportsWhatIsKnown) {
    const nlohmann::json file = RunTool({"stat", "--json", First("local\\one.kre")}).Json();
    EXPECT_EQ("file", file["kind"]);
    EXPECT_EQ(43, file["size"]);
    EXPECT_EQ(1, file["type"]);
    EXPECT_EQ("One", file["title"]);
    EXPECT_EQ("mail", file["host"]);
    EXPECT_EQ(true, file["writable"]);
    const nlohmann::json folder = RunTool({"stat", "--json", First("local\\inner")}).Json();
    EXPECT_EQ("folder", folder["kind"]);
    EXPECT_EQ(true, folder["writable"]);
    EXPECT_EQ(2u, RunTool({"stat", "--json", First("local\\*")}).Json().size());
    EXPECT_THAT(RunTool({"stat", First("local\\one.kre")}).output, HasSubstr("host: mail\n"));
    EXPECT_THAT(Differences(), IsEmpty()) << "the test of writing leaves nothing";
}

TEST_P(TwoTreesTest, SyncShowsItsPlanAndKeepsWhatIsSurplus) {
    Put(First("local\\inner\\two.kre"), "3");
    Put(First("local\\new.kre"), "n");
    Put(Second("local\\surplus.kre"), "s");
    const std::vector<std::string> sync = {"sync", First("local"), Second("local")};
    std::vector<std::string> dry = sync;
    dry.emplace_back("--dry-run");
    const ToolRun planned = RunTool(dry);
    EXPECT_EQ(ExitCode::kDone, planned.exitCode) << planned.errors;
    EXPECT_THAT(planned.output, HasSubstr("would replace " + First("local\\inner\\two.kre")));
    EXPECT_THAT(planned.output,
                HasSubstr("plan: 2 changes, 1 surplus, which stay without --delete\n"));
    EXPECT_EQ(3u, Differences().size());
    const ToolRun run = RunTool(sync);
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_LT(run.output.find("plan: "), run.output.find("copied 2 files, deleted 0"));
    EXPECT_THAT(Differences(), ElementsAre("only in the second: surplus.kre"));
}

TEST_P(TwoTreesTest, SyncDeletesWhatIsSurplusWhenAsked) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", Second("local\\old")}).exitCode);
    Put(Second("local\\old\\a.kre"), "s");
    EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", First("local\\empty")}).exitCode);
    const ToolRun dry = RunTool({"sync", "--delete", "--dry-run", First("local"), Second("local")});
    EXPECT_THAT(dry.output, HasSubstr("would remove " + Second("local\\old\\a.kre") + "\n"));
    EXPECT_EQ(3u, Differences().size());
    const ToolRun run = RunTool({"sync", "--delete", "--json", First("local"), Second("local")});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(2, run.Json()["deleted"]);
    EXPECT_THAT(Differences(), IsEmpty());
}

TEST_P(TwoTreesTest, SyncMakesAMissingFolder) {
    const ToolRun run = RunTool({"sync", First("local"), Second("new")});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("2", RunTool({"cat", Second("new\\inner\\two.kre")}).output);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"sync", First("local"), Second("x\\y")}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"sync", First("none"), Second("local")}).exitCode);
}

INSTANTIATE_TEST_SUITE_P(Pairs, TwoTreesTest,
                         testing::Values(Sides{"<Work>\\", "<Team>\\"},
                                         Sides{"<Work>\\", "<Dir>\\"},
                                         Sides{"<Dir>\\", "<Team>\\"}),
                         NameOfSides);

class SyncTest : public ToolTest {
protected:
    SyncTest() {
        folder_.MakeFolder("work\\tree");
        folder_.MakeFile("work\\tree\\surplus.kre", "mine");
    }
    static ToolRun Sync(const std::string& from, const std::string& to) {
        return RunTool({"sync", "--delete", from, to});
    }

    DirectoryDepot dir_{key_};
};

TEST_F(SyncTest, NothingIsDeletedThatTheSourceHasWithoutListingIt) {
    // An entry of another class is in no listing.
    dir_.server.Apply("dn: cn=surplus.kre,cn=Sessions," + dir_.base +
                      "\nobjectClass: person\ncn: surplus.kre\nsn: x\n");
    const ToolRun run = Sync("<Dir>\\Sessions", "<Work>\\tree");
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("nothing is deleted"));
    EXPECT_EQ("mine", Bytes("work\\tree\\surplus.kre"));
    EXPECT_FALSE(Holds("work\\tree\\office.kre")) << "nothing is copied either";
}

TEST_F(SyncTest, NothingIsDeletedBesideNamesAndLinksThatAreNotListed) {
    dir_.server.AddFile("CON", "cn=Sessions," + dir_.base, "x");
    EXPECT_THAT(Sync("<Dir>\\Sessions", "<Work>\\tree").errors, HasSubstr("nothing is deleted"));
    folder_.MakeFolder("elsewhere");
    const FolderLink link(folder_.MakeFolder("team") + "\\link", folder_.At("elsewhere"));
    EXPECT_THAT(Sync("<Team>\\", "<Work>\\tree").errors, HasSubstr("nothing is deleted"));
    EXPECT_EQ("mine", Bytes("work\\tree\\surplus.kre"));
}

TEST_F(SyncTest, NothingIsDeletedAfterAServerThatDoesNotAnswer) {
    dir_.Define("Dead");
    key_.Dword("Dead", "Port1", ClosedPort());
    EXPECT_EQ(ExitCode::kUnreachable, Sync("<Dead>\\Sessions", "<Work>\\tree").exitCode);
    EXPECT_EQ("mine", Bytes("work\\tree\\surplus.kre"));
}

TEST_F(SyncTest, PlacesThatHoldEachOtherAreRefused) {
    dir_.Define("Same");
    dir_.server.AddFolder("Inner", "cn=Sessions," + dir_.base);
    const std::pair<const char*, const char*> pairs[] = {
        {"<Work>\\tree", "<Work>\\"},
        {"<Work>\\", "<Work>\\tree"},
        {"<Work>\\tree", "<Work>\\tree"},
        {"<Dir>\\Sessions\\Inner", "<Same>\\Sessions"},
        {"<Dir>\\Sessions", "<Same>\\Sessions"}};
    for (const auto& [from, to] : pairs) {
        EXPECT_EQ(ExitCode::kRefused, Sync(from, to).exitCode) << from << " " << to;
    }
    EXPECT_EQ("mine", Bytes("work\\tree\\surplus.kre"));
    EXPECT_TRUE(dir_.server.Holds("cn=office.kre,cn=Sessions," + dir_.base));
}

}  // namespace
}  // namespace depot::test
