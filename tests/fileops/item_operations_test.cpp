#include "fileops/item_operations.h"

#include <gtest/gtest.h>

#include "fileops/depot_file.h"
#include "manager/depot_world.h"
#include "support/box_log.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Exists;
using test::Fails;
using test::FileBytes;
using test::IsDone;

constexpr char kJunk[] = "junk";

class ItemOperationsTest : public testing::Test {
protected:
    std::string At(const std::string& name) const { return world_.folder.At(name); }
    std::string Make(const std::string& name, const std::string& bytes) {
        return world_.folder.MakeFile(name, bytes);
    }
    int OnItem(const char* source, const CDepotItem* target, UINT operation) {
        return ItemOperation(CDepotItem(source, &work_), target, operation, nullptr, &error_);
    }
    int OnList(std::initializer_list<const char*> sources, const CDepotItem* target,
               UINT operation) {
        CDepotItems items;
        for (const char* source : sources) {
            items.Append(std::make_unique<CDepotItem>(source, &work_));
        }
        return ListOperation(items, target, operation, kQuietFlags, nullptr, &error_);
    }

    test::DepotWorld world_;
    CDepot& work_ = world_.Add("Work", "Work", "w");
    CDepot& home_ = world_.Add("Home", "Home", "h");
    const CDepotItem target_{"<Home>\\b.kra", &home_};
    std::string error_ = kJunk;
    const test::BoxLog boxes_;
};

TEST_F(ItemOperationsTest, CopyingAnItemKeepsTheSource) {
    Make("w\\a.kra", "1");
    EXPECT_THAT(OnItem("<Work>\\a.kra", &target_, FO_COPY), IsDone());
    EXPECT_EQ("1", FileBytes(At("h\\b.kra")));
    EXPECT_TRUE(Exists(At("w\\a.kra")));
}

TEST_F(ItemOperationsTest, ExistingTargetIsAFailureThatLeavesTheErrorTextAlone) {
    Make("w\\a.kra", "1");
    Make("h\\b.kra", "old");
    for (const UINT operation : {FO_COPY, FO_MOVE}) {
        EXPECT_THAT(OnItem("<Work>\\a.kra", &target_, operation), Fails());
        EXPECT_EQ("old", FileBytes(At("h\\b.kra")));
        EXPECT_TRUE(Exists(At("w\\a.kra")));
        EXPECT_EQ(kJunk, error_);
    }
}

TEST_F(ItemOperationsTest, MovingAnItemRemovesTheSource) {
    Make("w\\a.kra", "1");
    EXPECT_THAT(OnItem("<Work>\\a.kra", &target_, FO_MOVE), IsDone());
    EXPECT_EQ("1", FileBytes(At("h\\b.kra")));
    EXPECT_FALSE(Exists(At("w\\a.kra")));
}

TEST_F(ItemOperationsTest, MoveWhoseDeleteFailsStillSucceeds) {
    const std::string source = Make("w\\a.kra", "1");
    const HANDLE reader = CreateFileA(source.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, reader);
    EXPECT_THAT(OnItem("<Work>\\a.kra", &target_, FO_MOVE), IsDone());
    CloseHandle(reader);
    EXPECT_TRUE(Exists(source));
    EXPECT_EQ("1", FileBytes(At("h\\b.kra")));
}

TEST_F(ItemOperationsTest, DeletingAnItemNeedsNoTarget) {
    Make("w\\a.kra", "1");
    EXPECT_THAT(OnItem("<Work>\\a.kra", nullptr, FO_DELETE), IsDone());
    EXPECT_FALSE(Exists(At("w\\a.kra")));
    EXPECT_THAT(OnItem("<Work>\\a.kra", nullptr, FO_DELETE), Fails());
}

