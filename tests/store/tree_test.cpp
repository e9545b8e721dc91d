// The walk over a tree, and its bounds.
#include "store/tree.h"

#include "store/store_worlds.h"
#include "support/memory_store.h"

namespace depot::test {
namespace {

class TreeTest : public StoreTest {
protected:
    TreeTest() {
        AddFile(In(tree_, "a.kra"), "1");
        const std::string sub = AddFolder(In(tree_, "sub", true));
        AddFile(In(sub, "b.kra"), "2");
        AddFolder(In(sub, "deep", true));
    }
    // Name and depth of each item, and the name of the folder that holds it.
    static std::vector<std::string> Lines(const Tree& tree) {
        std::vector<std::string> lines;
        for (const TreeItem& item : tree.items) {
            lines.push_back(std::to_string(item.depth) + " " + tree.items[item.parent].name + "\\" +
                            item.name + (item.isFolder ? "\\" : ""));
        }
        return lines;
    }

    const std::string tree_ = AddFolder(At("tree", true));
};

TEST_P(TreeTest, WalkFindsEveryFolderBeforeWhatItHolds) {
    Tree tree;
    EXPECT_THAT(ListTree(store_, tree_, tree), IsDone());
    EXPECT_THAT(Lines(tree), testing::UnorderedElementsAre("0 \\\\", "1 \\a.kra", "1 \\sub\\",
                                                           "2 sub\\b.kra", "2 sub\\deep\\"));
    for (std::size_t index = 1; index < tree.items.size(); ++index) {
        EXPECT_LT(tree.items[index].parent, index);
    }
    EXPECT_EQ(2u, tree.files);
    EXPECT_TRUE(tree.left.IsNothing());
}

TEST_P(TreeTest, ChildrenThatAreKnownAreNotListedAgain) {
    StoreSource source;
    EXPECT_THAT(store_.ReadSource(tree_, SourceFate::kStays, source), IsDone());
    source.left.unsafeNames = 7;
    AddFile(In(tree_, "late.kra"), "3");
    Tree tree;
    EXPECT_THAT(ListTree(store_, tree_, tree, {&source}), IsDone());
    EXPECT_EQ(5u, tree.items.size());
    EXPECT_EQ(7u, tree.left.unsafeNames);
}

TEST_P(TreeTest, WhatIsLeftOutIsCounted) {
    const LeftOut expected = world_->AddWhatIsLeftOut();
    Tree tree;
    EXPECT_THAT(ListTree(store_, world_->Root(), tree), IsDone());
    EXPECT_EQ(expected.links, tree.left.links);
    EXPECT_EQ(expected.unsafeNames, tree.left.unsafeNames);
}

INSTANTIATE_TEST_SUITE_P(All, TreeTest, EveryStore(), StoreName);

TEST(TreeBoundsTest, TreeThatPassesABoundFails) {
    MemoryStore store;
    const StoreScope scope(store);
    ASSERT_THAT(store.MakeFolder("root\\a\\b\\c", FoldersAbove::kAreMade), IsDone());
    const TreeBounds bounds = store.bounds;
    Tree tree;
    for (const auto& change : std::initializer_list<void (*)(TreeBounds&)>{
             [](TreeBounds& changed) { changed.depth = 2; },
             [](TreeBounds& changed) { changed.entries = 2; },
             [](TreeBounds& changed) { changed.nameBytes = 20; },
             [](TreeBounds& changed) { changed.longestName = 5; }}) {
        store.bounds = bounds;
        change(store.bounds);
        const Result listed = ListTree(store, MemoryStore::kRoot, tree);
        ASSERT_FALSE(listed);
        EXPECT_EQ(std::uint32_t{LDAP_SIZELIMIT_EXCEEDED}, listed.Why().code);
    }
    store.bounds = bounds;
    store.bounds.depth = 3;
    EXPECT_THAT(ListTree(store, MemoryStore::kRoot, tree), IsDone());
}

}  // namespace
}  // namespace depot::test
