// Depots whose roots and names are unusual: conversions are plain replacements all the same.
#include <gtest/gtest.h>

#include "manager/depot_file_context.h"
#include "manager/depot_world.h"
#include "manager/display_path.h"
#include "manager/resolve_item.h"
#include "model/depot_item.h"

namespace depot {
namespace {

class StrangeRootsTest : public testing::Test {
protected:
    CDepot& Depot(const std::string& root) {
        world_ = std::make_unique<test::DepotWorld>();
        return world_->AddAt("Work", "Travail", root);
    }

    std::unique_ptr<test::DepotWorld> world_;
};

TEST_F(StrangeRootsTest, EveryRootIsPutBeforeTheRelativePath) {
    struct Row {
        const char* root;
        const char* storage;
    };
    const Row rows[] = {
        {"rel\\dir", "rel\\dir\\sub\\a.kra"},
        {".", ".\\sub\\a.kra"},
        {"..\\up\\", "..\\up\\sub\\a.kra"},
        {"C:\\", "C:\\sub\\a.kra"},
        {"C:", "C:\\sub\\a.kra"},
        {"\\\\server\\share", "\\\\server\\share\\sub\\a.kra"},
        {"\\\\server\\share\\", "\\\\server\\share\\sub\\a.kra"},
        {"C:\\x\\\\", "C:\\x\\\\sub\\a.kra"},
        {"C:/x", "C:/x\\sub\\a.kra"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.root);
        CDepot& depot = Depot(row.root);
        EXPECT_EQ(row.storage, DisplayToStorage(depot, "<Work>\\sub\\a.kra"));
        EXPECT_EQ("<Work>\\sub\\a.kra", StorageToDisplay(depot, row.storage));
        EXPECT_EQ(&depot, FindDepotForPath(world_->depots, row.storage, PathForm::kStorage,
                                           DepotName::kKey));
    }
}

TEST_F(StrangeRootsTest, EmptyRootLeavesTheRelativePathAloneAndHoldsNoStoragePath) {
    CDepot& depot = Depot("");
    EXPECT_EQ("sub\\a.kra", DisplayToStorage(depot, "<Work>\\sub\\a.kra"));
    EXPECT_EQ("sub\\a.kra", StorageToDisplay(depot, "sub\\a.kra"));
    EXPECT_EQ(nullptr,
              FindDepotForPath(world_->depots, "sub\\a.kra", PathForm::kStorage, DepotName::kKey));
    EXPECT_EQ(&depot,
              FindDepotForPath(world_->depots, "<Work>\\a", PathForm::kDisplay, DepotName::kKey));
}

// Every occurrence of the root is replaced, and here each separator is one.
TEST_F(StrangeRootsTest, RootThatIsASeparatorTakesEverySeparator) {
    CDepot& depot = Depot("\\");
    EXPECT_EQ("\\sub\\a.kra", DisplayToStorage(depot, "<Work>\\sub\\a.kra"));
    EXPECT_EQ("<Work>\\sub<Work>\\a.kra", StorageToDisplay(depot, "\\sub\\a.kra"));
}

TEST_F(StrangeRootsTest, RootWithTwoBackslashesHoldsOnlyPathsThatHaveBoth) {
    CDepot& depot = Depot("C:\\x\\\\");
    EXPECT_EQ("C:\\x\\a.kra", StorageToDisplay(depot, "C:\\x\\a.kra"));
    EXPECT_EQ("<Work>\\a.kra", StorageToDisplay(depot, "C:\\x\\\\a.kra"));
}

TEST_F(StrangeRootsTest, DriveRootHoldsEveryPathOfItsDrive) {
    Depot("C:\\");
    CDepotItem item;
    ResolveItem(world_->depots, "c:\\windows\\win.ini", item);
    EXPECT_EQ("<Work>\\windows\\win.ini", item.path);
}

TEST_F(StrangeRootsTest, UnreachableShareGivesAFileWithoutValues) {
    Depot("\\\\127.0.0.1\\no-such-share");
    const DepotFileContext file("<Work>\\a.kra", world_->depots);
    EXPECT_EQ("\\\\127.0.0.1\\no-such-share\\a.kra", file.localPath);
    EXPECT_EQ("default", file.ReadString("S", "K", "default", 100));
}

// Depots whose keys are parts of each other.
class NestedKeysTest : public testing::Test {
protected:
    void ExpectHolds(CDepot& depot, const std::string& path, const std::string& storage) {
        SCOPED_TRACE(path);
        EXPECT_EQ(&depot,
                  FindDepotForPath(world_.depots, path, PathForm::kDisplay, DepotName::kKey));
        CDepotItem item;
        ResolveItem(world_.depots, path, item);
        EXPECT_EQ(&depot, item.depot);
        EXPECT_EQ(path, item.path);
        EXPECT_EQ(world_.folder.At(storage), DisplayToStorage(depot, path));
        EXPECT_EQ(path, StorageToDisplay(depot, world_.folder.At(storage)));
    }

