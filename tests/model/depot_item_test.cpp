#include "model/depot_item.h"

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "support/record_rules.h"

namespace depot {
namespace {

// Only its list ever destroys an item.
static_assert(std::is_polymorphic_v<CDepotItem> && !std::has_virtual_destructor_v<CDepotItem>);

CDepot* const kDepot = reinterpret_cast<CDepot*>(0x1000);

CDepotItem MakeItem(DWORD size) {
    CDepotItem item("<Work>\\a.kra", kDepot);
    item.fileType = 64;
    item.kindFlags = 5;
    item.findData = std::make_unique<WIN32_FIND_DATAA>();
    item.findData->nFileSizeLow = size;
    std::strcpy(item.findData->cFileName, "a.kra");
    return item;
}

TEST(DepotItemTest, NewItemIsEmpty) {
    const CDepotItem item;
    EXPECT_EQ("", item.path);
    EXPECT_EQ(nullptr, item.depot);
    EXPECT_EQ(0u, item.fileType);
    EXPECT_EQ(0u, item.kindFlags);
    EXPECT_FALSE(item.findData);
}

TEST(DepotItemTest, FindRecordIsTheSystemsOf320Bytes) {
    EXPECT_EQ(320u, sizeof(*CDepotItem().findData));
}

TEST(DepotItemTest, CloneHasAFindRecordOfItsOwn) {
    const CDepotItem item = MakeItem(11);
    const std::unique_ptr<CDepotItem> clone = item.Clone();
    ASSERT_TRUE(clone);
    EXPECT_EQ("<Work>\\a.kra", clone->path);
    EXPECT_EQ(kDepot, clone->depot);
    EXPECT_EQ(64u, clone->fileType);
    EXPECT_EQ(5u, clone->kindFlags);
    ASSERT_TRUE(clone->findData);
    EXPECT_NE(item.findData, clone->findData);
    EXPECT_EQ(0, std::memcmp(item.findData.get(), clone->findData.get(), sizeof(*item.findData)));
}

TEST(DepotItemTest, VirtualOperationsStandInTheirOrder) {
    EXPECT_EQ(0u, test::VirtualSlot(&CDepotItem::Clone));
    EXPECT_EQ(1u, test::VirtualSlot(&CDepotItem::CopyFrom));
}

TEST(DepotItemTest, CloneWithoutMemoryIsNull) {
    CDepotItem item = MakeItem(11);
    item.path = std::string(100, 'x');
    test::ExpectNullCloneWithoutMemory(item);
}

TEST(DepotItemTest, CopyFromGivesATargetWithoutAFindRecordOne) {
    const CDepotItem source = MakeItem(11);
    CDepotItem target;
    target.CopyFrom(&source);
    ASSERT_TRUE(target.findData);
    EXPECT_NE(source.findData, target.findData);
    EXPECT_STREQ("a.kra", target.findData->cFileName);
}

TEST(DepotItemTest, CopyFromFillsTheTargetsOwnFindRecord) {
    const CDepotItem source = MakeItem(11);
    CDepotItem target = MakeItem(22);
    const WIN32_FIND_DATAA* const record = target.findData.get();
    target.CopyFrom(&source);
    EXPECT_EQ(record, target.findData.get());
    EXPECT_EQ(11u, target.findData->nFileSizeLow);
}

TEST(DepotItemTest, SourceWithoutAFindRecordLeavesTheTargetsRecord) {
    const CDepotItem source("<Home>\\b", nullptr);
    CDepotItem target = MakeItem(22);
    target.CopyFrom(&source);
    EXPECT_EQ("<Home>\\b", target.path);
    EXPECT_EQ(nullptr, target.depot);
    EXPECT_EQ(0u, target.fileType);
    EXPECT_EQ(0u, target.kindFlags);
    ASSERT_TRUE(target.findData);
    EXPECT_EQ(22u, target.findData->nFileSizeLow);
}

TEST(DepotItemTest, CopyFromNullOrItselfChangesNothing) {
    CDepotItem item = MakeItem(22);
    item.CopyFrom(nullptr);
    item.CopyFrom(&item);
    EXPECT_EQ("<Work>\\a.kra", item.path);
    EXPECT_EQ(kDepot, item.depot);
    EXPECT_EQ(22u, item.findData->nFileSizeLow);
}

}  // namespace
}  // namespace depot
