// What every store does alike.
#include <algorithm>

#include "store/store_worlds.h"
#include "store/tree.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr ExistingEntries kRefuse = ExistingEntries::kRefuse;
constexpr ExistingEntries kReplace = ExistingEntries::kReplace;

class StoreContractTest : public StoreTest {
protected:
    Result Rename(const std::string& from, const std::string& to) {
        StoreSource held;
        return store_.Rename({from, to}, kRefuse, held);
    }
    Result Prepare(std::vector<PlannedItem>& items, ExistingEntries existing) {
        return store_.Prepare(items, existing);
    }
};

TEST_P(StoreContractTest, KindIsThatOfWhatThePathNames) {
    EXPECT_EQ(ItemKind::kFile, KindOf(AddFile(At("a.kra"), "1")));
    EXPECT_EQ(ItemKind::kFolder, KindOf(AddFolder(At("sub", true))));
    EXPECT_EQ(ItemKind::kMissing, KindOf(At("none.kra")));
    EXPECT_EQ(ItemKind::kMissing, KindOf(In(At("none", true), "a.kra")));
    EXPECT_EQ(ItemKind::kFolder, KindOf(world_->Root()));
}

TEST_P(StoreContractTest, ListingHandsOutEveryChildWithItsPathAndKind) {
    const std::string file = AddFile(At("a.kra"), "1");
    const std::string folder = AddFolder(At("sub", true));
    AddFile(In(folder, "inside.kra"), "2");
    EXPECT_THAT(Names(world_->Root()), ElementsAre("a.kra", "sub\\"));
    std::vector<std::string> paths;
    LeftOut left;
    EXPECT_THAT(
        store_.List(
            world_->Root(), [&](const StoreItem& item) { paths.push_back(item.path); }, left),
        IsDone());
    EXPECT_EQ(ItemKind::kFile, KindOf(*std::find_if(paths.begin(), paths.end(), [&](auto& path) {
                  return store_.IsSame(path, file);
              })));
    EXPECT_TRUE(left.IsNothing());
    EXPECT_THAT(Names(AddFolder(At("empty", true))), IsEmpty());
}

TEST_P(StoreContractTest, ListingOfWhatIsMissingFails) {
    LeftOut left;
    int count = 0;
    EXPECT_THAT(store_.List(
                    At("none", true), [&](const StoreItem&) { ++count; }, left),
                FailsFor(Reason::kMissing));
    EXPECT_EQ(0, count);
}

TEST_P(StoreContractTest, ListingCountsWhatItLeavesOut) {
    const LeftOut expected = world_->AddWhatIsLeftOut();
    AddFile(At("a.kra"), "1");
    std::vector<TreeItem> items;
    LeftOut left;
    EXPECT_THAT(ListChildren(store_, world_->Root(), items, left), IsDone());
    ASSERT_EQ(1u, items.size());
    EXPECT_EQ("a.kra", items.front().name);
    EXPECT_EQ(expected.links, left.links);
    EXPECT_EQ(expected.unsafeNames, left.unsafeNames);
    const Error error = store_.IncompleteError(left);
    EXPECT_EQ(Reason::kIncomplete, error.reason);
    EXPECT_NE("", error.text);
}

TEST_P(StoreContractTest, WrittenBytesAreReadBack) {
    const std::string bytes("\0\xff\r\n\x1a", 5);
    const std::string file = AddFile(At("a.kra"), bytes);
    EXPECT_EQ(bytes, Bytes(file));
    EXPECT_THAT(Write(file, "other", kReplace), IsDone());
    EXPECT_EQ("other", Bytes(file));
    FileBuffer buffer;
    EXPECT_THAT(store_.ReadFile(file, SourceFate::kGoes, buffer), IsDone());
    EXPECT_EQ(5u, buffer.length);
}

TEST_P(StoreContractTest, ReadingWhatIsMissingFailsAndLeavesNoBytes) {
    FileBuffer buffer = {3, std::make_unique<std::uint8_t[]>(7)};
    EXPECT_THAT(store_.ReadFile(At("none.kra"), SourceFate::kStays, buffer),
                FailsFor(Reason::kMissing));
    EXPECT_EQ(nullptr, buffer.bytes);
    EXPECT_EQ(0u, buffer.length);
}

