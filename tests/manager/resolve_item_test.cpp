#include "manager/resolve_item.h"

#include <gtest/gtest.h>

#include "manager/depot_world.h"
#include "support/random_text.h"

namespace depot {
namespace {

class ResolveItemTest : public testing::Test {
protected:
    ResolveItemTest() { world_.depots.defaultDepot = &home_; }

    // Resolves into an item full of junk.
    CDepotItem Resolve(const std::string& path, LoosePaths loosePaths = LoosePaths::kKeep,
                       FriendlyNames friendly = FriendlyNames::kIgnore) {
        CDepotItem item("junk", reinterpret_cast<CDepot*>(0x1000));
        ResolveItem(world_.depots, path, item, loosePaths, friendly);
        return item;
    }

    test::DepotWorld world_;
    CDepot& work_ = world_.Add("Work", "Travail", "w");
    CDepot& home_ = world_.Add("Home", "Maison", "h");
};

TEST_F(ResolveItemTest, DisplayPathStaysAsItIs) {
    const CDepotItem item = Resolve("<WORK>\\sub\\a.txt");
    EXPECT_EQ("<WORK>\\sub\\a.txt", item.path);
    EXPECT_EQ(&work_, item.depot);
}

TEST_F(ResolveItemTest, StoragePathUnderARootIsFiledUnderItsDepot) {
    const CDepotItem item = Resolve(world_.folder.At("w\\a.txt"));
    EXPECT_EQ("<Work>\\a.txt", item.path);
    EXPECT_EQ(&work_, item.depot);
}

TEST_F(ResolveItemTest, AnyOtherPathIsKeptAndFiledUnderTheDefaultDepot) {
    for (const char* path :
         {"a.kra", "C:\\none\\a.kra", "<None>\\a", "", "<Travail>\\a", "<Work"}) {
        SCOPED_TRACE(path);
        const CDepotItem item = Resolve(path);
        EXPECT_EQ(path, item.path);
        EXPECT_EQ(&home_, item.depot);
    }
}

TEST_F(ResolveItemTest, WhiteSpaceAtTheEndIsRemoved) {
    EXPECT_EQ("<Work>\\a", Resolve("<Work>\\a \t\r\n").path);
    EXPECT_EQ("  a", Resolve("  a ").path);
    EXPECT_EQ("", Resolve(" \t").path);
}

TEST_F(ResolveItemTest, DisplayNamesCountOnlyInTheFriendlyForm) {
    EXPECT_EQ(&home_, Resolve("<Travail>\\a").depot);
    const CDepotItem item = Resolve("<travail>\\a", LoosePaths::kKeep, FriendlyNames::kTranslate);
    EXPECT_EQ("<Work>\\a", item.path);
    EXPECT_EQ(&work_, item.depot);
    EXPECT_EQ("<Work>\\a", Resolve("<Work>\\a", LoosePaths::kKeep, FriendlyNames::kTranslate).path);
}

TEST_F(ResolveItemTest, ListWithoutDepotsGivesTheTextAndNoDepot) {
    CDepots empty;
    CDepotItem item("junk", &work_);
    ResolveItem(empty, "<Work>\\a ", item, LoosePaths::kPlace);
    EXPECT_EQ("<Work>\\a", item.path);
    EXPECT_EQ(nullptr, item.depot);
}

TEST_F(ResolveItemTest, LoosePathsArePlacedOnlyWhenAsked) {
    EXPECT_EQ("office", Resolve("office").path);
    const CDepotItem item = Resolve("office", LoosePaths::kPlace);
    EXPECT_EQ("<Home>\\Profile\\office.kre", item.path);
    EXPECT_EQ(&home_, item.depot);
    EXPECT_EQ("<Work>\\office", Resolve("<Work>\\office", LoosePaths::kPlace).path);
}

TEST_F(ResolveItemTest, HundredThousandCharactersAreResolved) {
    const std::string tail(100'000, 'x');
    EXPECT_EQ("<Work>\\" + tail, Resolve("<Work>\\" + tail).path);
    EXPECT_EQ(tail, Resolve(tail).path);
    EXPECT_EQ("<Home>\\Profile\\" + tail + ".kre", Resolve(tail, LoosePaths::kPlace).path);
}

TEST_F(ResolveItemTest, RandomPathsAlwaysFindADepotAndAResolvedPathResolvesToItself) {
    test::RandomTexts random(0x5EED41);
    const std::vector<std::string> pieces = {
        "<Work>", "<Home>", "\\", "a", ".kra", "<", ">", " ", "C:", "..", world_.folder.At("w")};
    for (int round = 0; round < 2000; ++round) {
        const std::string path = random.Pieces(5, pieces);
        SCOPED_TRACE(path);
        const CDepotItem item = Resolve(path);
        ASSERT_NE(nullptr, item.depot);
        const CDepotItem again = Resolve(item.path);
        ASSERT_EQ(item.depot, again.depot);
    }
}

class PlaceLoosePathTest : public testing::Test {
protected:
    std::string Place(const std::string& path) { return PlaceLoosePath(depot_, path); }

    std::string Absolute(const std::string& name) const { return world_.folder.At("w\\" + name); }

    test::DepotWorld world_;
    CDepot& depot_ = world_.Add("Work", "Travail", "w");
};

TEST_F(PlaceLoosePathTest, ProfileThatIsInTheFolderIsFound) {
    world_.folder.MakeFolder("w\\Profile");
    world_.folder.MakeFile("w\\Profile\\office.kra", "x");
    EXPECT_EQ("<Work>\\Profile\\office.kra", Place("office.kra"));
    EXPECT_EQ("<Work>\\Profile\\OFFICE.KRA", Place("OFFICE.KRA"));
}

TEST_F(PlaceLoosePathTest, MissingProfileStaysInTheFolderWithItsExtension) {
    world_.folder.MakeFolder("w\\Profile");
    EXPECT_EQ("<Work>\\Profile\\office.kra", Place("office.kra"));
    EXPECT_EQ("<Work>\\Profile\\office.krc", Place("office.krc"));
}

TEST_F(PlaceLoosePathTest, SubfolderNamedAfterTheExtensionTakesTheName) {
    world_.folder.MakeFolder("w\\Profile\\kra");
    EXPECT_EQ("<Work>\\Profile\\kra\\abc.kre", Place("abc.kra"));
    EXPECT_EQ("<Work>\\Profile\\abc.krs", Place("abc.krs"));
}

TEST_F(PlaceLoosePathTest, ExistingProfileComesBeforeTheSubfolder) {
    world_.folder.MakeFolder("w\\Profile\\kra");
    world_.folder.MakeFile("w\\Profile\\abc.kra", "x");
    EXPECT_EQ("<Work>\\Profile\\abc.kra", Place("abc.kra"));
}

TEST_F(PlaceLoosePathTest, SubfolderServesUnknownExtensionsToo) {
    world_.folder.MakeFolder("w\\Profile\\txt");
    world_.folder.MakeFile("w\\Profile\\a.txt", "x");
    EXPECT_EQ("<Work>\\Profile\\txt\\a.kre", Place("a.txt"));
}

TEST_F(PlaceLoosePathTest, OnlyTheTextBehindTheLastDotIsTheExtension) {
    world_.folder.MakeFolder("w\\Profile\\kra");
    EXPECT_EQ("<Work>\\Profile\\kra\\a.b.kre", Place("a.b.kra"));
    EXPECT_EQ("<Work>\\Profile\\kra\\a.krs", Place("a.krs.kra"));
}

TEST_F(PlaceLoosePathTest, NameWithoutAKnownExtensionGetsTheDefaultOne) {
    EXPECT_EQ("<Work>\\Profile\\office.kre", Place("office"));
    EXPECT_EQ("<Work>\\Profile\\office.txt.kre", Place("office.txt"));
    EXPECT_EQ("<Work>\\Profile\\sub\\office.kre", Place("sub\\office"));
}

TEST_F(PlaceLoosePathTest, AbsolutePathJoinsToItself) {
    EXPECT_EQ("D:\\a\\office.kra", Place("D:\\a\\office.kra"));
    EXPECT_EQ("D:\\a\\office", Place("D:\\a\\office"));
    EXPECT_EQ("D:\\a\\office.txt", Place("D:\\a\\office.txt"));
    EXPECT_EQ("<Work>\\a.kra", Place(Absolute("a.kra")));
    EXPECT_EQ("\\\\server\\share\\office.kra", Place("\\\\server\\share\\office.kra"));
}

TEST_F(PlaceLoosePathTest, EmptyOrBlankTextStaysEmpty) {
    EXPECT_EQ("", Place(""));
    EXPECT_EQ("", Place(" \t "));
}

TEST_F(PlaceLoosePathTest, WhiteSpaceAtTheEndIsRemovedFirst) {
    EXPECT_EQ("<Work>\\Profile\\office.kra", Place("office.kra  "));
}

TEST_F(PlaceLoosePathTest, DepotWithoutAKeyNameGivesStoragePaths) {
    test::DepotWorld world;
    CDepot& depot = world.Add("", "My Depot", "m");
    EXPECT_EQ(world.folder.At("m\\Profile\\office.kre"), PlaceLoosePath(depot, "office"));
}

}  // namespace
}  // namespace depot
