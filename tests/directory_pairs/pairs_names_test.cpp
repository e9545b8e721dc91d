// Names of every kind and length, between every two kinds of store.
#include "directory/dn.h"
#include "directory_pairs/pairs_fixture.h"
#include "store/folder_store.h"
#include "support/results.h"

namespace depot::test {
namespace {

class PairNamesTest : public PairTest {
protected:
    // Copies "from\\tree", which holds this, and moves it then.
    void ExpectTreeArrives(const StoreContents& tree) {
        EXPECT_EQ(tree, Source().Contents("from\\tree"));
        EXPECT_THAT(OnList(FO_COPY, {From("tree")}, To("")), IsDone()) << error_;
        EXPECT_EQ(tree, Target().Contents("to\\tree"));
        EXPECT_THAT(OnList(FO_MOVE, {From("tree")}, To("moved\\")), IsDone()) << error_;
        EXPECT_EQ(tree, Target().Contents("to\\moved\\tree"));
        EXPECT_FALSE(Source().Holds("from\\tree"));
    }
};

TEST_P(PairNamesTest, NamesThatLookLikeFormatsAndCountersArrive) {
    for (const std::string name :
         {"%s.kra", "%n", "%99999d.kra", "trailing %", "(.kra", "((3).kra", "(99999999999).kra"}) {
        SCOPED_TRACE(name);
        Target().MakeFolder("to\\moved");
        Source().MakeFile("from\\" + name, "1");
        EXPECT_THAT(Copy(From(name), To(name), true), IsDone());
        EXPECT_THAT(OnList(FO_MOVE, {From(name)}, To("moved\\")), IsDone());
        EXPECT_EQ("1", Target().Bytes("to\\" + name));
        EXPECT_EQ("1", Target().Bytes("to\\moved\\" + name));
        EXPECT_FALSE(Source().Holds("from\\" + name));
    }
}

TEST_P(PairNamesTest, SignsOfDistinguishedNamesArriveInNamesOfFilesAndFolders) {
    const std::string names[] = {"a,b", "a+b=c", "a;b", "#a", " a", "cn=a,cn=b"};
    StoreContents tree;
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        Source().MakeFile("from\\" + name + ".kra", "1");
        Source().MakeFile("from\\tree\\" + name + "\\" + name + ".kra", "2");
        tree[name] = kFolderMark;
        tree[name + "\\" + name + ".kra"] = "2";
        Target().MakeFolder("to\\moved");
        EXPECT_THAT(Copy(From(name + ".kra"), To(name + ".kra"), true), IsDone());
        EXPECT_EQ("1", Target().Bytes("to\\" + name + ".kra"));
        EXPECT_THAT(OnList(FO_MOVE, {From(name + ".kra")}, To("moved\\")), IsDone());
        EXPECT_EQ("1", Target().Bytes("to\\moved\\" + name + ".kra"));
        EXPECT_FALSE(Source().Holds("from\\" + name + ".kra"));
    }
    ExpectTreeArrives(tree);
}

// The length is that of the path in the file system, or that of the display path.
TEST_P(PairNamesTest, LongPathsArriveWholeOrNotAtAll) {
    const std::size_t root = ToDirectory() ? Target().Path("").size() : Target().At("").size();
    for (const std::size_t length : {259, 260, 261}) {
        SCOPED_TRACE(length);
        std::string folder = "to";
        while (root + folder.size() + 110 < length) folder += "\\" + std::string(100, 'd');
        Target().MakeFolder(folder);
        for (const bool moves : {false, true}) {
            Source().MakeFile("from\\a.kra", "1");
            const std::string letters(length - root - folder.size() - 5, moves ? 'm' : 'c');
            const std::string name = folder + "\\" + letters + ".kra";
            ASSERT_EQ(length, root + name.size());
            const int done = moves ? OnItem(FO_MOVE, From("a.kra"), Target().Path(name))
                                   : Copy(From("a.kra"), Target().Path(name), true);
            StoreContents there = Target().Contents("to");
            EXPECT_EQ(done != 0 ? "1" : "", there[name.substr(3)]);
            EXPECT_EQ(done != 0 && moves ? kMissing : "1", Source().Bytes("from\\a.kra"));
        }
    }
}

TEST_P(PairNamesTest, LongTargetFoldersOfListsAreTakenUpTo260Characters) {
    if (ToDirectory()) return;
    Source().MakeFile("from\\a.kra", "1");
    const std::size_t root = Target().At("").size();
    for (const std::size_t length : {259, 260, 261}) {
        SCOPED_TRACE(length);
        std::string name = "to\\" + std::string(100, 'd');
        Target().MakeFolder(name);
        name += "\\" + std::string(length - root - name.size() - 1, 'x');
        const int copied = OnList(FO_COPY, {From("a.kra")}, Target().Path(name));
        EXPECT_TRUE(length <= 260 || copied == 0);
        StoreContents there = Target().Contents("to");
        EXPECT_EQ(copied != 0 ? "1" : "", there[name.substr(3)]);
    }
    EXPECT_EQ("1", Source().Bytes("from\\a.kra"));
}

INSTANTIATE_TEST_SUITE_P(EveryPair, PairNamesTest, testing::ValuesIn(EveryPair()), PairName);

// What a directory holds under names that no local file may have.
using HostileNamesTest = PairTest;

void AddHostileNames(DirectoryServer& server, DirectoryTestFolder& directory) {
    server.Apply("dn: cn=..\\5C..\\5Cx.kra," + directory.At("from") +
                 "\nobjectClass: quillonFileBinary\ncn: ..\\..\\x.kra\n"
                 "quillonFileContentsBinary: x\n\n");
    for (const char* name : {"C:x.kra", "CON", "nul.kra", "a?.kra", "ends with dot."}) {
        server.AddFile(name, directory.At("from"), "x");
    }
    directory.MakeFile("from\\good.kra", "1");
}

// Everything in the file system that a hostile name could reach.
StoreContents AllOf(const DirectoryWorld& world) {
    return LocalTestFolder(world.folder.Path(), {}).Contents({});
}

TEST_P(HostileNamesTest, SingleEntryNeverBecomesALocalFile) {
    AddHostileNames(world_.server, directory_);
    const StoreContents entries = directory_.Contents(), before = AllOf(world_);
    for (const std::string name :
         {"..\\..\\x.kra", "C:x.kra", "CON", "nul.kra", "a?.kra", "ends with dot."}) {
        SCOPED_TRACE(name);
        for (const UINT operation : {FO_COPY, FO_MOVE}) {
            EXPECT_THAT(OnItem(operation, From(name), To("")), Fails());
            EXPECT_THAT(OnList(operation, {From(name)}, To("")), Fails());
        }
        EXPECT_THAT(Copy(From(name), To(""), false), Fails());
    }
    EXPECT_EQ(before, AllOf(world_));
    EXPECT_EQ(entries, directory_.Contents());
}

TEST_P(HostileNamesTest, TreeNeverLeavesTheTargetFolderAndIsNeverRemoved) {
    AddHostileNames(world_.server, directory_);
    const StoreContents entries = directory_.Contents("from"), before = AllOf(world_);
    const std::string tree = Source().Path("from");
    for (const UINT operation : {FO_MOVE, FO_COPY}) {
        OnItem(operation, tree, To("item"));
        OnList(operation, {tree}, To(""));
        EXPECT_EQ(entries, directory_.Contents("from"));
    }
    for (const auto& [path, bytes] : AllOf(world_)) {
        SCOPED_TRACE(path);
        const bool inTarget = path.find("\\to\\") != std::string::npos;
        EXPECT_TRUE(before.contains(path) || (inTarget && bytes != "x"));
    }
}

const auto kFromADirectory = testing::Values(StorePair{StoreKind::kDirectory, StoreKind::kPlain},
                                             StorePair{StoreKind::kDirectory, StoreKind::kFolder});

INSTANTIATE_TEST_SUITE_P(FromADirectory, HostileNamesTest, kFromADirectory, PairName);

// A directory's names that lead to local files of other names, by the short ones of those.
class ShortNamesTest : public PairTest {
protected:
    // Makes a local file and an entry of the same folder by that file's short name. Returns the
    // name.
    std::string AddNameOf(const std::string& folder, const std::string& name) {
        Target().MakeFile("to\\" + folder + name, "mine");
        std::string shortName = ShortNameOf(Target().At("to\\" + folder + name));
        Source().MakeFile("from\\" + folder + shortName, "x");
        return shortName;
    }
};

TEST_P(ShortNamesTest, FileOfAnotherNameIsNotReplaced) {
    const std::string name = AddNameOf({}, "a long file name.kra");
    for (const UINT operation : {FO_COPY, FO_MOVE}) {
        ExpectRefused([&] { return OnItem(operation, From(name), To("")); });
        ExpectRefused([&] { return OnItem(operation, From(name), To(name)); });
        ExpectRefused([&] { return OnList(operation, {From(name)}, To("")); });
    }
    for (const std::string& target : {std::string(), name}) {
        ExpectRefused([&] { return Copy(From(name), To(target), false); });
        EXPECT_EQ(UnsafeNamesText(1), error_);
    }
}

// A caller may know a file by its short name.
TEST_P(ShortNamesTest, CopyUnderANameOfTheCallersOwnMayUseOne) {
    const std::string name = AddNameOf({}, "a long file name.kra");
    Source().MakeFile("from\\other.kra", "2");
    EXPECT_THAT(Copy(From("other.kra"), To(name), false), IsDone());
    EXPECT_EQ("2", Target().Bytes("to\\" + name));
}

TEST_P(ShortNamesTest, TreeReplacesNoFileOfAnotherName) {
    AddNameOf("tree\\sub\\", "a long file name.kra");
    for (const UINT operation : {FO_COPY, FO_MOVE}) {
        ExpectRefused([&] { return OnItem(operation, From("tree"), To("")); });
        ExpectRefused([&] { return OnList(operation, {From("tree")}, To("")); });
    }
}

TEST_P(ShortNamesTest, TreeDoesNotEnterAFolderOfAnotherName) {
    Target().MakeFile("to\\tree\\a long folder name\\a.kra", "mine");
    const std::string name = ShortNameOf(Target().At("to\\tree\\a long folder name"));
    Source().MakeFile("from\\tree\\" + name + "\\a.kra", "x");
    for (const UINT operation : {FO_COPY, FO_MOVE}) {
        ExpectRefused([&] { return OnList(operation, {From("tree")}, To("")); });
    }
    EXPECT_THAT(
        FolderStore::Instance().MakeFolder(Target().At("to\\tree\\" + name), FoldersAbove::kExist),
        Fails());
}

INSTANTIATE_TEST_SUITE_P(FromADirectory, ShortNamesTest, kFromADirectory, PairName);

TEST_P(PairNamesTest, NamesInTheFormOfShortOnesAreListedAndArrive) {
    const std::string names[] = {"x~1.kra", "LONGFI~1.KRA", "\xE4~12.kr"};
    StoreContents tree;
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        Target().MakeFolder("to\\moved");
        Source().MakeFile("from\\" + name, "1");
        Source().MakeFile("from\\tree\\d~1\\" + name, "2");
        tree["d~1"] = kFolderMark;
        tree["d~1\\" + name] = "2";
        EXPECT_THAT(Copy(From(name), To(""), true), IsDone());
        EXPECT_EQ("1", Target().Bytes("to\\" + name));
        EXPECT_THAT(OnList(FO_MOVE, {From(name)}, To("moved\\")), IsDone());
        EXPECT_EQ("1", Target().Bytes("to\\moved\\" + name));
        EXPECT_FALSE(Source().Holds("from\\" + name));
    }
    ExpectTreeArrives(tree);
}

}  // namespace
}  // namespace depot::test
