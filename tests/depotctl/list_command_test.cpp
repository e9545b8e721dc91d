#include "depotctl/tool.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// A listing's values of one member.
std::vector<std::string> Members(const nlohmann::json& rows, const char* member) {
    std::vector<std::string> values;
    for (const auto& row : rows) values.push_back(row.value(member, "(none)"));
    return values;
}

class ListTest : public ToolTest {
protected:
    ListTest() {
        folder_.MakeFile("work\\b.kre", "12345");
        folder_.MakeFile("work\\a.kra", "");
        folder_.MakeFile("work\\notes.txt", "");
        folder_.MakeFolder("work\\Sessions");
        folder_.MakeFile("work\\Sessions\\office.kre", "");
    }
};

TEST_F(ListTest, LsListsFoldersFirstAndThenFilesByName) {
    const ToolRun run = RunTool({"ls", "<Work>\\"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(
        "NAME       KIND\nSessions   folder\na.kra      file\nb.kre      file\nnotes.txt  file\n",
        run.output);
    EXPECT_EQ("", run.errors);
}

TEST_F(ListTest, LsWithoutPathListsTheDefaultDepot) {
    EXPECT_THAT(
        Members(RunTool({"ls", "--json"}).Json(), "path"),
        ElementsAre("<Work>\\Sessions", "<Work>\\a.kra", "<Work>\\b.kre", "<Work>\\notes.txt"));
}

TEST_F(ListTest, LsTakesDisplayNamesSlashesAndOtherLetterCase) {
    for (const char* path : {"<work>", "<Travail>\\", "<WORK>/", "<Work>\\Sessions\\.."}) {
        const ToolRun run = RunTool({"ls", path});
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << path << run.errors;
        EXPECT_THAT(run.output, HasSubstr("b.kre")) << path;
    }
}

TEST_F(ListTest, LsOfAFolderOutsideOfAllDepotsListsIt) {
    folder_.MakeFolder("elsewhere");
    folder_.MakeFile("elsewhere\\x.kre", "");
    const auto rows = RunTool({"ls", "--json", folder_.At("elsewhere")}).Json();
    EXPECT_THAT(Members(rows, "path"), ElementsAre(folder_.At("elsewhere\\x.kre")));
}

TEST_F(ListTest, LsOfADepotsFolderByItsPlainPathShowsDisplayPaths) {
    const auto rows = RunTool({"ls", "--json", folder_.At("work\\Sessions")}).Json();
    EXPECT_THAT(Members(rows, "path"), ElementsAre("<Work>\\Sessions\\office.kre"));
}

TEST_F(ListTest, LsWithFilterListsMatchingFilesAndAllFolders) {
    const auto rows = RunTool({"ls", "--json", "--filter", ".kre;.kra", "<Work>\\"}).Json();
    EXPECT_THAT(Members(rows, "name"), ElementsAre("Sessions", "a.kra", "b.kre"));
    EXPECT_THAT(Members(RunTool({"ls", "--json", "--folders", "<Work>\\"}).Json(), "name"),
                ElementsAre("Sessions"));
}

TEST_F(ListTest, LsRecursiveNamesFilesBelowTheirFolders) {
    const auto rows = RunTool({"ls", "-r", "--json", "<Work>\\"}).Json();
    EXPECT_THAT(Members(rows, "name"),
                ElementsAre("Sessions", "Sessions\\office.kre", "a.kra", "b.kre", "notes.txt"));
}

TEST_F(ListTest, LsLongReportsTypesSizesAndTimes) {
    const ToolRun run = RunTool({"ls", "-l", "<Work>\\b.kre"});
    EXPECT_THAT(run.output, HasSubstr("NAME   KIND  TYPE  SIZE  CHANGED"));
    EXPECT_THAT(run.output, testing::ContainsRegex("b.kre  file     1     5  20"));
    const auto row = RunTool({"ls", "--json", "<Work>\\b.kre"}).Json().at(0);
    EXPECT_EQ(5, row.at("size"));
    EXPECT_EQ(1, row.at("type"));
}

TEST_F(ListTest, LsOfAnEmptyFolderWritesNothingButAnEmptyArrayInJson) {
    EXPECT_EQ("", RunTool({"ls", "<Team>\\"}).output);
    EXPECT_EQ(nlohmann::json::array(), RunTool({"ls", "--json", "<Team>\\"}).Json());
}

TEST_F(ListTest, LsOfWhatIsNotThereIsRefusedInOneLine) {
    const ToolRun run = RunTool({"ls", "<Work>\\nowhere"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_EQ("depotctl: \"<Work>\\nowhere\" is not there\n", run.errors);
    EXPECT_EQ("", run.output);
    const ToolRun depot = RunTool({"ls", "<Unknown>\\"});
    EXPECT_EQ(ExitCode::kRefused, depot.exitCode);
    EXPECT_THAT(depot.errors, HasSubstr("no depot is named <Unknown>"));
}

TEST_F(ListTest, NamesBeyondAsciiComeOutAsUtf8) {
    folder_.MakeFile(
        "team\\B\xFC"
        "ro \x80.kre",
        "");
    EXPECT_THAT(RunTool({"ls", "<Team>\\"}).output, HasSubstr("B\xC3\xBCro \xE2\x82\xAC.kre"));
    const ToolRun run = RunTool({"ls", "--json", "<Team>\\B\xC3\xBCro \xE2\x82\xAC.kre"});
    EXPECT_THAT(Members(run.Json(), "name"), ElementsAre("B\xC3\xBCro \xE2\x82\xAC.kre"));
}

TEST_F(ListTest, NameThatTheCodePageLacksIsRefusedBeforeAnythingIsDone) {
    const SystemCodePageScope systemCodePage;
    const ToolRun run = RunTool({"set", "--create", "<Team>\\\xD0\x96.kre", "S", "K", "V"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("code page 1252"));
    EXPECT_FALSE(Exists(folder_.At("team\\?.kre")));
    EXPECT_EQ("", RunTool({"ls", "<Team>\\"}).output);
}

TEST_F(ListTest, LsOfTenThousandFilesListsThemAllAndEndsQuietlyOnAClosedPipe) {
    for (int folder = 0; folder < 20; ++folder) {
        const std::string name = "team\\d" + std::to_string(folder);
        folder_.MakeFolder(name);
        for (int number = 0; number < 500; ++number) {
            folder_.MakeFile(name + "\\f" + std::to_string(number) + ".txt", "");
        }
    }
    const ToolRun run = RunTool({"ls", "-r", "--json", "<Team>\\"});
    EXPECT_EQ(20u + 10000u, run.Json().size());
    const ToolRun cut = RunToolAndStopReading({"ls", "-r", "<Team>\\"}, 100);
    EXPECT_EQ(ExitCode::kDone, cut.exitCode);
    EXPECT_EQ("", cut.errors);
}

}  // namespace
}  // namespace depot::test