TEST_P(StoreContractTest, FileThatIsToStayStays) {
    const std::string file = AddFile(At("a.kra"), "1");
    EXPECT_THAT(Write(file, "2", kRefuse), FailsFor(Reason::kExists));
    EXPECT_EQ("1", Bytes(file));
    EXPECT_THAT(Names(world_->Root()), ElementsAre("a.kra"));
}

TEST_P(StoreContractTest, FileIsNoFolder) {
    const std::string file = AddFile(At("a.kra"), "1");
    LeftOut left;
    std::vector<TreeItem> items;
    static_cast<void>(ListChildren(store_, file, items, left));
    EXPECT_THAT(items, IsEmpty());
    EXPECT_EQ(ItemKind::kFile, KindOf(file));
}

TEST_P(StoreContractTest, RefusedWriteLeavesTheOldContentsAndNoNewFile) {
    const std::string file = AddFile(At("a.kra"), "old bytes");
    world_->RefuseWrites();
    EXPECT_THAT(Write(file, "new bytes", kReplace), FailsFor(Reason::kRefused));
    EXPECT_EQ("old bytes", Bytes(file));
    EXPECT_THAT(Write(At("b.kra"), "new bytes", kRefuse), FailsFor(Reason::kRefused));
    EXPECT_THAT(Names(world_->Root()), ElementsAre("a.kra"));
}

TEST_P(StoreContractTest, TestOfWritingLeavesWhatIsThereAndNothingElse) {
    const std::string file = AddFile(At("a.kra"), "old bytes");
    const std::string folder = AddFolder(At("sub", true));
    for (const std::string& path : {file, folder, At("b.kra"), In(folder, "c.kra")}) {
        EXPECT_THAT(store_.TestWritable(path), IsDone()) << path;
    }
    EXPECT_EQ("old bytes", Bytes(file));
    EXPECT_THAT(Names(folder), IsEmpty());
    EXPECT_THAT(Names(world_->Root()), ElementsAre("a.kra", "sub\\"));
}

TEST_P(StoreContractTest, SourceIsAFileWithItsBytesOrAFolderWithItsChildren) {
    const std::string file = AddFile(At("a.kra"), "12");
    const std::string folder = AddFolder(At("sub", true));
    AddFile(In(folder, "b.kra"), "3");
    for (const SourceFate fate : {SourceFate::kStays, SourceFate::kGoes}) {
        StoreSource source, tree;
        EXPECT_THAT(store_.ReadSource(file, fate, source), IsDone());
        EXPECT_FALSE(source.isFolder);
        EXPECT_EQ(2u, source.contents.length);
        EXPECT_THAT(store_.ReadSource(folder, fate, tree), IsDone());
        EXPECT_TRUE(tree.isFolder);
        ASSERT_EQ(1u, tree.children.size());
        EXPECT_EQ("b.kra", tree.children.front().name);
        EXPECT_FALSE(tree.children.front().isFolder);
        StoreSource missing;
        EXPECT_THAT(store_.ReadSource(At("none.kra"), fate, missing), FailsFor(Reason::kMissing));
    }
}

TEST_P(StoreContractTest, FoldersAreMadeWithThoseAboveThem) {
    const std::string sub = At("sub", true), deep = In(sub, "deep", true);
    EXPECT_THAT(store_.MakeFolder(deep, FoldersAbove::kAreMade), IsDone());
    EXPECT_EQ(ItemKind::kFolder, KindOf(deep));
    AddFile(In(deep, "a.kra"), "1");
    for (const FoldersAbove above : {FoldersAbove::kExist, FoldersAbove::kAreMade}) {
        EXPECT_THAT(store_.MakeFolder(deep, above), IsDone());
    }
    EXPECT_THAT(Names(deep), ElementsAre("a.kra"));
}

TEST_P(StoreContractTest, FolderIsNotMadeWhereTheOneAboveItIsGone) {
    const std::string gone = At("gone", true);
    EXPECT_THAT(store_.MakeFolder(In(gone, "sub", true), FoldersAbove::kExist),
                FailsFor(Reason::kMissing));
    EXPECT_EQ(ItemKind::kMissing, KindOf(gone));
}

