// The expanded path of a location.
#include <gtest/gtest.h>

#include "model/depots.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kKey[] = "Software\\DepotTests\\Depots";

class ExpandedPathTest : public testing::Test {
protected:
    ExpandedPathTest() {
        FillSlot(depots_.GetReplacers()->Data()->userFolder, folder_.Path());
        FillSlot(depots_.GetReplacers()->Data()->languageCode, "deu");
    }

    std::string Expand(const std::string& path) {
        CDepotPath location(depot_.paths.get());
        location.path = path;
        return ExpandedPath(location);
    }

    test::ScratchFolder folder_;
    CDepots depots_;
    CDepot depot_{&depots_};
};

TEST_F(ExpandedPathTest, MacrosTakeTheValuesOfTheOwningList) {
    EXPECT_EQ(folder_.At("Profiles"), Expand("$USERDIR$\\Profiles"));
    EXPECT_EQ("C:\\plain", Expand("C:\\plain"));
    EXPECT_EQ("$userdir$", Expand("$userdir$"));
    EXPECT_EQ("", Expand(""));
}

TEST_F(ExpandedPathTest, EnvironmentIsExpandedAsWell) {
    SetEnvironmentVariableA("COMPANY", "C:\\Acme");
    EXPECT_EQ("C:\\Acme\\deu", Expand("%COMPANY%\\$LANGUAGE_CODE$"));
    SetEnvironmentVariableA("COMPANY", nullptr);
}

TEST_F(ExpandedPathTest, ResultIsKeptInTheRecord) {
    CDepotPath location(depot_.paths.get());
    location.path = "$USERDIR$";
    EXPECT_EQ(folder_.Path(), ExpandedPath(location));
    EXPECT_EQ(folder_.Path(), location.locationText);
    FillSlot(depots_.GetReplacers()->Data()->userFolder, "C:\\other");
    location.path = "C:\\changed";
    EXPECT_EQ(folder_.Path(), ExpandedPath(location));
    location.locationText.clear();
    EXPECT_EQ("C:\\changed", ExpandedPath(location));
}

TEST_F(ExpandedPathTest, LocationWithoutAListKeepsItsMacros) {
    CDepotPath alone(nullptr);
    alone.path = "$USERDIR$\\x";
    EXPECT_EQ("$USERDIR$\\x", ExpandedPath(alone));
    EXPECT_EQ("$USERDIR$\\x", alone.locationText);

    CDepotPaths pathsWithoutDepot(nullptr);
    CDepotPath withoutDepot(&pathsWithoutDepot);
    withoutDepot.path = "$USERDIR$\\x";
    EXPECT_EQ("$USERDIR$\\x", ExpandedPath(withoutDepot));

    CDepot depotWithoutList(nullptr);
    CDepotPath withoutList(depotWithoutList.paths.get());
    withoutList.path = "$USERDIR$\\x";
    EXPECT_EQ("$USERDIR$\\x", ExpandedPath(withoutList));
}

TEST_F(ExpandedPathTest, ActivePathIsTheFirstExpandedPathThatExists) {
    const test::ScratchKey user(HKEY_CURRENT_USER, kKey);
    folder_.MakeFolder("deu");
    user.Text("Team", "Path1", "$USERDIR$\\missing");
    user.Text("Team", "Path2", "$USERDIR$\\$LANGUAGE_CODE$");
    const CDepots depots(kKey);
    ASSERT_EQ(1u, depots.Count());
    EXPECT_EQ(folder_.At("deu\\"), depots.At(0)->paths->GetActivePath());
    EXPECT_EQ("$USERDIR$\\$LANGUAGE_CODE$", depots.At(0)->paths->At(1)->path);
}

TEST_F(ExpandedPathTest, LongPathsAreExpandedWhole) {
    const std::string longTail(100000, 'x');
    EXPECT_EQ(folder_.Path() + longTail, Expand("$USERDIR$" + longTail));
}

}  // namespace
}  // namespace depot
