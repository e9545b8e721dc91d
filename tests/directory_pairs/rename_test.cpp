// Renaming within a depot, of either kind.
#include "directory_pairs/pairs_fixture.h"
#include "support/results.h"

namespace depot::test {
namespace {

class RenameTest : public PairWorldTest, public testing::WithParamInterface<StoreKind> {
protected:
    TestFolder& Place() { return StoreOf(GetParam()); }
    bool InDirectory() const { return GetParam() == StoreKind::kDirectory; }
    int Rename(const std::string& from, const std::string& to) {
        CDepot& depot = InDirectory() ? world_.work : world_.home;
        return MoveFile(depot, Place().Path(from), Place().Path(to), nullptr, nullptr, &error_);
    }
    void ExpectRefused(const std::string& from, const std::string& to) {
        SCOPED_TRACE(from + " to " + to);
        const StoreContents before = Place().Contents();
        EXPECT_THAT(Rename(from, to), Fails());
        EXPECT_EQ(before, Place().Contents());
    }
};

TEST_P(RenameTest, FileGetsItsNewName) {
    Place().MakeFile("from\\a.kra", "1");
    EXPECT_THAT(Rename("from\\a.kra", "from\\b.kra"), IsDone());
    EXPECT_THAT(Rename("from\\b.kra", "to\\c.kra"), IsDone());
    EXPECT_EQ(StoreContents(), Place().Contents("from"));
    EXPECT_EQ((StoreContents{{"c.kra", "1"}}), Place().Contents("to"));
}

TEST_P(RenameTest, TreeKeepsItsShape) {
    Place().MakeTree("from\\tree");
    EXPECT_THAT(Rename("from\\tree", "from\\other"), IsDone());
    EXPECT_FALSE(Place().Holds("from\\tree"));
    EXPECT_EQ(TestFolder::Tree(), Place().Contents("from\\other"));
}

TEST_P(RenameTest, FolderWithADotAndFileWithoutOneKeepWhatTheyHold) {
    Place().MakeFile("from\\v1.2\\sub\\d.kra", "5");
    Place().MakeFile("from\\README", "1");
    EXPECT_THAT(Rename("from\\v1.2", "from\\v1.3"), IsDone());
    EXPECT_THAT(Rename("from\\README", "from\\LICENCE"), IsDone());
    EXPECT_EQ((StoreContents{{"LICENCE", "1"},
                             {"v1.3", kFolderMark},
                             {"v1.3\\sub", kFolderMark},
                             {"v1.3\\sub\\d.kra", "5"}}),
              Place().Contents("from"));
}

TEST_P(RenameTest, NothingIsReplaced) {
    Place().MakeFile("from\\a.kra", "1");
    Place().MakeFile("from\\b.kra", "2");
    Place().MakeTree("from\\tree");
    Place().MakeFile("to\\tree\\a.kra", "3");
    ExpectRefused("from\\a.kra", "from\\b.kra");
    ExpectRefused("from\\a.kra", "from\\tree");
    if (InDirectory()) ExpectRefused("from\\tree", "to\\tree");
}

TEST_P(RenameTest, MissingSourceAndEmptyNamesAreRefused) {
    Place().MakeFile("from\\a.kra", "1");
    ExpectRefused("from\\none.kra", "from\\b.kra");
    ExpectRefused("from\\none", "from\\b");
    const StoreContents before = Place().Contents();
    CDepot& depot = InDirectory() ? world_.work : world_.home;
    EXPECT_THAT(MoveFile(depot, Place().Path("from\\a.kra"), "", nullptr, nullptr, &error_),
                Fails());
    EXPECT_THAT(MoveFile(depot, "", Place().Path("from\\b.kra"), nullptr, nullptr, &error_),
                Fails());
    EXPECT_EQ(before, Place().Contents());
}

TEST_P(RenameTest, NothingMovesIntoItself) {
    Place().MakeTree("from\\tree");
    ExpectRefused("from\\tree", "from\\tree\\sub\\tree");
    ExpectRefused("from\\tree", "from\\tree\\new");
    ExpectRefused("from\\tree", "from\\tree\\new\\newer");
    ExpectRefused("from", "from\\tree\\from");
}

TEST_P(RenameTest, OwnNameCostsNothing) {
    Place().MakeFile("from\\a.kra", "1");
    Place().MakeTree("from\\tree");
    const StoreContents before = Place().Contents();
    Rename("from\\a.kra", "from\\a.kra");
    Rename("from\\tree", "from\\tree");
    EXPECT_EQ(before, Place().Contents());
}

TEST_P(RenameTest, LettersOfANameChange) {
    // The shell of some test systems refuses this in a folder.
    if (!InDirectory()) return;
    Place().MakeFile("from\\a.kra", "1");
    Place().MakeTree("from\\tree");
    EXPECT_THAT(Rename("from\\a.kra", "from\\A.KRA"), IsDone());
    EXPECT_THAT(Rename("from\\tree", "from\\TREE"), IsDone());
    EXPECT_EQ("1", Place().Contents("from")["A.KRA"]);
    EXPECT_EQ(TestFolder::Tree(), Place().Contents("from\\TREE"));
}

TEST_P(RenameTest, NamesOfEveryKindAreTaken) {
    for (const char* name : {"%s.kra", "%n", "%99999d.kra", "trailing %", "(.kra", "((3).kra",
                             "(99999999999).kra", "a (3) (4).kra"}) {
        SCOPED_TRACE(name);
        Place().MakeFile("from\\a.kra", "1");
        EXPECT_THAT(Rename("from\\a.kra", std::string("from\\") + name), IsDone());
        EXPECT_EQ((StoreContents{{name, "1"}}), Place().Contents("from"));
        EXPECT_THAT(Rename(std::string("from\\") + name, std::string("to\\") + name), IsDone());
    }
}

TEST_P(RenameTest, LongNamesArriveWholeOrNotAtAll) {
    for (const std::size_t length : {259, 260, 261}) {
        SCOPED_TRACE(length);
        Place().MakeFile("from\\a.kra", "1");
        // The path in the file system has so many characters; a folder of a component takes less.
        std::string name = "to\\";
        const std::size_t root = InDirectory() ? 0 : folder_.At("").size();
        while (root + name.size() + 101 < length) {
            name += std::string(100, 'd') + "\\";
            Place().MakeFolder(name.substr(0, name.size() - 1));
        }
        name += std::string(length - root - name.size() - 4, 'x') + ".kra";
        const bool renamed = Rename("from\\a.kra", name) != 0;
        // Some test systems do not open files by such paths, but list them.
        StoreContents there = Place().Contents("to");
        EXPECT_EQ(renamed ? "1" : "", there[name.substr(3)]);
        EXPECT_EQ(renamed ? kMissing : "1", Place().Bytes("from\\a.kra"));
    }
}

std::string NameOf(const testing::TestParamInfo<StoreKind>& kind) {
    return KindName(kind.param);
}

INSTANTIATE_TEST_SUITE_P(EveryDepot, RenameTest,
                         testing::Values(StoreKind::kFolder, StoreKind::kDirectory), NameOf);

// With a destination depot a file moves there.
TEST_F(PairWorldTest, MoveIntoAnotherDepotNeverLandsInTheCurrentFolder) {
    folder_.MakeFile("from\\a.kra", "1");
    directory_.MakeFile("from\\b.kra", "2");
    MoveFile(world_.home, "<Home>\\from\\a.kra", "<Work>\\to\\a.kra", nullptr, &world_.work,
             &error_);
    MoveFile(world_.work, "<Work>\\from\\b.kra", "<Home>\\to\\b.kra", nullptr, &world_.home,
             &error_);
    EXPECT_TRUE(folder_.Bytes("from\\a.kra") == "1" || directory_.Bytes("to\\a.kra") == "1");
    EXPECT_TRUE(directory_.Bytes("from\\b.kra") == "2" || folder_.Bytes("to\\b.kra") == "2");
    EXPECT_FALSE(Exists(directory_.At("to\\a.kra")));
}

}  // namespace
}  // namespace depot::test
