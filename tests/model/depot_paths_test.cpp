#include "model/depot_paths.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "support/box_log.h"
#include "support/record_rules.h"
#include "support/scratch.h"

namespace depot {
namespace {

// Only a depot ever destroys its list.
static_assert(std::is_polymorphic_v<CDepotPaths> && !std::has_virtual_destructor_v<CDepotPaths>);

int alive = 0;

// A location that counts how many there are.
class CountedLocation : public CDepotPath {
public:
    explicit CountedLocation(CDepotPaths* owningPaths) : CDepotPath(owningPaths) { ++alive; }
    CountedLocation(const CountedLocation& other) : CDepotPath(other) { ++alive; }
    CountedLocation& operator=(const CountedLocation&) = delete;
    ~CountedLocation() override { --alive; }
};

class DepotPathsTest : public testing::Test {
protected:
    DepotPathsTest() { alive = 0; }

    CDepotPath* Append(const std::string& path, LocationType type = kFolderLocation) {
        auto location = std::make_unique<CountedLocation>(&paths_);
        location->path = path;
        location->type = type;
        paths_.Append(std::move(location));
        return paths_.At(paths_.Count() - 1);
    }

    test::ScratchFolder folder_;
    CDepotPaths paths_{nullptr};
};

TEST_F(DepotPathsTest, NewListIsEmptyOwnsItsItemsAndHasNoPath) {
    EXPECT_EQ(0u, paths_.Count());
    EXPECT_TRUE(paths_.ownsItems);
    EXPECT_EQ("", paths_.GetActivePath());
    EXPECT_EQ(nullptr, paths_.ActiveLocation());
    EXPECT_EQ(nullptr, paths_.ChosenLocation());
}

TEST_F(DepotPathsTest, ListDeletesWhatItOwns) {
    {
        CDepotPaths owning(nullptr);
        owning.Append(std::make_unique<CountedLocation>(&owning));
        EXPECT_EQ(1, alive);
    }
    EXPECT_EQ(0, alive);
    CountedLocation location(nullptr);
    {
        CDepotPaths borrowing(nullptr);
        borrowing.ownsItems = false;
        borrowing.Add(&location, false);
    }
    EXPECT_EQ(1, alive);
}

TEST_F(DepotPathsTest, AddTakesTheLocationItselfOrAClone) {
    CDepotPath location(nullptr);
    location.path = "C:\\a";
    paths_.Add(&location, true);
    ASSERT_EQ(1u, paths_.Count());
    EXPECT_NE(&location, paths_.At(0));
    EXPECT_EQ("C:\\a", paths_.At(0)->path);
    paths_.Add(nullptr, false);
    EXPECT_EQ(1u, paths_.Count());
}

TEST_F(DepotPathsTest, CopyAppendsClonesInOrder) {
    Append("C:\\a");
    Append("C:\\b");
    CDepotPaths other(nullptr);
    other.Copy(&paths_);
    other.Copy(nullptr);
    ASSERT_EQ(2u, other.Count());
    EXPECT_EQ("C:\\a", other.At(0)->path);
    EXPECT_EQ("C:\\b", other.At(1)->path);
    EXPECT_NE(paths_.At(0), other.At(0));
    EXPECT_EQ(&other, other.At(0)->owner);
    EXPECT_EQ(&paths_, paths_.At(0)->owner);
}

TEST_F(DepotPathsTest, VirtualOperationsStandInTheirOrder) {
    EXPECT_EQ(0u, test::VirtualSlot(&CDepotPaths::Add));
    EXPECT_EQ(1u, test::VirtualSlot(&CDepotPaths::Copy));
    EXPECT_EQ(2u, test::VirtualSlot(&CDepotPaths::RemoveAll));
    EXPECT_EQ(3u, test::VirtualSlot(&CDepotPaths::Remove));
}

TEST_F(DepotPathsTest, RemoveDeletesTheLocationAlsoWhenItIsNotInTheList) {
    CDepotPath* const first = Append("C:\\a");
    Append("C:\\b");
    paths_.Remove(first);
    paths_.Remove(nullptr);
    ASSERT_EQ(1u, paths_.Count());
    EXPECT_EQ("C:\\b", paths_.At(0)->path);
    EXPECT_EQ(1, alive);
    paths_.Remove(std::make_unique<CountedLocation>(nullptr).release());
    EXPECT_EQ(1u, paths_.Count());
    EXPECT_EQ(1, alive);
}

TEST_F(DepotPathsTest, RemoveAllDeletesOnlyWhenAsked) {
    Append("C:\\a");
    paths_.RemoveAll(true);
    EXPECT_EQ(0u, paths_.Count());
    EXPECT_EQ(0, alive);
    CountedLocation location(nullptr);
    paths_.Add(&location, false);
    paths_.RemoveAll(false);
    EXPECT_EQ(1, alive);
}

TEST_F(DepotPathsTest, FirstExistingFolderIsChosen) {
    Append(folder_.At("none"));
    CDepotPath* const second = Append(folder_.MakeFolder("there"));
    Append(folder_.MakeFolder("also"));
    EXPECT_EQ(nullptr, paths_.ChosenLocation());
    EXPECT_EQ(folder_.At("there\\"), paths_.GetActivePath());
    EXPECT_EQ(second, paths_.ActiveLocation());
    EXPECT_EQ(second, paths_.ChosenLocation());
}

TEST_F(DepotPathsTest, WithoutAnExistingFolderTheFirstIsChosen) {
    CDepotPath* const first = Append(folder_.At("none"));
    Append(folder_.At("none either"));
    EXPECT_EQ(first, paths_.ActiveLocation());
    EXPECT_EQ(folder_.At("none\\"), paths_.GetActivePath());
}

TEST_F(DepotPathsTest, AnyTypeButThatOfADirectoryIsAFolder) {
    CDepotPath* const odd = Append(folder_.MakeFolder("odd"), static_cast<LocationType>(7));
    Append(folder_.MakeFolder("there"));
    EXPECT_EQ(odd, paths_.ActiveLocation());
}

TEST_F(DepotPathsTest, RemovedChoiceIsForgottenAndAnotherOneKept) {
    CDepotPath* const first = Append(folder_.MakeFolder("first"));
    CDepotPath* const second = Append(folder_.MakeFolder("second"));
    CDepotPath* const third = Append(folder_.MakeFolder("third"));
    EXPECT_EQ(first, paths_.ActiveLocation());
    paths_.Remove(third);
    EXPECT_EQ(first, paths_.ChosenLocation());
    paths_.Remove(first);
    EXPECT_EQ(nullptr, paths_.ChosenLocation());
    EXPECT_EQ(folder_.At("second\\"), paths_.GetActivePath());
    EXPECT_EQ(second, paths_.ChosenLocation());
}

TEST_F(DepotPathsTest, ChoiceIsNotRevisited) {
    Append(folder_.At("first"));
    Append(folder_.MakeFolder("second"));
    EXPECT_EQ(folder_.At("second\\"), paths_.GetActivePath());
    folder_.MakeFolder("first");
    RemoveDirectoryA(folder_.At("second").c_str());
    EXPECT_EQ(folder_.At("second\\"), paths_.GetActivePath());
    Append(folder_.MakeFolder("third"));
    EXPECT_EQ(folder_.At("second\\"), paths_.GetActivePath());
}

TEST_F(DepotPathsTest, ChoiceBetweenMissingFoldersIsNotRevisitedEither) {
    Append(folder_.At("first"));
    Append(folder_.At("second"));
    EXPECT_EQ(folder_.At("first\\"), paths_.GetActivePath());
    folder_.MakeFolder("second");
    EXPECT_EQ(folder_.At("first\\"), paths_.GetActivePath());
    EXPECT_EQ(paths_.At(0), paths_.ActiveLocation());
}

TEST_F(DepotPathsTest, OnlyAMissingBackslashIsAppended) {
    Append(folder_.MakeFolder("there") + "\\");
    EXPECT_EQ(folder_.At("there\\"), paths_.GetActivePath());
}

TEST_F(DepotPathsTest, FileCountsAsExisting) {
    Append(folder_.At("none"));
    Append(folder_.MakeFile("file", "x"));
    EXPECT_EQ(folder_.At("file\\"), paths_.GetActivePath());
}

TEST_F(DepotPathsTest, EmptyPathStaysEmpty) {
    Append("");
    EXPECT_EQ("", paths_.GetActivePath());
    EXPECT_EQ("", paths_.GetActivePath());
    EXPECT_EQ(paths_.At(0), paths_.ActiveLocation());
}

TEST_F(DepotPathsTest, DirectoryWithoutAServerIsPassedOver) {
    // The missing server is reported in a box.
    const test::BoxLog boxes;
    Append("dc=farrow", kDirectoryLocation);
    CDepotPath* const folder = Append(folder_.MakeFolder("there"));
    EXPECT_EQ(folder, paths_.ActiveLocation());
}

TEST_F(DepotPathsTest, EmptiedListForgetsItsChoice) {
    Append(folder_.MakeFolder("first"));
    EXPECT_EQ(folder_.At("first\\"), paths_.GetActivePath());
    paths_.RemoveAll(true);
    EXPECT_EQ("", paths_.GetActivePath());
    Append(folder_.MakeFolder("second"));
    EXPECT_EQ(folder_.At("second\\"), paths_.GetActivePath());
}

TEST_F(DepotPathsTest, ExpandedPathIsKeptInTheRecord) {
    CDepotPath* const location = Append("C:\\plain");
    EXPECT_EQ("C:\\plain", ExpandedPath(*location));
    EXPECT_EQ("C:\\plain", location->locationText);
    location->path = "C:\\changed";
    EXPECT_EQ("C:\\plain", ExpandedPath(*location));
}

TEST_F(DepotPathsTest, PathOf260CharactersIsUsedAsItStands) {
    const std::string longest = "C:\\" + std::string(257, 'x');
    Append(longest);
    EXPECT_EQ(longest + "\\", paths_.GetActivePath());
}

}  // namespace
}  // namespace depot
