// Names that a directory takes for one although they are written differently: a digit and the same
// digit in a circle or above the line.
#include "directory/dn.h"
#include "directory_pairs/pairs_fixture.h"
#include "fileops/any_place.h"
#include "fileops/any_transfer.h"
#include "fileops/open_stores.h"
#include "platform/system_code_page.h"
#include "support/page_names.h"
#include "support/results.h"

namespace depot::test {
namespace {

class VariantNamesTest : public PairWorldTest {
protected:
    VariantNamesTest() {
        // The program follows the code page from here on.
        InstallSystemCodePage();
        const bool isJapanese = GetACP() == 932;
        plain = isJapanese ? "1" : "2";
        variant = Narrowed(isJapanese ? L"\x2460" : L"\xB2");
        pairs = {{variant, plain}, {plain, variant}};
        EXPECT_FALSE(variant.empty());
    }

    Result Move(const std::string& source, const std::string& target) {
        return Transfer(MoveAnywhere, source, target);
    }
    Result CopyOver(const std::string& source, const std::string& target) {
        return Transfer(CopyAnywhere, source, target);
    }
    StoreContents Stored() { return directory_.Contents("to"); }
    // Empties both folders.
    void StartAgain() {
        for (TestFolder* const folder :
             {static_cast<TestFolder*>(&directory_), static_cast<TestFolder*>(&plain_)}) {
            for (const char* name : {"from", "to"}) {
                AnyPlace place;
                EXPECT_TRUE(FindPlace(world_.depots, folder->Path(name), place));
                OpenStores stores;
                EXPECT_TRUE(stores.Hold(place.Stored()));
                EXPECT_TRUE(place.Stored().store->RemoveTree(place.Stored().path));
                folder->MakeFolder(name);
            }
        }
    }

