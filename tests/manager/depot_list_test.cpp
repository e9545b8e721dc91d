#include "manager/depot_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "manager/depot_world.h"

namespace depot {
namespace {

using testing::ElementsAre;

constexpr char kKey[] = "Software\\DepotTests\\DepotList";

std::vector<CDepot*> Elements(const CDepots& depots) {
    return std::vector<CDepot*>(depots.begin(), depots.end());
}

class FilteredViewTest : public testing::Test {
protected:
    FilteredViewTest() {
        first_.contains = 0;
        second_.contains = 6;
        third_.contains = 0x80000001;
        depots_.defaultDepot = &second_;
    }

    test::DepotWorld world_;
    CDepots& depots_ = world_.depots;
    CDepot& first_ = world_.AddAt("First", "First", "C:\\1");
    CDepot& second_ = world_.AddAt("Second", "Second", "C:\\2");
    CDepot& third_ = world_.AddAt("Third", "Third", "C:\\3");
};

TEST(LoadDepotListTest, KeyIsTheSameInBothHives) {
    EXPECT_STREQ("Software\\Quillon\\Farrow\\Depots", kDepotsKey);
}

TEST(LoadDepotListTest, EmptyKeyPathLeavesAnEmptyListThatBorrows) {
    CDepots depots;
    LoadDepotList(depots, "");
    EXPECT_EQ(0u, depots.Count());
    EXPECT_FALSE(depots.ownsItems);
}

TEST(LoadDepotListTest, DepotsBelowTheKeyAreLoadedAndOwned) {
    const test::ScratchKey key(HKEY_CURRENT_USER, kKey);
    key.Text("Work", "Path1", "C:\\work");
    CDepots depots;
    LoadDepotList(depots, kKey);
    LoadDepotList(depots, kKey);
    ASSERT_EQ(1u, depots.Count());
    EXPECT_EQ("Work", depots.At(0)->name);
    EXPECT_TRUE(depots.ownsItems);
    EXPECT_EQ(kKey, depots.keyPath);
}

TEST_F(FilteredViewTest, MaskOfZeroTakesEveryDepot) {
    const CDepots& view = GetFilteredView(depots_, 0, true);
    EXPECT_THAT(Elements(view), ElementsAre(&first_, &second_, &third_));
    EXPECT_FALSE(view.ownsItems);
}

TEST_F(FilteredViewTest, DepotThatSharesABitWithTheMaskIsLeftOut) {
    EXPECT_THAT(Elements(GetFilteredView(depots_, 2, true)), ElementsAre(&first_, &third_));
    EXPECT_THAT(Elements(GetFilteredView(depots_, 0x80000000, true)),
                ElementsAre(&first_, &second_));
    EXPECT_THAT(Elements(GetFilteredView(depots_, 8, true)),
                ElementsAre(&first_, &second_, &third_));
    EXPECT_THAT(Elements(GetFilteredView(depots_, 0xFFFFFFFF, true)), ElementsAre(&first_));
}

TEST_F(FilteredViewTest, ViewIsBuiltOnceAndThenOnlyWhenAsked) {
    EXPECT_THAT(Elements(GetFilteredView(depots_, 2, false)), ElementsAre(&first_, &third_));
    EXPECT_THAT(Elements(GetFilteredView(depots_, 0, false)), ElementsAre(&first_, &third_));
    EXPECT_EQ(&GetFilteredView(depots_, 0, true), &GetFilteredView(depots_, 2, false));
    EXPECT_EQ(3u, GetFilteredView(depots_, 2, false).Count());
}

TEST_F(FilteredViewTest, RemovingADepotTakesItAloneOutOfTheView) {
    GetFilteredView(depots_, 0, true);
    depots_.Remove(nullptr);
    depots_.Remove(&first_);
    EXPECT_THAT(Elements(GetFilteredView(depots_, 0, false)), ElementsAre(&second_, &third_));
}

TEST_F(FilteredViewTest, DefaultDepotIsTheListsOwnWhenTheMaskLeavesItIn) {
    EXPECT_EQ(&second_, GetDefaultDepot(depots_, 0));
    EXPECT_EQ(&second_, GetDefaultDepot(depots_, 1));
}

TEST_F(FilteredViewTest, WithoutTheListsOwnTheFirstOfTheViewIsTheDefault) {
    EXPECT_EQ(&first_, GetDefaultDepot(depots_, 4));
    first_.contains = 4;
    EXPECT_EQ(&third_, GetDefaultDepot(depots_, 4));
}

TEST_F(FilteredViewTest, MaskThatLeavesOutEveryDepotGivesNoDefault) {
    first_.contains = 1;
    EXPECT_EQ(nullptr, GetDefaultDepot(depots_, 0xFFFFFFFF));
    EXPECT_EQ(&second_, GetDefaultDepot(depots_, 0));
    CDepots empty;
    EXPECT_EQ(nullptr, GetDefaultDepot(empty, 0));
}

}  // namespace
}  // namespace depot
