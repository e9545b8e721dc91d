// Many sessions, one after another, in one process: nothing piles up.
#include <cstdio>
#include <cstdlib>

#include "faults/fault_layer.h"
#include "soak/hammer.h"
#include "support/leak_counts.h"
#include "support/results.h"

namespace depot::test {
namespace {

// What the process holds.
struct ProcessHoldings {
    std::size_t heapBlocks = CountHeapBlocks();
    std::size_t handles = CountOpenHandles();
    std::size_t drawingObjects = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    Holdings component = FaultLayer::Held();
    // The blocks of directory servers stay open on purpose.
    std::size_t lastingBlocks = FaultLayer::LastingServerBlocks();
};

constexpr int kWarmUp = 100;
// Queues of the component and caches of the system may need a little more or less.
constexpr std::ptrdiff_t kSpareBlocks = 4;
constexpr std::size_t kSpareHandles = 4;
// Some systems' directory clients keep a block of their own for each value that is read, and two
// for each one that is stored; a session reads twice and stores once.
constexpr std::size_t kClientBlocks = 4;

// Until that many have run, what they leave behind on purpose is what a process can hold anywhere.
constexpr int kSessionsPerClearance = 1000;

std::size_t CloseLastingBlocks() {
    const std::size_t open = FaultLayer::LastingServerBlocks();
    FaultLayer::CloseLastingServerBlocks();
    return open - FaultLayer::LastingServerBlocks();
}

int SessionCount() {
    const char* const wanted = std::getenv("DEPOTINTR_SOAK_SESSIONS");
    return wanted != nullptr ? std::atoi(wanted) : 300;
}

class SessionsSoakTest : public ComponentTest, public testing::WithParamInterface<const char*> {
protected:
    SessionsSoakTest() {
        if (!std::string(GetParam()).starts_with("<Kept>")) return;
        DefineDirectoryDepot(depots_, "Kept", corp_.server.Port(), corp_.base);
        depots_.Dword("Kept", "KeepConnection1", 60);
    }

    const std::string work_ = DefineDepot("Work");
    CorpDepot corp_{depots_};
    const CleanWorkingFiles clean_;
    FaultLayer layer_{Library::Own().Module()};
};

TEST_P(SessionsSoakTest, SessionsLeaveNothingBehind) {
    const std::string path = GetParam();
    if (path.starts_with("<Work>")) {
        folder_.MakeFile("Work\\office.kra", Filling());
    } else {
        corp_.Add("office.kra", Filling());
    }
    int round = 0;
    for (; round < kWarmUp; ++round) ASSERT_EQ("", RunSession(*api_, path, round));
    const ProcessHoldings before;
    std::size_t closedBlocks = 0;
    const ULONGLONG start = GetTickCount64();
    for (; round < SessionCount(); ++round) {
        ASSERT_EQ("", RunSession(*api_, path, round));
        if (round % kSessionsPerClearance == 0) closedBlocks += CloseLastingBlocks();
    }
    const ULONGLONG end = GetTickCount64();
    const ProcessHoldings after;
    const std::size_t lasting = after.lastingBlocks - before.lastingBlocks;
    std::printf(
        "  %d sessions, %.1f ms each: %+lld heap blocks, %+lld handles beside the %llu that are "
        "left behind on purpose, %+lld drawing objects\n",
        round, static_cast<double>(end - start) / (round - kWarmUp),
        static_cast<long long>(after.heapBlocks - before.heapBlocks),
        static_cast<long long>(after.handles - before.handles - lasting),
        static_cast<unsigned long long>(lasting + closedBlocks),
        static_cast<long long>(after.drawingObjects - before.drawingObjects));
    EXPECT_EQ("", after.component.Since(before.component, kSpareBlocks));
    const std::size_t clientBlocks = path.starts_with("<Work>") ? 0 : kClientBlocks;
    EXPECT_LE(after.heapBlocks, before.heapBlocks + kSpareBlocks +
                                    clientBlocks * static_cast<std::size_t>(round - kWarmUp));
    EXPECT_LE(after.handles, before.handles + lasting + kSpareHandles);
    EXPECT_LE(after.drawingObjects, before.drawingObjects);
    EXPECT_TRUE(WorkingCopies().empty());
    EXPECT_TRUE(RecoveredFiles().empty());
}

INSTANTIATE_TEST_SUITE_P(Stores, SessionsSoakTest,
                         testing::Values("<Work>\\office.kra", "<Corp>\\office.kra",
                                         "<Kept>\\office.kra"),
                         [](const auto& path) { return std::string(path.param).substr(1, 4); });

}  // namespace
}  // namespace depot::test