TEST_F(ItemOperationsTest, AnyOtherOperationIsRefused) {
    Make("w\\a.kra", "1");
    for (const UINT operation : {0u, static_cast<UINT>(FO_RENAME), 5u}) {
        EXPECT_THAT(OnItem("<Work>\\a.kra", &target_, operation), Fails());
    }
    EXPECT_TRUE(Exists(At("w\\a.kra")));
    EXPECT_FALSE(Exists(At("h\\b.kra")));
}

TEST_F(ItemOperationsTest, WithoutADepotOrATargetNothingIsDone) {
    const std::string source = Make("w\\a.kra", "1");
    const CDepotItem homeless(source, nullptr);
    const CDepotItem nowhere("", &home_);
    EXPECT_THAT(CopyItem(homeless, &target_, true, nullptr), Fails());
    EXPECT_THAT(DeleteItem(homeless), Fails());
    EXPECT_THAT(OnItem("<Work>\\a.kra", nullptr, FO_COPY), Fails());
    EXPECT_THAT(OnItem("<Work>\\a.kra", &nowhere, FO_COPY), Fails());
    EXPECT_THAT(OnItem("<Work>\\a.kra", nullptr, FO_MOVE), Fails());
    EXPECT_TRUE(Exists(source));
}

TEST_F(ItemOperationsTest, CopyIntoAFolderKeepsItsName) {
    Make("w\\a.kra", "1");
    const CDepotItem folder("<Home>\\", &home_);
    EXPECT_THAT(OnItem("<Work>\\a.kra", &folder, FO_COPY), IsDone());
    EXPECT_EQ("1", FileBytes(At("h\\a.kra")));
}

TEST_F(ItemOperationsTest, ListIsCopiedIntoAFolder) {
    Make("w\\a.kra", "1");
    Make("w\\b.kra", "2");
    const CDepotItem folder("<Home>\\", &home_);
    EXPECT_THAT(OnList({"<Work>\\a.kra", "<Work>\\b.kra"}, &folder, FO_COPY), IsDone());
    EXPECT_EQ("1", FileBytes(At("h\\a.kra")));
    EXPECT_EQ("2", FileBytes(At("h\\b.kra")));
    EXPECT_EQ(kJunk, error_);
}

TEST_F(ItemOperationsTest, ListIsDeleted) {
    Make("w\\a.kra", "1");
    world_.folder.MakeFolder("w\\sub");
    EXPECT_THAT(OnList({"<Work>\\a.kra", "<Work>\\sub"}, nullptr, FO_DELETE), IsDone());
    EXPECT_FALSE(Exists(At("w\\a.kra")));
    EXPECT_FALSE(Exists(At("w\\sub")));
}

TEST_F(ItemOperationsTest, DeletionOfAListPaysNoRegardToATarget) {
    CDepot& directory = world_.AddAt("Dir", "Dir", "dc=farrow", kDirectoryLocation);
    const CDepotItem targets[] = {{"<Work>\\sub", &work_},
                                  {"<Work>\\sub\\a.kra", &work_},
                                  {"<Work>\\sub\\a.kra\\below", &work_},
                                  {"", &work_},
                                  {"<Work>\\" + std::string(300, 'x'), &work_}};
    world_.folder.MakeFolder("w\\sub");
    for (const CDepotItem& target : targets) {
        SCOPED_TRACE(target.path.substr(0, 40));
        Make("w\\sub\\a.kra", "1");
        EXPECT_THAT(OnList({"<Work>\\sub\\a.kra"}, &target, FO_DELETE), IsDone());
        EXPECT_FALSE(Exists(At("w\\sub\\a.kra")));
    }
    Make("w\\sub\\a.kra", "1");
    const CDepotItem entry("<Dir>\\sub", &directory);
    CDepotItems items;
    items.Append(std::make_unique<CDepotItem>("<Work>\\sub", &work_));
    EXPECT_THAT(ShellOperation(items, &entry, FO_DELETE, kQuietFlags, nullptr, &error_), IsDone());
    EXPECT_FALSE(Exists(At("w\\sub")));
    EXPECT_EQ(kJunk, error_);
}