    test::DepotWorld world_;
    CDepot& a_ = world_.Add("A", "One", "a");
    CDepot& ab_ = world_.Add("AB", "Two", "ab");
    CDepot& bracketed_ = world_.Add("<A>", "Three", "bracketed");
    CDepot& behind_ = world_.Add("B<A>", "Four", "behind");
    CDepot& before_ = world_.Add("<A>B", "Five", "before");
};

TEST_F(NestedKeysTest, EachKeyFindsItsOwnDepot) {
    ExpectHolds(a_, "<A>\\x.kra", "a\\x.kra");
    ExpectHolds(ab_, "<AB>\\x.kra", "ab\\x.kra");
    ExpectHolds(bracketed_, "<<A>>\\x.kra", "bracketed\\x.kra");
    ExpectHolds(behind_, "<B<A>>\\x.kra", "behind\\x.kra");
    ExpectHolds(before_, "<<A>B>\\x.kra", "before\\x.kra");
}

TEST_F(NestedKeysTest, AnotherDepotsPrefixInsideAPathIsAFolderName) {
    ExpectHolds(ab_, "<AB>\\<A>\\x.kra", "ab\\<A>\\x.kra");
    ExpectHolds(a_, "<A>\\<AB>\\x.kra", "a\\<AB>\\x.kra");
}

TEST_F(NestedKeysTest, OwnPrefixInsideAPathIsReplacedAsWell) {
    EXPECT_EQ(world_.folder.At("a\\sub\\") + world_.folder.At("a\\x.kra"),
              DisplayToStorage(a_, "<A>\\sub\\<a>\\x.kra"));
}

TEST_F(NestedKeysTest, PartOfAKeyFindsNoDepot) {
    for (const char* path : {"<>\\x", "<B>\\x", "<ABC>\\x", "<A\\x", "A>\\x", "<<A>\\x"}) {
        EXPECT_EQ(nullptr,
                  FindDepotForPath(world_.depots, path, PathForm::kDisplay, DepotName::kKey))
            << path;
    }
}

TEST_F(NestedKeysTest, RootInsideAnotherRootBelongsToTheFirstDepotThatHoldsIt) {
    CDepot& inner = world_.AddAt("Inner", "Six", world_.folder.At("a\\inner"));
    const std::string path = world_.folder.At("a\\inner\\x.kra");
    EXPECT_EQ(&a_, FindDepotForPath(world_.depots, path, PathForm::kStorage, DepotName::kKey));
    EXPECT_EQ("<Inner>\\x.kra", StorageToDisplay(inner, path));
    // A root that only begins alike is another folder.
    EXPECT_EQ(&ab_, FindDepotForPath(world_.depots, world_.folder.At("ab\\x"), PathForm::kStorage,
                                     DepotName::kKey));
}

}  // namespace
}  // namespace depot
