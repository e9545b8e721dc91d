#include "model/depot_items.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "support/record_rules.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kKey[] = "Software\\DepotTests\\Items";

static_assert(std::has_virtual_destructor_v<CDepotItems>);

class DepotItemsTest : public testing::Test {
protected:
    CDepotItem* Append(const std::string& path) {
        return items_.Append(std::make_unique<CDepotItem>(path, nullptr));
    }

    CDepotItems items_;
};

TEST_F(DepotItemsTest, NewListIsEmptyAndOwnsItsItems) {
    EXPECT_EQ(0u, items_.Count());
    EXPECT_TRUE(items_.ownsItems);
}

TEST_F(DepotItemsTest, VirtualOperationsStandInTheirOrder) {
    EXPECT_EQ(2u, test::VirtualSlot(&CDepotItems::AddPath));
    EXPECT_EQ(3u, test::VirtualSlot(&CDepotItems::Add));
    EXPECT_EQ(4u, test::VirtualSlot(&CDepotItems::Copy));
    EXPECT_EQ(5u, test::VirtualSlot(&CDepotItems::RemoveAll));
    EXPECT_EQ(6u, test::VirtualSlot(&CDepotItems::FindByName));
    EXPECT_EQ(7u, test::VirtualSlot(&CDepotItems::Remove));
}

// Appends ten items that need memory of their own.
void Fill(CDepotItems& items) {
    for (int count = 0; count < 10; ++count) {
        auto item = std::make_unique<CDepotItem>(std::string(100, 'x'), nullptr);
        item->findData = std::make_unique<WIN32_FIND_DATAA>();
        items.Append(std::move(item));
    }
}

TEST_F(DepotItemsTest, EveryItemIsDeletedInWhateverWayItLeaves) {
    EXPECT_EQ(
        0u, test::CountLeftovers([] {
            CDepotItems items;
            Fill(items);
            CDepotItems copies;
            copies.Copy(&items);
            copies.Add(items.At(0), true);
            copies.Remove(copies.At(3));
            copies.RemoveUnless([&](const CDepotItem& item) { return &item != copies.At(5); });
            items.RemoveAll(true);
            Fill(items);
        }));
}

TEST_F(DepotItemsTest, BorrowedItemsStayWithTheirOwner) {
    CDepotItem item("a", nullptr);
    {
        CDepotItems borrowing;
        borrowing.ownsItems = false;
        borrowing.Add(&item, false);
        borrowing.RemoveUnless([](const CDepotItem&) { return false; });
        EXPECT_EQ(0u, borrowing.Count());
        borrowing.Add(&item, false);
        borrowing.RemoveAll(false);
        borrowing.Add(&item, false);
    }
    EXPECT_EQ("a", item.path);
}

TEST_F(DepotItemsTest, WithoutMemoryItemsAreDroppedAndNothingIsLeft) {
    CDepotItems source;
    Fill(source);
    test::ExpectNoFailureThrows([&] {
        CDepotItems copies;
        copies.Copy(&source);
        EXPECT_EQ(test::FailingMemory::RanOut() ? 9u : 10u, copies.Count());
    });
}

TEST_F(DepotItemsTest, AddTakesTheItemItselfOrAClone) {
    CDepotItem item("a", nullptr);
    CDepotItems borrowing;
    borrowing.ownsItems = false;
    borrowing.Add(&item, false);
    EXPECT_EQ(&item, borrowing.At(0));
    items_.Add(&item, true);
    ASSERT_EQ(1u, items_.Count());
    EXPECT_NE(&item, items_.At(0));
    EXPECT_EQ("a", items_.At(0)->path);
    items_.Add(nullptr, true);
    EXPECT_EQ(1u, items_.Count());
}

TEST_F(DepotItemsTest, CopyAppendsClonesInOrder) {
    Append("a");
    CDepotItems other;
    other.Append(std::make_unique<CDepotItem>("0", nullptr));
    Append("b");
    other.Copy(&items_);
    other.Copy(nullptr);
    ASSERT_EQ(3u, other.Count());
    EXPECT_EQ("a", other.At(1)->path);
    EXPECT_EQ("b", other.At(2)->path);
    EXPECT_NE(items_.At(0), other.At(1));
}

TEST_F(DepotItemsTest, FindByNameIgnoresTheLetterCaseAndTakesTheFirst) {
    CDepotItem* const first = Append("<Work>\\A.kra");
    Append("<work>\\a.KRA");
    EXPECT_EQ(first, items_.FindByName("<WORK>\\a.kra"));
    EXPECT_EQ(nullptr, items_.FindByName("<Work>\\a"));
    EXPECT_EQ(nullptr, items_.FindByName(""));
    EXPECT_EQ(nullptr, CDepotItems().FindByName("a"));
}

TEST_F(DepotItemsTest, RemoveTakesTheItemOutAndRemoveAllEmptiesTheList) {
    CDepotItem* const first = Append("a");
    Append("b");
    items_.Remove(first);
    items_.Remove(nullptr);
    ASSERT_EQ(1u, items_.Count());
    EXPECT_EQ("b", items_.At(0)->path);
    items_.Remove(std::make_unique<CDepotItem>("foreign", nullptr).release());
    EXPECT_EQ(1u, items_.Count());
    items_.RemoveAll(true);
    EXPECT_EQ(0u, items_.Count());
}

TEST_F(DepotItemsTest, AddPathResolvesAmongTheGivenDepots) {
    CDepots depots;
    const CDepots* asked = nullptr;
    CDepotItem* const item = items_.AddPath(
        "a", &depots, kKey, [&](CDepots& list, const std::string& path, CDepotItem& filled) {
            asked = &list;
            filled.path = "resolved " + path;
        });
    EXPECT_EQ(&depots, asked);
    ASSERT_EQ(1u, items_.Count());
    EXPECT_EQ(item, items_.At(0));
    EXPECT_EQ("resolved a", item->path);
}

TEST_F(DepotItemsTest, AddPathWithoutDepotsLoadsAListOnceAndKeepsIt) {
    const test::ScratchKey key(HKEY_CURRENT_USER, kKey);
    key.Text("Work", "Path1", "C:\\work");
    std::vector<const CDepots*> asked;
    const auto resolve = [&](CDepots& list, const std::string&, CDepotItem& item) {
        asked.push_back(&list);
        item.depot = list.At(0);
    };
    items_.AddPath("a", nullptr, kKey, resolve);
    items_.AddPath("b", nullptr, kKey, resolve);
    ASSERT_EQ(2u, asked.size());
    EXPECT_EQ(asked[0], asked[1]);
    EXPECT_EQ("Work", items_.At(1)->depot->name);
}

}  // namespace
}  // namespace depot
