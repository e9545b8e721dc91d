// Who owns the depots of a list.
#include <type_traits>

#include "model/depots_fixture.h"
#include "support/record_rules.h"

namespace depot {
namespace {

using test::Names;
using testing::ElementsAre;

static_assert(std::has_virtual_destructor_v<CDepots>);

using DepotsOwnershipTest = test::DepotListFixture;

TEST_F(DepotsOwnershipTest, ListDeletesWhatItOwns) {
    Append("a");
    Append("b");
    EXPECT_EQ(2, alive);
    {
        CDepots borrowing;
        borrowing.Add(depots_.At(0), false);
    }
    EXPECT_EQ(2, alive);
    depots_.RemoveAll(true);
    EXPECT_EQ(0, alive);
    EXPECT_EQ(nullptr, depots_.defaultDepot);
    {
        CDepots owning;
        owning.ownsItems = true;
        owning.Add(std::make_unique<CountedDepot>(&owning).release(), false);
    }
    EXPECT_EQ(0, alive);
}

TEST_F(DepotsOwnershipTest, LoadingDeletesWhatTheListHeld) {
    Append("a");
    Append("b");
    depots_.Load(kKey);
    EXPECT_EQ(0, alive);
    EXPECT_THAT(Names(depots_), ElementsAre(""));
}

TEST_F(DepotsOwnershipTest, VirtualOperationsStandInTheirOrder) {
    EXPECT_EQ(2u, test::VirtualSlot(&CDepots::Add));
    EXPECT_EQ(3u, test::VirtualSlot(&CDepots::Copy));
    EXPECT_EQ(4u, test::VirtualSlot(&CDepots::RemoveAll));
    EXPECT_EQ(5u, test::VirtualSlot(&CDepots::Remove));
}

TEST_F(DepotsOwnershipTest, ListThatIsLoadedUsedAndCopiedLeavesNothing) {
    for (const char* name : {"A", "B", "C"}) Define(user_, name, 5);
    EXPECT_EQ(0u, test::CountLeftovers([] {
                  CDepots depots(kKey);
                  for (CDepot* depot : depots) depot->paths->GetActivePath();
                  depots.filteredView = std::make_unique<CDepots>();
                  depots.filteredView->Add(depots.At(1), false);
                  CDepots copies;
                  copies.ownsItems = true;
                  copies.Copy(&depots);
              }));
}

TEST_F(DepotsOwnershipTest, RemoveDeletesTheDepotAlsoWhenItIsNotInTheList) {
    CDepot* const first = Append("a");
    Append("b");
    depots_.defaultDepot = first;
    depots_.Remove(first);
    depots_.Remove(nullptr);
    EXPECT_THAT(Names(depots_), ElementsAre("b"));
    EXPECT_EQ(1, alive);
    EXPECT_EQ(nullptr, depots_.defaultDepot);
    depots_.Remove(std::make_unique<CountedDepot>(nullptr).release());
    EXPECT_THAT(Names(depots_), ElementsAre("b"));
    EXPECT_EQ(1, alive);
}

TEST_F(DepotsOwnershipTest, CopyAppendsClonesWithTheSameOwner) {
    Append("a", 3);
    Append("b");
    CDepots copy;
    copy.ownsItems = true;
    copy.Copy(&depots_);
    copy.Copy(nullptr);
    EXPECT_THAT(Names(copy), ElementsAre("a", "b"));
    EXPECT_NE(depots_.At(0), copy.At(0));
    EXPECT_EQ(3, copy.At(0)->orderIndex);
    EXPECT_EQ(&depots_, copy.At(0)->owner);
    copy.Add(depots_.At(0), true);
    EXPECT_THAT(Names(copy), ElementsAre("a", "b", "a"));
}

TEST_F(DepotsOwnershipTest, UserFolderIsTheOverride) {
    EXPECT_EQ("", depots_.GetUserDir(false));
    EXPECT_EQ("", depots_.GetUserDir(true));
    depots_.userDirOverride = "C:\\u\\";
    EXPECT_EQ("C:\\u\\", depots_.GetUserDir(false));
    EXPECT_EQ("C:\\u\\", depots_.GetUserDir(true));
}

}  // namespace
}  // namespace depot
