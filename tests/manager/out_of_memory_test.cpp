// Sessions and paths while memory runs out at each allocation in turn.
#include <gtest/gtest.h>

#include "manager/depot_session.h"
#include "manager/depot_world.h"
#include "manager/display_path.h"
#include "manager/display_path_text.h"
#include "manager/resolve_item.h"
#include "support/failing_memory.h"

namespace depot {
namespace {

using test::ExpectEachFailureThrows;

// Longer than what a text holds without memory of its own.
const std::string longName(50, 'n');

TEST(ManagerMemoryTest, PathsThatCannotBeMadeThrow) {
    test::DepotWorld world;
    CDepot& depot = world.Add("Work", "Travail", "w");
    const std::string display = "<Work>\\" + longName;
    const std::string storage = world.folder.At("w\\" + longName);
    depot.paths->GetActivePath();
    ExpectEachFailureThrows([&] { EXPECT_EQ(storage, DisplayToStorage(depot, display)); });
    ExpectEachFailureThrows([&] { EXPECT_EQ(display, StorageToDisplay(depot, storage)); });
    ExpectEachFailureThrows([&] { FolderDisplayPath(longName, display + "\\a"); });
    ExpectEachFailureThrows([&] {
        const DisplayPathParts parts = SplitDisplayPath("<" + longName + ">\\" + longName);
        EXPECT_EQ(longName, parts.depotName);
        EXPECT_EQ(longName, parts.relative);
    });
}

TEST(ManagerMemoryTest, PathThatCannotBeResolvedLeavesNothing) {
    test::DepotWorld world;
    CDepot& depot = world.Add("Work", "Travail", "w");
    const test::MemoryRun run = test::RunOutOfMemory([&] {
        CDepotItem item;
        ResolveItem(world.depots, longName, item, LoosePaths::kPlace, FriendlyNames::kTranslate);
        // A view that cannot grow has no default depot.
        const bool whole =
            item.depot == &depot && item.path == "<Work>\\Profile\\" + longName + ".kre";
        EXPECT_TRUE(whole || (test::FailingMemory::RanOut() && item.depot == nullptr));
    });
    EXPECT_LT(0, run.exceptions);
    EXPECT_EQ(0u, run.left);
}

TEST(ManagerMemoryTest, SessionThatRanOutOfMemoryLeavesNothing) {
    const test::ScratchFolder folder;
    const test::ScratchKey product(HKEY_CURRENT_USER, "Software\\Quillon\\Farrow");
    product.Text("13.00\\Wharfside", "UserDir", folder.MakeFolder("Users\\" + longName));
    product.Text("Depots\\Work", "Path1", folder.MakeFolder("w"));
    const test::MemoryRun run = test::RunOutOfMemory([] {
        DepotSession session;
        session.LoadFile("<Work>\\" + longName);
        session.currentFile->WriteString("S", longName, longName);
        session.ReleaseFile();
        EXPECT_FALSE(session.currentFile);
    });
    EXPECT_LT(0, run.exceptions);
    EXPECT_EQ(0u, run.left);
}

}  // namespace
}  // namespace depot
