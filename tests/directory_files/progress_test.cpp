// What watchers hear of operations, and how they stop them.
#include "directory_files/directory_world.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"
#include "support/directory_transfer.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Exists;
using test::Fails;
using test::IsDone;
using Seen = std::vector<std::string>;

class ProgressTest : public test::DirectoryWorldTest {
protected:
    // Notes each call as "done/all bytes", and stops at the call of that number.
    TransferWatcher Watch(std::size_t stopAt = 100) {
        seen_.clear();
        return [this, stopAt](const TransferProgress& progress) {
            seen_.push_back(std::to_string(progress.filesDone) + "/" +
                            std::to_string(progress.filesInAll) + " " +
                            std::to_string(progress.bytesDone));
            return seen_.size() < stopAt;
        };
    }
    int OnList(std::initializer_list<CDepotItem> sources, const CDepotItem* target, UINT operation,
               const TransferWatcher& watcher) {
        CDepotItems items;
        for (const CDepotItem& source : sources) items.Append(source.Clone());
        return ListOperation(items, target, operation, kQuietFlags, nullptr, &error_, watcher);
    }

    Seen seen_;
};

TEST_F(ProgressTest, SingleFileIsReportedOnceInEveryPairOfStores) {
    Make("h\\a.kra", "bytes");
    const TransferWatcher watcher = Watch();
    EXPECT_THAT(CopyFile(home_, "<Home>\\a.kra", "<Work>\\a.kra", work_, true, &error_, watcher),
                IsDone());
    EXPECT_THAT(CopyFile(*work_, "<Work>\\a.kra", "<Work>\\b.kra", work_, true, &error_, watcher),
                IsDone());
    EXPECT_THAT(CopyFile(*work_, "<Work>\\b.kra", "<Home>\\b.kra", &home_, true, &error_, watcher),
                IsDone());
    EXPECT_THAT(CopyFile(home_, "<Home>\\b.kra", "<Home>\\c.kra", &home_, true, &error_, watcher),
                IsDone());
    EXPECT_EQ(Seen(4, "1/1 5"), seen_);
}

TEST_F(ProgressTest, FileThatFailsIsNotReported) {
    EXPECT_THAT(CopyFile(home_, "<Home>\\no", "<Work>\\a.kra", work_, true, &error_, Watch()),
                Fails());
    EXPECT_THAT(CopyFile(*work_, "<Work>\\no.kra", At("x"), nullptr, true, &error_, Watch()),
                Fails());
    EXPECT_EQ(Seen(), seen_);
}

TEST_F(ProgressTest, StoppingAfterTheOnlyFileChangesNothing) {
    Make("h\\a.kra", "bytes");
    const CDepotItem target("<Work>\\a.kra", work_);
    EXPECT_THAT(
        ItemOperation({"<Home>\\a.kra", &home_}, &target, FO_MOVE, nullptr, nullptr, Watch(1)),
        IsDone());
    EXPECT_EQ(Seen{"1/1 5"}, seen_);
    EXPECT_FALSE(Exists(At("h\\a.kra")));
}

TEST_F(ProgressTest, TreeBetweenEntriesCountsWhatHasArrived) {
    const std::string tree = AddTree("tree");
    EXPECT_THAT(CopyEntry(Directory(), tree, Directory(), DN("cn=copy"), ExistingEntries::kReplace,
                          &error_, Watch()),
                IsDone());
    EXPECT_EQ((Seen{"0/2 0", "0/2 0", "1/2 1", "2/2 2"}), seen_);
}

TEST_F(ProgressTest, TreeBetweenEntriesStopsAtEveryPlace) {
    const std::string tree = AddTree("tree");
    test::RefuseTreeRenames(Directory());
    for (const std::size_t stopAt : {1u, 3u}) {
        EXPECT_THAT(MoveEntry(Directory(), tree, DN("cn=moved"), &error_, Watch(stopAt)), Fails());
        ExpectFailure(LDAP_USER_CANCELLED);
        EXPECT_EQ(stopAt, seen_.size());
        ExpectTree(tree);
        EXPECT_EQ(stopAt == 3, Holds(DN("cn=moved")));
    }
}

TEST_F(ProgressTest, ListAddsUpItsItems) {
    MakeTree();
    world_.folder.MakeFolder("h\\tree");
    Make("h\\tree\\a.kra", "12");
    Make("h\\tree\\b.kra", "345");
    Make("h\\c.kra", "6789");
    const CDepotItem target("<Work>\\", work_);
    EXPECT_THAT(
        OnList({{"<Home>\\tree", &home_}, {"<Home>\\c.kra", &home_}}, &target, FO_COPY, Watch()),
        IsDone());
    EXPECT_EQ((Seen{"1/3 2", "2/3 5", "3/3 9"}), seen_);
}

TEST_F(ProgressTest, ListIntoADirectoryStopsBetweenTwoFiles) {
    for (const char* name : {"a", "b", "c"}) Make(std::string("h\\") + name + ".kra", name);
    const CDepotItem target("<Work>\\", work_);
    EXPECT_THAT(
        OnList({{"<Home>\\a.kra", &home_}, {"<Home>\\b.kra", &home_}, {"<Home>\\c.kra", &home_}},
               &target, FO_MOVE, Watch(2)),
        Fails());
    EXPECT_EQ((Seen{"1/3 1", "2/3 2"}), seen_);
    EXPECT_EQ("b", Contents(DN("cn=b.kra")));
    EXPECT_FALSE(Exists(At("h\\b.kra")));
    EXPECT_FALSE(Holds(DN("cn=c.kra")));
    EXPECT_TRUE(Exists(At("h\\c.kra")));
}

TEST_F(ProgressTest, ListOutOfADirectoryThatIsStoppedTakesNothingAway) {
    server_.AddFile("a.kra", base_, "1");
    server_.AddFile("b.kra", base_, "2");
    const std::string out = world_.folder.MakeFolder("h\\out");
    const CDepotItem target("<Home>\\out", &home_);
    for (const std::size_t stopAt : {1u, 2u}) {
        EXPECT_THAT(OnList({{"<Work>\\a.kra", work_}, {"<Work>\\b.kra", work_}}, &target, FO_MOVE,
                           Watch(stopAt)),
                    Fails());
        EXPECT_EQ(stopAt, seen_.size());
        EXPECT_FALSE(Exists(out + "\\a.kra"));
        EXPECT_TRUE(Holds(DN("cn=a.kra")));
        EXPECT_TRUE(Holds(DN("cn=b.kra")));
    }
}

}  // namespace
}  // namespace depot