    std::string plain, variant;
    std::vector<std::pair<std::string, std::string>> pairs;

private:
    template <class Operation>
    Result Transfer(Operation operation, const std::string& source, const std::string& target) {
        AnyPlace from, to;
        EXPECT_TRUE(FindPlace(world_.depots, source, from));
        EXPECT_TRUE(FindPlace(world_.depots, target, to));
        TransferWish wish;
        wish.mayExist = true;
        return operation(from, to, wish);
    }
};

TEST_F(VariantNamesTest, FileThatIsMovedToItsOtherNameIsRenamed) {
    for (const auto& [from, to] : pairs) {
        SCOPED_TRACE(from);
        StartAgain();
        directory_.MakeFile("to\\" + from + ".kra", "1");
        EXPECT_TRUE(Move("<Work>\\to\\" + from + ".kra", "<Work>\\to\\" + to + ".kra"));
        EXPECT_EQ((StoreContents{{to + ".kra", "1"}}), Stored());
    }
}

TEST_F(VariantNamesTest, FileIsNotMovedOrCopiedOntoItselfByOtherNamesOfItsFolder) {
    world_.AddOf(world_.server.Location(EntryDN("cn", variant, directory_.At("to"))), "Twin");
    for (const auto& [from, to] : pairs) {
        SCOPED_TRACE(from);
        StartAgain();
        directory_.MakeFile("to\\" + from + "\\a.kra", "1");
        const StoreContents before = Stored();
        const std::string file = "<Work>\\to\\" + from + "\\a.kra";
        for (const std::string& target :
             {std::string("<Twin>\\a.kra"), "<Work>\\to\\" + to + "\\a.kra"}) {
            SCOPED_TRACE(target);
            // A rename within one folder changes nothing.
            const Result moved = Move(file, target);
            EXPECT_TRUE(moved || moved.Is(Reason::kInvalid)) << moved.Text();
            EXPECT_TRUE(CopyOver(file, target).Is(Reason::kInvalid));
            EXPECT_THAT(Copy(file, target, false), Fails());
            OnItem(FO_MOVE, file, target);
            OnList(FO_MOVE, {file}, target.substr(0, target.size() - 5));
            EXPECT_EQ(before, Stored());
        }
    }
}

TEST_F(VariantNamesTest, FolderIsNeitherMovedNorCopiedIntoItself) {
    for (const auto& [from, to] : pairs) {
        SCOPED_TRACE(from);
        StartAgain();
        directory_.MakeFile("to\\" + from + "\\sub\\a.kra", "1");
        const StoreContents before = Stored();
        const std::string folder = "<Work>\\to\\" + from, inside = "<Work>\\to\\" + to + "\\sub\\x";
        EXPECT_TRUE(Move(folder, inside).Is(Reason::kInvalid));
        EXPECT_TRUE(CopyOver(folder, inside).Is(Reason::kInvalid));
        EXPECT_THAT(OnItem(FO_MOVE, folder, inside), Fails());
        EXPECT_THAT(OnItem(FO_COPY, folder, inside), Fails());
        EXPECT_EQ(before, Stored());
    }
}

TEST_F(VariantNamesTest, TreeOfTwoNamesThatAreOneLosesNoFile) {
    for (const auto& [first, second] : pairs) {
        for (const char* file : {".kra", "\\a.kra"}) {
            SCOPED_TRACE(first + file);
            StartAgain();
            plain_.MakeFile("from\\tree\\" + first + file, "1");
            plain_.MakeFile("from\\tree\\" + second + file, "2");
            const StoreContents before = plain_.Contents("from");
            const std::string source = plain_.Path("from\\tree");
            EXPECT_TRUE(CopyOver(source, "<Work>\\to\\tree").Is(Reason::kExists));
            const StoreContents stored = Stored();
            EXPECT_TRUE(CopyOver(source, "<Work>\\to\\tree").Is(Reason::kExists));
            EXPECT_EQ(stored, Stored());
            EXPECT_THAT(OnItem(FO_MOVE, source, "<Work>\\to\\tree"), Fails());
            EXPECT_THAT(OnList(FO_MOVE, {source}, "<Work>\\to\\"), Fails());
            EXPECT_EQ(stored, Stored());
            EXPECT_EQ(before, plain_.Contents("from"));
        }
    }
}

TEST_F(VariantNamesTest, FileOfAnotherNameIsNotReplacedByAMove) {
    for (const auto& [there, moved] : pairs) {
        SCOPED_TRACE(there);
        StartAgain();
        directory_.MakeFile("to\\" + there + ".kra", "1");
        plain_.MakeFile("from\\" + moved + ".kra", "2");
        const std::string source = plain_.Path("from\\" + moved + ".kra");
        EXPECT_TRUE(Move(source, "<Work>\\to\\" + moved + ".kra").Is(Reason::kExists));
        EXPECT_THAT(OnList(FO_MOVE, {source}, "<Work>\\to\\"), Fails());
        EXPECT_EQ((StoreContents{{there + ".kra", "1"}}), Stored());
        EXPECT_EQ("2", plain_.Bytes("from\\" + moved + ".kra"));
    }
}

TEST_F(VariantNamesTest, FilesOfAListThatAreOneToTheDirectoryDoNotReplaceEachOther) {
    for (const auto& [first, second] : pairs) {
        SCOPED_TRACE(first);
        StartAgain();
        plain_.MakeFile("from\\" + first + ".kra", "1");
        plain_.MakeFile("from\\" + second + ".kra", "2");
        EXPECT_THAT(OnList(FO_COPY,
                           {plain_.Path("from\\" + first + ".kra"),
                            plain_.Path("from\\" + second + ".kra")},
                           "<Work>\\to\\"),
                    Fails());
        EXPECT_EQ((StoreContents{{first + ".kra", "1"}}), Stored());
    }
}

TEST_F(VariantNamesTest, FilesAndTreesAreReplacedUnderTheirOwnNames) {
    for (const std::string& name : {variant, plain}) {
        SCOPED_TRACE(name);
        StartAgain();
        plain_.MakeFile("from\\" + name + "\\" + name + ".kra", "1");
        const std::string source = plain_.Path("from\\" + name), target = "<Work>\\to\\" + name;
        EXPECT_TRUE(CopyOver(source, target));
        plain_.MakeFile("from\\" + name + "\\" + name + ".kra", "2");
        EXPECT_TRUE(CopyOver(source, target));
        EXPECT_EQ("2", directory_.Bytes("to\\" + name + "\\" + name + ".kra"));
        plain_.MakeFile("from\\" + name + "\\" + name + ".kra", "3");
        EXPECT_TRUE(Move(source + "\\" + name + ".kra", target + "\\" + name + ".kra"));
        EXPECT_EQ("3", directory_.Bytes("to\\" + name + "\\" + name + ".kra"));
    }
}

TEST_F(VariantNamesTest, OtherFilesOfTheFolderAreReplacedByMoves) {
    directory_.MakeFile("to\\" + variant + "a.kra", "1");
    directory_.MakeFile("to\\" + plain + "b.kra", "2");
    EXPECT_TRUE(Move("<Work>\\to\\" + variant + "a.kra", "<Work>\\to\\" + plain + "b.kra"));
    EXPECT_EQ((StoreContents{{plain + "b.kra", "1"}}), Stored());
}

}  // namespace
}  // namespace depot::test