TEST_F(ItemOperationsTest, ItemWithoutADepotIsNamedByItsPath) {
    const std::string source = Make("plain.kra", "1");
    CDepotItems items;
    items.Append(std::make_unique<CDepotItem>(source, nullptr));
    EXPECT_THAT(ShellOperation(items, &target_, FO_COPY, kQuietFlags, nullptr, &error_), IsDone());
    EXPECT_EQ("1", FileBytes(At("h\\b.kra")));
}

TEST_F(ItemOperationsTest, EmptyListSucceeds) {
    EXPECT_THAT(OnList({}, &target_, FO_COPY), IsDone());
    EXPECT_THAT(OnList({}, nullptr, FO_DELETE), IsDone());
}

TEST_F(ItemOperationsTest, ListWithAnEmptyTargetFailsAndReportsWhy) {
    Make("w\\only-here.kra", "1");
    const CDepotItem nowhere;
    EXPECT_THAT(OnList({"<Work>\\only-here.kra"}, &nowhere, FO_COPY), Fails());
    EXPECT_FALSE(Exists("only-here.kra"));
    EXPECT_NE(kJunk, error_);
}

TEST_F(ItemOperationsTest, ListWithAMissingSourceFails) {
    EXPECT_THAT(OnList({"<Work>\\none.kra"}, nullptr, FO_DELETE), Fails());
}

TEST_F(ItemOperationsTest, FolderMovesIntoItselfThroughNoDepot) {
    world_.folder.MakeFolder("w\\tree\\sub");
    Make("w\\tree\\a.kra", "1");
    CDepot& same = world_.AddAt("Same", "Same", At("h\\..\\w"));
    for (const char* path :
         {"<Same>\\tree\\sub", "<Same>\\tree\\new", "<Same>\\tree", "<Same>\\"}) {
        SCOPED_TRACE(path);
        const CDepotItem target(path, &same);
        for (const UINT operation : {FO_COPY, FO_MOVE}) {
            EXPECT_THAT(OnList({"<Work>\\tree"}, &target, operation), Fails());
        }
    }
    EXPECT_EQ("1", FileBytes(At("w\\tree\\a.kra")));
    EXPECT_FALSE(Exists(At("w\\tree\\new")));
    EXPECT_FALSE(Exists(At("w\\tree\\tree")));
    EXPECT_FALSE(Exists(At("w\\tree\\sub\\tree")));
}

TEST_F(ItemOperationsTest, RootOfADepotStaysWhereItIs) {
    Make("w\\a.kra", "1");
    const CDepotItem target("<Home>\\out", &home_);
    for (const std::string& path :
         {std::string("<Work>\\"), std::string("<WORK>\\"), std::string("<Work>\\."), At("w"),
          At("w\\"), world_.folder.Path()}) {
        SCOPED_TRACE(path);
        error_ = kJunk;
        EXPECT_THAT(OnList({path.c_str()}, nullptr, FO_DELETE), Fails());
        EXPECT_NE(kJunk, error_);
        EXPECT_THAT(OnList({path.c_str()}, &target, FO_MOVE), Fails());
        EXPECT_THAT(OnItem(path.c_str(), &target, FO_MOVE), Fails());
        EXPECT_THAT(MoveFile(work_, path, At("renamed"), nullptr, nullptr, nullptr), Fails());
    }
    EXPECT_EQ("1", FileBytes(At("w\\a.kra")));
    EXPECT_FALSE(Exists(At("h\\out")));
    EXPECT_FALSE(Exists(At("renamed")));
}

TEST_F(ItemOperationsTest, FilesOfARootAreCopiedWithIt) {
    Make("w\\a.kra", "1");
    const CDepotItem target("<Home>\\out", &home_);
    EXPECT_THAT(OnList({"<Work>\\"}, &target, FO_COPY), IsDone());
    EXPECT_TRUE(Exists(At("h\\out")));
}

}  // namespace
}  // namespace depot
