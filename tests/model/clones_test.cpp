// Copies that records make of themselves when memory runs out.
#include <gtest/gtest.h>

#include <string>

#include "directory/ldap_item.h"
#include "model/depot.h"
#include "model/depot_item.h"
#include "support/failing_memory.h"

namespace depot {
namespace {

// Longer than what a text keeps in place.
const std::string kText(100, 'x');

// A copy is whole, or there is none.
template <class Record, class IsWhole>
void ExpectWholeOrNoClones(const Record& record, int fewest, const IsWhole& isWhole) {
    const test::MemoryRun run = test::RunOutOfMemory([&] {
        const auto clone = record.Clone();
        EXPECT_EQ(test::FailingMemory::RanOut(), clone == nullptr);
        EXPECT_TRUE(clone == nullptr || isWhole(*clone));
    });
    EXPECT_LE(fewest, run.failures);
    EXPECT_EQ(0, run.exceptions);
    EXPECT_EQ(0u, run.left);
}

TEST(ClonesTest, LocationWithoutMemoryGivesNone) {
    CDepotPath location(nullptr);
    location.path = location.host = location.password = kText;
    ExpectWholeOrNoClones(location, 4, [](const CDepotPath& clone) {
        return clone.path == kText && clone.host == kText && clone.password.Plain() == kText;
    });
}

TEST(ClonesTest, DepotWithoutMemoryGivesNone) {
    CDepot depot(nullptr);
    depot.name = depot.displayName = kText;
    CDepotPath location(nullptr);
    location.path = kText;
    depot.paths->Add(&location, true);
    depot.paths->Add(&location, true);
    ExpectWholeOrNoClones(depot, 7, [](const CDepot& clone) {
        return clone.name == kText && clone.displayName == kText && clone.paths->Count() == 2 &&
               clone.paths->At(1)->path == kText;
    });
}

TEST(ClonesTest, ItemWithoutMemoryGivesNone) {
    const CDepotItem item(kText, nullptr);
    ExpectWholeOrNoClones(item, 2, [](const CDepotItem& clone) { return clone.path == kText; });
}

TEST(ClonesTest, DirectoryItemWithoutMemoryGivesNone) {
    const CLDAPItem item(kText, true);
    ExpectWholeOrNoClones(
        item, 2, [](const CLDAPItem& clone) { return clone.path == kText && clone.isFolder == 1; });
}

}  // namespace
}  // namespace depot
