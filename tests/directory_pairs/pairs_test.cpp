// What arrives, what is refused and what stays, between every two kinds of store.
#include "directory_pairs/pairs_fixture.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr UINT kCopyAndMove[] = {FO_COPY, FO_MOVE};

std::string ManyBytes() {
    std::string bytes;
    for (int number = 0; number < 100'000; ++number) bytes.push_back(static_cast<char>(number));
    return bytes;
}

TEST_P(PairTest, CopiedFileArrivesWholeAndItsSourceStays) {
    const std::string bytes = ManyBytes();
    Source().MakeFile("from\\a.kra", bytes);
    EXPECT_THAT(Copy(From("a.kra"), To("b.kra"), true), IsDone());
    EXPECT_THAT(OnItem(FO_COPY, From("a.kra"), To("c.kra")), IsDone());
    EXPECT_THAT(OnList(FO_COPY, {From("a.kra")}, To("")), IsDone());
    EXPECT_EQ((StoreContents{{"a.kra", bytes}, {"b.kra", bytes}, {"c.kra", bytes}}),
              Target().Contents("to"));
    EXPECT_EQ(bytes, Source().Bytes("from\\a.kra"));
    EXPECT_EQ("junk", error_);
}

TEST_P(PairTest, MovedFileArrivesWholeAndItsSourceIsGone) {
    const std::string bytes = ManyBytes();
    Source().MakeFile("from\\a.kra", bytes);
    Source().MakeFile("from\\b.kra", "2");
    EXPECT_THAT(OnItem(FO_MOVE, From("a.kra"), To("new.kra")), IsDone());
    EXPECT_THAT(OnList(FO_MOVE, {From("b.kra")}, To("")), IsDone());
    EXPECT_EQ((StoreContents{{"b.kra", "2"}, {"new.kra", bytes}}), Target().Contents("to"));
    EXPECT_EQ(StoreContents(), Source().Contents("from"));
}

TEST_P(PairTest, ListArrivesTogether) {
    StoreContents expected;
    std::vector<std::string> sources;
    for (const char* name : {"a.kra", "b.kra", "c.kra"}) {
        Source().MakeFile(std::string("from\\") + name, name);
        sources.push_back(From(name));
        expected[name] = name;
    }
    EXPECT_THAT(OnList(FO_COPY, sources, To("")), IsDone());
    EXPECT_EQ(expected, Target().Contents("to"));
    EXPECT_EQ(expected, Source().Contents("from"));
}

TEST_P(PairTest, CopiedTreeArrivesWithItsShape) {
    Source().MakeTree("from\\tree");
    EXPECT_THAT(OnList(FO_COPY, {From("tree")}, To("")), IsDone());
    EXPECT_EQ(TestFolder::Tree(), Target().Contents("to\\tree"));
    EXPECT_EQ(TestFolder::Tree(), Source().Contents("from\\tree"));
}

TEST_P(PairTest, MovedTreeArrivesWithItsShapeAndItsSourceIsGone) {
    Source().MakeTree("from\\tree");
    EXPECT_THAT(OnList(FO_MOVE, {From("tree")}, To("")), IsDone());
    EXPECT_EQ(TestFolder::Tree(), Target().Contents("to\\tree"));
    EXPECT_EQ(StoreContents(), Source().Contents("from"));
}

// The dot in a name tells nothing about what bears it.
TEST_P(PairTest, MovedFolderWithADotAndFileWithoutOneKeepWhatTheyHold) {
    Source().MakeFile("from\\v1.2\\sub\\d.kra", "5");
    Source().MakeFile("from\\README", "1");
    EXPECT_THAT(OnList(FO_MOVE, {From("v1.2")}, To("")), IsDone());
    EXPECT_THAT(OnList(FO_MOVE, {From("README")}, To("")), IsDone());
    EXPECT_EQ((StoreContents{{"README", "1"},
                             {"v1.2", kFolderMark},
                             {"v1.2\\sub", kFolderMark},
                             {"v1.2\\sub\\d.kra", "5"}}),
              Target().Contents("to"));
    EXPECT_EQ(StoreContents(), Source().Contents("from"));
}

TEST_P(PairTest, CopyIntoAFolderKeepsItsName) {
    Source().MakeFile("from\\a.kra", "1");
    EXPECT_THAT(Copy(From("a.kra"), To(""), true), IsDone());
    EXPECT_EQ("1", Target().Bytes("to\\a.kra"));
}

// Whoever publishes a file again brings its entry up to date.
TEST_P(PairTest, ExistingEntryIsReplacedAndAnExistingFileOnlyWhenThatIsAllowed) {
    Source().MakeFile("from\\a.kra", "new");
    Target().MakeFile("to\\a.kra", "much older");
    if (!ToDirectory()) {
        ExpectRefused([&] { return Copy(From("a.kra"), To("a.kra"), true); });
        ExpectRefused([&] { return Copy(From("a.kra"), To(""), true); });
        for (const UINT operation : kCopyAndMove) {
            ExpectRefused([&] { return OnItem(operation, From("a.kra"), To("a.kra")); });
            ExpectRefused([&] { return OnItem(operation, From("a.kra"), To("")); });
        }
    }
    EXPECT_THAT(Copy(From("a.kra"), To("a.kra"), ToDirectory()), IsDone());
    EXPECT_EQ("new", Target().Bytes("to\\a.kra"));
    EXPECT_EQ("new", Source().Bytes("from\\a.kra"));
}

TEST_P(PairTest, ListReplacesWhatExists) {
    Source().MakeFile("from\\a.kra", "new");
    Target().MakeFile("to\\a.kra", "much older");
    EXPECT_THAT(OnList(FO_COPY, {From("a.kra")}, To("")), IsDone());
    EXPECT_EQ("new", Target().Bytes("to\\a.kra"));
    EXPECT_EQ("new", Source().Bytes("from\\a.kra"));
}

TEST_P(PairTest, MoveOntoWhatExistsCostsNothing) {
    Source().MakeFile("from\\a.kra", "new");
    Target().MakeFile("to\\a.kra", "much older");
    OnList(FO_MOVE, {From("a.kra")}, To(""));
    EXPECT_TRUE(Source().Bytes("from\\a.kra") == "new" || Target().Bytes("to\\a.kra") == "new");
}

TEST_P(PairTest, TreeIntoATreeOfItsNameReplacesTheFilesOfItsNames) {
    if (!ToDirectory()) return;
    Source().MakeTree("from\\tree");
    Target().MakeFile("to\\tree\\sub\\b.kra", "old");
    Target().MakeFile("to\\tree\\other.kra", "stays");
    EXPECT_THAT(OnList(FO_MOVE, {From("tree")}, To("")), IsDone());
    StoreContents expected = TestFolder::Tree();
    expected["other.kra"] = "stays";
    EXPECT_EQ(expected, Target().Contents("to\\tree"));
}

TEST_P(PairTest, FolderInTheWayOfAFileStays) {
    Source().MakeFile("from\\a.kra", "1");
    Target().MakeFile("to\\a.kra\\inside.kra", "2");
    for (const bool failIfExists : {true, false}) {
        ExpectRefused([&] { return Copy(From("a.kra"), To("a.kra"), failIfExists); });
    }
    for (const UINT operation : kCopyAndMove) {
        ExpectRefused([&] { return OnItem(operation, From("a.kra"), To("a.kra")); });
    }
}

// What becomes of the file in a folder that a copy is made in is the shell's decision.
TEST_P(PairTest, FileInTheWayOfATreeCostsNothingOfTheTree) {
    Source().MakeTree("from\\tree");
    Target().MakeFile("to\\tree", "2");
    for (const UINT operation : kCopyAndMove) {
        if (ToDirectory() || operation == FO_MOVE) {
            ExpectRefused([&] { return OnList(operation, {From("tree")}, To("")); });
            continue;
        }
        OnList(operation, {From("tree")}, To(""));
        EXPECT_EQ(TestFolder::Tree(), Source().Contents("from\\tree"));
    }
}

TEST_P(PairTest, MissingSourceLeavesNothing) {
    ExpectRefused([&] { return Copy(From("none.kra"), To("a.kra"), false); });
    for (const UINT operation : kCopyAndMove) {
        ExpectRefused([&] { return OnItem(operation, From("none.kra"), To("a.kra")); });
    }
    ExpectRefused([&] { return OnList(FO_COPY, {From("none.kra")}, To("")); });
}

TEST_P(PairTest, TargetOpenElsewhereStays) {
    if (ToDirectory()) return;
    Source().MakeFile("from\\a.kra", "new");
    Target().MakeFile("to\\a.kra", "old");
    const std::string target = Target().At("to\\a.kra");
    for (const bool failIfExists : {true, false}) {
        const OpenElsewhere reader(target, FILE_SHARE_READ);
        EXPECT_THAT(Copy(From("a.kra"), To("a.kra"), failIfExists), Fails());
        for (const UINT operation : kCopyAndMove) {
            EXPECT_THAT(OnItem(operation, From("a.kra"), To("a.kra")), Fails());
            OnList(operation, {From("a.kra")}, To(""));
        }
    }
    EXPECT_EQ("old", Target().Bytes("to\\a.kra"));
    EXPECT_EQ("new", Source().Bytes("from\\a.kra"));
}

TEST_P(PairTest, SourceOpenElsewhereStays) {
    if (FromDirectory()) return;
    Source().MakeFile("from\\a.kra", "1");
    {
        const OpenElsewhere owner(Source().At("from\\a.kra"), 0);
        EXPECT_THAT(Copy(From("a.kra"), To("a.kra"), false), Fails());
        for (const UINT operation : kCopyAndMove) {
            EXPECT_THAT(OnItem(operation, From("a.kra"), To("a.kra")), Fails());
        }
    }
    EXPECT_EQ(StoreContents(), Target().Contents("to"));
    EXPECT_EQ("1", Source().Bytes("from\\a.kra"));
}

TEST_P(PairTest, ListStopsBeforeWhatCannotBeFetchedIsRemoved) {
    Source().MakeFile("from\\a.kra", "1");
    OnList(FO_MOVE, {From("none.kra"), From("a.kra")}, To(""));
    const bool arrived = Target().Bytes("to\\a.kra") == "1";
    EXPECT_TRUE(arrived || Source().Bytes("from\\a.kra") == "1");
}

TEST_P(PairTest, MovedItemWhoseSourceIsHeldByAReaderCountsAsDone) {
    Source().MakeFile("from\\a.kra", "1");
    if (FromDirectory()) {
        // Who may only read can copy, but not delete.
        if (ToDirectory()) return;
        world_.work.paths->At(0)->username = kReader;
        world_.work.paths->At(0)->password = kReaderPassword;
        EXPECT_THAT(OnItem(FO_MOVE, From("a.kra"), To("b.kra")), IsDone());
        // A list says so.
        EXPECT_THAT(OnList(FO_MOVE, {From("a.kra")}, To("")), Fails());
    } else {
        const OpenElsewhere reader(Source().At("from\\a.kra"), FILE_SHARE_READ);
        EXPECT_THAT(OnItem(FO_MOVE, From("a.kra"), To("b.kra")), IsDone());
    }
    EXPECT_EQ("1", Target().Bytes("to\\b.kra"));
    EXPECT_EQ("1", Source().Bytes("from\\a.kra"));
}

INSTANTIATE_TEST_SUITE_P(EveryPair, PairTest, testing::ValuesIn(EveryPair()), PairName);

}  // namespace
}  // namespace depot::test
