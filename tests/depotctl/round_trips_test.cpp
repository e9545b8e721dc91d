// How many round trips the commands wait for, counted by a relay before the server.
#include "depotctl/directory_tool.h"
#include "support/relay.h"
#include "support/waits.h"

namespace depot::test {
namespace {

// Time for requests that do not wait for the answers before them to reach the relay before those
// answers leave it. Only a machine that stands still for longer adds round trips.
constexpr std::chrono::milliseconds kEachWay(40);

constexpr int kFiles = 200;

// Fewer is better: whoever saves some lowers these.
constexpr Waits kListing = {1, 4};
constexpr Waits kListingOfAFile = {1, 5};
constexpr Waits kCat = {1, 4};
constexpr Waits kGet = {1, 4};
constexpr Waits kSet = {1, 5};
constexpr Waits kMakingOfAFolder = {1, 6};
constexpr Waits kRemovalOfAFile = {1, 5};
constexpr Waits kMoveOfAFolder = {1, 7};
constexpr Waits kDepots = {1, 8};
// At most: several requests are under way together.
constexpr Waits kUploadOf200Files = {1, 24};
constexpr Waits kDownloadOf200Files = {1, 16};
constexpr Waits kRemovalOf200Files = {1, 20};
constexpr Waits kComparisonOf200Files = {1, 20};

MATCHER_P(TakeAtMost, most, "") {
    return arg.connections <= most.connections && arg.roundTrips <= most.roundTrips;
}

class ToolRoundTripsTest : public ToolTest {
protected:
    ToolRoundTripsTest() {
        key_.Dword("Dir", "Port1", relay_.Port());
        ForgetServer(relay_.Port());
        relay_.HoldBack(kEachWay);
    }

    // Runs a command and returns what it waits for.
    Waits Of(const std::vector<std::string>& arguments) {
        relay_.Mark();
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        const RelayCounts counts = relay_.Counts();
        return {counts.connections, counts.roundTrips};
    }

    std::string MakeLocalFiles() const {
        folder_.MakeFolder("tree");
        for (int number = 0; number < kFiles; ++number) {
            folder_.MakeFile("tree\\f" + std::to_string(number) + ".kre", "some text");
        }
        return folder_.At("tree");
    }

    DirectoryDepot dir_{key_};
    Relay relay_{dir_.server.Port()};
};

TEST_F(ToolRoundTripsTest, Listings) {
    EXPECT_EQ(kListing, Of({"ls", "<Dir>\\"}));
    EXPECT_EQ(kListing, Of({"ls", "<Dir>\\Sessions"}));
    EXPECT_EQ(kListingOfAFile, Of({"ls", "<Dir>\\Sessions\\office.kre"}));
    EXPECT_EQ(kListing, Of({"ls", "<Dir>\\Sessions\\*.kre"}));
    EXPECT_EQ(kListing, Of({"tree", "--depth", "1", "<Dir>\\"}));
}

TEST_F(ToolRoundTripsTest, ProfilesAreReadAndWritten) {
    EXPECT_EQ(kCat, Of({"cat", "<Dir>\\Sessions\\office.kre"}));
    EXPECT_EQ(kGet, Of({"get", "<Dir>\\Sessions\\office.kre", "Host", "Name"}));
    EXPECT_EQ(kSet, Of({"set", "<Dir>\\Sessions\\office.kre", "Host", "Name", "x"}));
}

TEST_F(ToolRoundTripsTest, FoldersAndFilesAreMadeMovedAndRemoved) {
    EXPECT_EQ(kMakingOfAFolder, Of({"mkdir", "<Dir>\\New"}));
    EXPECT_EQ(kMoveOfAFolder, Of({"mv", "<Dir>\\Sessions", "<Dir>\\New\\Moved"}));
    EXPECT_EQ(kRemovalOfAFile, Of({"rm", "<Dir>\\New\\Moved\\office.kre"}));
}

TEST_F(ToolRoundTripsTest, ManyFilesAreTransferredAndRemoved) {
    EXPECT_THAT(Of({"upload", MakeLocalFiles(), "<Dir>\\"}), TakeAtMost(kUploadOf200Files));
    EXPECT_THAT(Of({"download", "<Dir>\\tree", folder_.At("back")}),
                TakeAtMost(kDownloadOf200Files));
    EXPECT_EQ("some text", Bytes("back\\f199.kre"));
    EXPECT_THAT(Of({"upload", "-u", folder_.At("tree"), "<Dir>\\"}),
                TakeAtMost(kComparisonOf200Files));
    EXPECT_THAT(Of({"compare", folder_.At("tree"), "<Dir>\\tree"}),
                TakeAtMost(kComparisonOf200Files));
    EXPECT_THAT(Of({"sync", "--dry-run", "--delete", folder_.At("tree"), "<Dir>\\tree"}),
                TakeAtMost(kComparisonOf200Files));
    EXPECT_THAT(Of({"rm", "-r", "<Dir>\\tree"}), TakeAtMost(kRemovalOf200Files));
}

TEST_F(ToolRoundTripsTest, Depots) {
    EXPECT_EQ(kDepots, Of({"depots"}));
}

TEST_F(ToolRoundTripsTest, LocationThatWasChosenIsNotLookedForAgain) {
    key_.Text("Dir", "Path2", folder_.MakeFolder("second"));
    EXPECT_EQ(kListing, Of({"ls", "<Dir>\\"}));
    key_.Text("Dir", "Path1", "cn=Nowhere," + dir_.base);
    EXPECT_EQ((Waits{1, 3}), Of({"ls", "<Dir>\\"}));
}

}  // namespace
}  // namespace depot::test
