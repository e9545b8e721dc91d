#include "depotctl/tool.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

class DepotsTest : public ToolTest {};

TEST_F(DepotsTest, DepotsReportsKeysNamesOrderDefaultAndLocations) {
    key_.Text("Team", "Path1", folder_.At("missing"));
    key_.Text("Team", "Path2", folder_.At("team"));
    key_.Dword("Team", "DefaultDepot", 1);
    key_.Dword("Team", "Contains", 6);
    key_.Text("Team", "Icon", "team.ico");
    const auto depots = RunTool({"depots", "--json"}).Json();
    ASSERT_EQ(2u, depots.size());
    EXPECT_EQ("Work", depots[0]["key"]);
    EXPECT_EQ("Travail", depots[0]["displayName"]);
    EXPECT_EQ(1, depots[0]["order"]);
    EXPECT_EQ(false, depots[0]["default"]);
    EXPECT_EQ("user", depots[0]["definedFor"]);
    EXPECT_EQ(true, depots[1]["default"]);
    EXPECT_EQ(nullptr, depots[1]["order"]);
    EXPECT_EQ(6, depots[1]["contains"]);
    EXPECT_EQ("team.ico", depots[1]["icon"]);
    const auto& locations = depots[1]["locations"];
    ASSERT_EQ(2u, locations.size());
    EXPECT_EQ(false, locations[0]["reachable"]);
    EXPECT_EQ(false, locations[0]["active"]);
    EXPECT_EQ(true, locations[1]["reachable"]);
    EXPECT_EQ(true, locations[1]["writable"]);
    EXPECT_EQ(true, locations[1]["active"]);
    EXPECT_EQ("folder", locations[1]["type"]);
}

TEST_F(DepotsTest, DepotsShowsRawAndExpandedPaths) {
    DefineFolder("Team", "%TEMP%\\$X64$");
    const auto location = RunTool({"depots", "--json", "--offline"}).Json()[1]["locations"][0];
    EXPECT_EQ("%TEMP%\\$X64$", location["path"]);
    EXPECT_THAT(location["expanded"], testing::EndsWith("\\x64"));
    EXPECT_FALSE(location.contains("reachable"));
    EXPECT_THAT(RunTool({"depots"}).output, HasSubstr("    %TEMP%\\$X64$\n    = C:\\"));
}

TEST_F(DepotsTest, DepotsWithoutDefinitionsShowsTheBuiltInOne) {
    RegDeleteTreeA(HKEY_CURRENT_USER, kDepotsKey);
    const auto depots = RunTool({"depots", "--json"}).Json();
    ASSERT_EQ(1u, depots.size());
    EXPECT_EQ("My Depot", depots[0]["displayName"]);
    EXPECT_EQ("nobody", depots[0]["definedFor"]);
    EXPECT_EQ(ExitCode::kDone, RunTool({"ls"}).exitCode);
}

}  // namespace
}  // namespace depot::test