TEST_P(StoreContractTest, OnlyWhatHoldsNothingIsRemoved) {
    const std::string folder = AddFolder(At("sub", true));
    const std::string file = AddFile(In(folder, "a.kra"), "1");
    EXPECT_THAT(store_.Remove(folder, ItemKind::kFolder), FailsFor(Reason::kNotEmpty));
    EXPECT_EQ("1", Bytes(file));
    EXPECT_THAT(store_.Remove(file, ItemKind::kFile), IsDone());
    EXPECT_THAT(store_.Remove(folder, ItemKind::kFolder), IsDone());
    EXPECT_THAT(Names(world_->Root()), IsEmpty());
    EXPECT_THAT(store_.Remove(file, ItemKind::kFile), FailsFor(Reason::kMissing));
    EXPECT_THAT(store_.Remove(folder, ItemKind::kFolder), FailsFor(Reason::kMissing));
}

TEST_P(StoreContractTest, ChangedFileIsNotRemoved) {
    const std::string file = AddFile(At("a.kra"), "1");
    EXPECT_THAT(store_.RemoveUnchanged(file, DigestOf("2", 1)), FailsFor(Reason::kChanged));
    EXPECT_EQ("1", Bytes(file));
    EXPECT_THAT(store_.RemoveUnchanged(file, DigestOf("1", 1)), IsDone());
    EXPECT_EQ(ItemKind::kMissing, KindOf(file));
    EXPECT_THAT(store_.RemoveUnchanged(file, DigestOf("1", 1)), FailsFor(Reason::kMissing));
}

TEST_P(StoreContractTest, TreeIsRemovedWithAllBelowIt) {
    const std::string tree = AddFolder(At("tree", true));
    const std::string sub = AddFolder(In(tree, "sub", true));
    AddFile(In(tree, "a.kra"), "1");
    AddFile(In(sub, "b.kra"), "2");
    AddFile(At("c.kra"), "3");
    EXPECT_THAT(store_.RemoveTree(tree), IsDone());
    EXPECT_THAT(Names(world_->Root()), ElementsAre("c.kra"));
    EXPECT_THAT(store_.RemoveTree(At("c.kra")), IsDone());
    EXPECT_THAT(store_.RemoveTree(tree), FailsFor(Reason::kMissing));
}

TEST_P(StoreContractTest, FileIsRenamedAndMoved) {
    const std::string file = AddFile(At("a.kra"), "1");
    const std::string folder = AddFolder(At("sub", true));
    EXPECT_THAT(Rename(file, At("b.kra")), IsDone());
    EXPECT_THAT(Rename(At("b.kra"), In(folder, "c.kra")), IsDone());
    EXPECT_EQ("1", Bytes(In(folder, "c.kra")));
    EXPECT_THAT(Names(world_->Root()), ElementsAre("sub\\"));
    EXPECT_THAT(Rename(file, At("d.kra")), FailsFor(Reason::kMissing));
}

TEST_P(StoreContractTest, NameInOtherLettersIsANewName) {
    const std::string file = AddFile(At("a.kra"), "1");
    EXPECT_THAT(Rename(file, At("A.kra")), IsDone());
    // Some systems leave the old letters.
    EXPECT_THAT(Names(world_->Root()), testing::AnyOf(ElementsAre("A.kra"), ElementsAre("a.kra")));
    EXPECT_EQ("1", Bytes(file));
}

TEST_P(StoreContractTest, RenameReplacesNothing) {
    const std::string file = AddFile(At("a.kra"), "1");
    const std::string other = AddFile(At("b.kra"), "2");
    EXPECT_THAT(Rename(file, other), FailsFor(Reason::kExists));
    EXPECT_EQ("1", Bytes(file));
    EXPECT_EQ("2", Bytes(other));
}

// A store renames a folder, or says what it holds so that it can be copied.
TEST_P(StoreContractTest, FolderIsRenamedOrHandedOutToBeCopied) {
    const std::string folder = AddFolder(At("sub", true));
    AddFile(In(folder, "a.kra"), "1");
    const std::string to = At("other", true);
    StoreSource held;
    const Result renamed = store_.Rename({folder, to}, kRefuse, held);
    if (renamed) {
        EXPECT_EQ("1", Bytes(In(to, "a.kra")));
        EXPECT_EQ(ItemKind::kMissing, KindOf(folder));
        return;
    }
    EXPECT_THAT(renamed, FailsFor(Reason::kNotEmpty));
    EXPECT_TRUE(held.isFolder);
    ASSERT_EQ(1u, held.children.size());
    EXPECT_EQ("1", Bytes(In(folder, "a.kra")));
}

