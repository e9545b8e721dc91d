// Stores that stop answering, and memory that runs out.
#include "store/store_worlds.h"
#include "store/tree.h"
#include "support/failing_memory.h"

namespace depot::test {
namespace {

class StoreFaultsTest : public StoreTest {
protected:
    const std::string file_ = AddFile(At("a.kra"), "1");
    const std::string folder_ = AddFolder(At("sub", true));
};

TEST_P(StoreFaultsTest, EveryOperationReportsThatThePlaceStoppedAnswering) {
    const auto gone = FailsFor(world_->BreakOff());
    LeftOut left;
    FileBuffer buffer;
    StoreSource source, held;
    EXPECT_THAT(store_.List(
                    folder_, [](const StoreItem&) {}, left),
                gone);
    EXPECT_THAT(store_.ReadFile(file_, SourceFate::kStays, buffer), gone);
    EXPECT_THAT(store_.ReadSource(file_, SourceFate::kGoes, source), gone);
    EXPECT_THAT(Write(At("b.kra"), "2", ExistingEntries::kReplace), gone);
    EXPECT_THAT(store_.Rename({file_, At("c.kra")}, ExistingEntries::kRefuse, held), gone);
    EXPECT_THAT(store_.Remove(folder_, ItemKind::kFolder), gone);
    EXPECT_THAT(store_.RemoveUnchanged(file_, DigestOf("1", 1)), gone);
    EXPECT_THAT(store_.RemoveTree(folder_), gone);
    Tree tree;
    EXPECT_THAT(ListTree(store_, folder_, tree), gone);
}

TEST_P(StoreFaultsTest, FailureThatIsKeptHasACodeAndAText) {
    static_cast<void>(world_->BreakOff());
    FileBuffer buffer;
    const Result read = store_.ReadFile(file_, SourceFate::kStays, buffer);
    ASSERT_FALSE(read);
    const Error kept = store_.Keep(read.Why());
    EXPECT_EQ(read.Why().code, kept.code);
    EXPECT_NE("", kept.text);
    const Error stopped = store_.Keep({Reason::kStopped, CodeKind::kSystem, ERROR_CANCELLED});
    EXPECT_EQ(Reason::kStopped, stopped.reason);
}

TEST_P(StoreFaultsTest, OperationWithoutMemoryThrowsOrFailsAndLosesNothing) {
    int failures = 0;
    const int allocations = FailEachAllocation([&] {
        LeftOut left;
        std::vector<TreeItem> items;
        FileBuffer buffer;
        try {
            const bool done = ListChildren(store_, world_->Root(), items, left).IsDone() &&
                              store_.ReadFile(file_, SourceFate::kStays, buffer).IsDone() &&
                              Write(file_, "2", ExistingEntries::kReplace).IsDone();
            if (!done) ++failures;
        } catch (const std::bad_alloc&) {
            ++failures;
        }
    });
    EXPECT_LT(0, allocations);
    EXPECT_LE(failures, allocations);
    EXPECT_EQ("2", Bytes(file_));
}

INSTANTIATE_TEST_SUITE_P(All, StoreFaultsTest, EveryStore(), StoreName);

}  // namespace
}  // namespace depot::test
