// The order of the depots in their list, and which one is the default.
#include <algorithm>

#include "model/depots_fixture.h"
#include "support/random_text.h"

namespace depot {
namespace {

using test::Names;
using testing::ElementsAre;

using DepotsOrderTest = test::DepotsFixture;
using ListOrderTest = test::DepotListFixture;

TEST_F(DepotsOrderTest, DepotsWithAnOrderIndexComeFirstAndTheOthersKeepTheirOrder) {
    Define(user_, "A", 5);
    Define(user_, "B");
    Define(user_, "C", 1);
    Define(user_, "D");
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("C", "A", "B", "D"));
}

TEST_F(DepotsOrderTest, EqualOrderIndexesKeepTheOrderOfLoading) {
    Define(machine_, "First", 5);
    Define(machine_, "Lowest", 2);
    Define(user_, "Plain");
    Define(user_, "Zeal", 5);
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("Lowest", "Zeal", "First", "Plain"));
}

TEST_F(DepotsOrderTest, OrderIndexIsSignedAndMinusOneIsNone) {
    Define(user_, "A", 0xFFFFFFFF);
    Define(user_, "B", 0);
    Define(user_, "C", 0xFFFFFFFE);
    Define(user_, "D", 0x80000000);
    Define(user_, "E", 0x7FFFFFFF);
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("D", "C", "B", "E", "A"));
}

TEST_F(DepotsOrderTest, OrderIndexStoredAsATextCountsAsNone) {
    Define(user_, "A");
    user_.Text("A", "OrderIndex", "0");
    Define(user_, "B", 9);
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("B", "A"));
}

TEST_F(DepotsOrderTest, FirstDefaultInSortedOrderWins) {
    Define(user_, "A", 5);
    Define(user_, "B", 2);
    Define(user_, "C", 1);
    user_.Dword("A", "DefaultDepot", 1);
    user_.Dword("B", "DefaultDepot", 1);
    user_.Dword("C", "DefaultDepot", 2);
    EXPECT_EQ("B", CDepots(kKey).defaultDepot->name);
}

TEST_F(DepotsOrderTest, WithoutADefaultTheFirstInSortedOrderIsIt) {
    Define(user_, "A", 5);
    Define(user_, "B", 2);
    user_.Text("A", "DefaultDepot", "1");
    EXPECT_EQ("B", CDepots(kKey).defaultDepot->name);
}

TEST_F(ListOrderTest, LowestOrderDepotIsTheEarliestOfTheSmallest) {
    EXPECT_EQ(nullptr, depots_.LowestOrderDepot());
    Append("none");
    EXPECT_EQ(nullptr, depots_.LowestOrderDepot());
    Append("five", 5);
    CDepot* const two = Append("two", 2);
    Append("two again", 2);
    EXPECT_EQ(two, depots_.LowestOrderDepot());
    CDepot* const negative = Append("minus two", -2);
    EXPECT_EQ(negative, depots_.LowestOrderDepot());
}

TEST_F(ListOrderTest, ListWithoutAnyOrderIndexKeepsItsOrder) {
    for (const char* name : {"c", "a", "b"}) Append(name);
    depots_.SortByOrderIndex();
    EXPECT_THAT(Names(depots_), ElementsAre("c", "a", "b"));
}

TEST_F(ListOrderTest, RandomListsAreSortedAsByTakingTheLowestAgainAndAgain) {
    test::RandomTexts random(0x5EED21);
    for (int round = 0; round < 500; ++round) {
        SCOPED_TRACE(round);
        depots_.RemoveAll(true);
        CDepots rest;
        for (std::size_t count = random.Below(12); count > 0; --count) {
            rest.Add(Append(std::to_string(count), static_cast<std::int32_t>(random.Below(6)) - 2),
                     false);
        }
        std::vector<std::string> expected;
        std::vector<CDepot*> left(rest.begin(), rest.end());
        while (const CDepot* lowest = rest.LowestOrderDepot()) {
            expected.push_back(lowest->name);
            left.erase(std::find(left.begin(), left.end(), lowest));
            rest.RemoveAll(false);
            for (CDepot* depot : left) rest.Add(depot, false);
        }
        for (const CDepot* depot : left) expected.push_back(depot->name);
        depots_.SortByOrderIndex();
        ASSERT_EQ(expected, Names(depots_));
    }
}

}  // namespace
}  // namespace depot