TEST_P(StoreContractTest, PreparationReportsWhatMayBeReplaced) {
    AddFile(At("a.kra"), "1");
    std::vector<PlannedItem> items = {
        {world_->Root(), true}, {At("a.kra"), false}, {At("sub", true), true}};
    EXPECT_THAT(Prepare(items, kReplace), IsDone());
    EXPECT_TRUE(items[1].mayReplace);
    EXPECT_FALSE(items[2].mayReplace);
    EXPECT_THAT(Prepare(items, kRefuse), FailsFor(Reason::kExists));
    EXPECT_EQ("1", Bytes(At("a.kra")));
}

TEST_P(StoreContractTest, PlacesThatAreOneAreNotPrepared) {
    std::vector<PlannedItem> items = {
        {world_->Root(), true}, {At("a.kra"), false}, {At("A.KRA"), false}};
    EXPECT_THAT(Prepare(items, kReplace),
                testing::AnyOf(FailsFor(Reason::kSharedName), FailsFor(Reason::kExists)));
}

TEST_P(StoreContractTest, PathsCompareWithoutRegardToLetterCase) {
    const std::string file = AddFile(At("a.kra"), "1");
    const std::string folder = AddFolder(At("sub", true));
    const std::string inside = AddFile(In(folder, "b.kra"), "2");
    EXPECT_TRUE(store_.IsSame(file, At("A.KRA")));
    EXPECT_FALSE(store_.IsSame(file, inside));
    EXPECT_TRUE(store_.IsInside(inside, At("SUB", true)));
    EXPECT_TRUE(store_.IsInside(inside, world_->Root()));
    EXPECT_FALSE(store_.IsInside(folder, folder));
    EXPECT_FALSE(store_.IsInside(world_->Root(), folder));
    const TakePath isUnique = store_.UniquePaths();
    EXPECT_TRUE(isUnique(file));
    EXPECT_TRUE(isUnique(folder));
    EXPECT_FALSE(isUnique(At("A.KRA")));
}

TEST_P(StoreContractTest, NamesThatAreNoneCannotBeHeld) {
    EXPECT_TRUE(store_.CanHold("a.kra"));
    for (const char* name : {"", ".", ".."}) EXPECT_FALSE(store_.CanHold(name)) << name;
    EXPECT_THAT(store_.CheckTarget(At("a.kra")), IsDone());
}

TEST_P(StoreContractTest, IdentifiersAreThoseOfTheItem) {
    const std::string file = AddFile(At("a.kra"), "1");
    const std::string other = AddFile(At("b.kra"), "1");
    ItemIdentifiers one, again, two;
    EXPECT_THAT(store_.ReadIdentifiers(file, one), IsDone());
    EXPECT_THAT(Rename(file, At("c.kra")), IsDone());
    EXPECT_THAT(store_.ReadIdentifiers(At("c.kra"), again), IsDone());
    EXPECT_THAT(store_.ReadIdentifiers(other, two), IsDone());
    EXPECT_EQ(one, again);
    EXPECT_TRUE(one == ItemIdentifiers() || one != two);
}

TEST_P(StoreContractTest, ScopeInsideAnotherLeavesTheStoreOpen) {
    const std::string file = AddFile(At("a.kra"), "1");
    {
        const StoreScope inner(store_);
        EXPECT_TRUE(inner);
    }
    EXPECT_EQ("1", Bytes(file));
}

TEST_P(StoreContractTest, StoreIsOpenedAgain) {
    const std::string file = AddFile(At("a.kra"), "1");
    open_.reset();
    open_ = std::make_unique<StoreScope>(store_);
    EXPECT_THAT(open_->Outcome(), IsDone());
    EXPECT_EQ("1", Bytes(file));
}

INSTANTIATE_TEST_SUITE_P(All, StoreContractTest, EveryStore(), StoreName);

}  // namespace
}  // namespace depot::test
