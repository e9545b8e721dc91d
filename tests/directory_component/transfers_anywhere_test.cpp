// Listing, copying, moving and making anywhere: in a depot of either kind and beside the depots.
#include "directory_component/stores_fixture.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

using TransfersAnywhereTest = StoresTest;

TEST_P(TransfersAnywhereTest, FindListsFilesByTheirExtensions) {
    store_.MakeFile("a.kra", "1");
    store_.MakeFile("b.kre", "2");
    store_.MakeFile("Sub\\c.kra", "3");
    EXPECT_THAT(Find(Path("")), UnorderedElementsAre(WidePath("a.kra"), WidePath("b.kre")));
    EXPECT_THAT(Find(Path(""), ".kra;.krv"), ElementsAre(WidePath("a.kra")));
    EXPECT_THAT(Find(Path("*.KRE")), ElementsAre(WidePath("b.kre")));
    // What stands before the dot of a pattern is not looked at.
    EXPECT_THAT(Find(Path("x*.kre")), ElementsAre(WidePath("b.kre")));
    EXPECT_THAT(Find(Path("*")), IsEmpty());
    EXPECT_THAT(Find(Path("Sub")), ElementsAre(WidePath("Sub\\c.kra")));
    EXPECT_THAT(Find(Path("Sub\\")), ElementsAre(WidePath("Sub\\c.kra")));
    EXPECT_THAT(Find(Path(""), "", FIND_FOLDERS), ElementsAre(WidePath("Sub")));
    EXPECT_THAT(Find(Path(""), ".kra", FIND_BOTH),
                UnorderedElementsAre(WidePath("a.kra"), WidePath("Sub")));
    EXPECT_THAT(Find(Path(""), ".none"), IsEmpty());
}

TEST_P(TransfersAnywhereTest, FindListsPlainFoldersAndRefusesWhatIsNone) {
    folder_.MakeFolder("plain");
    const std::string file = folder_.MakeFile("plain\\x.txt", "x");
    store_.MakeFile("a.kra", "1");
    EXPECT_THAT(Find(folder_.At("plain")), ElementsAre(Wide(file)));
    for (const auto& [path, code] :
         {std::pair{Path("None"), DWORD{ERROR_PATH_NOT_FOUND}},
          std::pair{folder_.At("none"), DWORD{ERROR_PATH_NOT_FOUND}},
          std::pair{Path("a.kra"), DWORD{ERROR_DIRECTORY}},
          std::pair{std::string("<Nowhere>"), DWORD{ERROR_PATH_NOT_FOUND}}}) {
        SCOPED_TRACE(path);
        VARIANT paths;
        V_VT(&paths) = VT_BSTR;
        EXPECT_THAT(api2_->Find(Client(), Bstr(path), nullptr, FIND_FILES, &paths), IsRefused());
        EXPECT_EQ(VT_EMPTY, V_VT(&paths));
        EXPECT_EQ(code, LastCode());
    }
    EXPECT_THAT(api2_->Find(Client(), Bstr(Path("")), nullptr, FIND_FILES, nullptr), IsRefused());
}

TEST_P(TransfersAnywhereTest, CopyGoesBetweenAnyTwoPlaces) {
    store_.MakeFile("a.kra", "1");
    EXPECT_THAT(Copy(Path("a.kra"), Path("Sub\\b.kra")), IsOk());
    EXPECT_EQ("1", store_.Bytes("Sub\\b.kra"));
    EXPECT_THAT(Copy(Path("a.kra"), other_.Path("a.kra")), IsOk());
    EXPECT_EQ("1", other_.Bytes("a.kra"));
    EXPECT_THAT(Copy(Path("a.kra"), folder_.At("a.kra")), IsOk());
    EXPECT_EQ("1", FileBytes(folder_.At("a.kra")));
    EXPECT_THAT(Copy(folder_.MakeFile("plain.kra", "2"), Path("Sub\\")), IsOk());
    EXPECT_EQ("2", store_.Bytes("Sub\\plain.kra"));
    EXPECT_EQ("1", store_.Bytes("a.kra"));
}

TEST_P(TransfersAnywhereTest, WhatIsThereIsReplacedOnlyWhenItMay) {
    store_.MakeFile("a.kra", "new");
    other_.MakeFile("a.kra", "old");
    store_.MakeFile("Sub\\a.kra", "old");
    for (const std::string& target : {other_.Path("a.kra"), Path("Sub\\a.kra")}) {
        EXPECT_THAT(Copy(Path("a.kra"), target), IsRefused());
        EXPECT_EQ(ERROR_FILE_EXISTS, LastCode());
        EXPECT_THAT(Move(Path("a.kra"), target), IsRefused());
        EXPECT_EQ(ERROR_FILE_EXISTS, LastCode());
    }
    EXPECT_EQ("old", other_.Bytes("a.kra"));
    EXPECT_EQ("old", store_.Bytes("Sub\\a.kra"));
    EXPECT_THAT(Copy(Path("a.kra"), other_.Path("a.kra"), VARIANT_TRUE), IsOk());
    EXPECT_EQ("new", other_.Bytes("a.kra"));
    EXPECT_THAT(Move(Path("a.kra"), Path("Sub\\a.kra"), VARIANT_TRUE), IsOk());
    EXPECT_EQ("new", store_.Bytes("Sub\\a.kra"));
    EXPECT_FALSE(IsThere(Path("a.kra")));
}

TEST_P(TransfersAnywhereTest, EntryThatHasAnotherFilesShortNameDoesNotReplaceThat) {
    work_.MakeFile("Sub\\a long file name.kra", "mine");
    const std::string name = ShortNameOf(work_.At("Sub\\a long file name.kra"));
    corp_.MakeFile(name, "x");
    corp_.MakeFile("Tree\\Sub\\" + name, "x");
    const StoreContents before = work_.Contents(), entries = corp_.Contents();
    for (const std::string& target : {std::string("Sub\\"), "Sub\\" + name}) {
        SCOPED_TRACE(target);
        EXPECT_THAT(Copy(corp_.Path(name), work_.Path(target), VARIANT_TRUE), IsRefused());
        EXPECT_NE(0u, LastCode());
        EXPECT_THAT(Move(corp_.Path(name), work_.Path(target), VARIANT_TRUE), IsRefused());
    }
    EXPECT_THAT(Copy(corp_.Path("Tree\\Sub"), work_.Path("Sub"), VARIANT_TRUE), IsRefused());
    EXPECT_EQ(before, work_.Contents());
    EXPECT_EQ(entries, corp_.Contents());
}

TEST_P(TransfersAnywhereTest, FileAndFolderNeverReplaceEachOther) {
    store_.MakeFile("a.kra", "1");
    store_.MakeFile("Sub\\b.kra", "2");
    EXPECT_THAT(Copy(Path("a.kra"), Path("Sub"), VARIANT_TRUE), IsRefused());
    EXPECT_THAT(Copy(Path("Sub"), Path("a.kra"), VARIANT_TRUE), IsRefused());
    EXPECT_THAT(Move(Path("a.kra"), Path("Sub"), VARIANT_TRUE), IsRefused());
    EXPECT_THAT(Move(Path("Sub"), Path("a.kra"), VARIANT_TRUE), IsRefused());
    EXPECT_EQ("1", store_.Bytes("a.kra"));
    EXPECT_EQ("2", store_.Bytes("Sub\\b.kra"));
}

TEST_P(TransfersAnywhereTest, TreesAreCopiedAndMovedWhole) {
    store_.MakeFile("Sub\\a.kra", "1");
    store_.MakeFile("Sub\\Deep\\b.kra", "2");
    EXPECT_THAT(Copy(Path("Sub"), other_.Path("Copy")), IsOk());
    EXPECT_EQ("2", other_.Bytes("Copy\\Deep\\b.kra"));
    EXPECT_THAT(Move(Path("Sub"), other_.Path("Moved")), IsOk());
    EXPECT_EQ("1", other_.Bytes("Moved\\a.kra"));
    EXPECT_EQ("2", other_.Bytes("Moved\\Deep\\b.kra"));
    EXPECT_FALSE(IsThere(Path("Sub")));
    EXPECT_THAT(Move(other_.Path("Moved"), other_.Path("Again")), IsOk());
    EXPECT_EQ("2", other_.Bytes("Again\\Deep\\b.kra"));
    EXPECT_FALSE(IsThere(other_.Path("Moved")));
}

TEST_P(TransfersAnywhereTest, MoveGivesAFileItsNameInOtherLetters) {
    store_.MakeFile("a.kra", "1");
    EXPECT_THAT(Move(Path("a.kra"), Path("A.kra")), IsOk());
    EXPECT_EQ("1", store_.Bytes("A.kra"));
}

TEST_P(TransfersAnywhereTest, NothingGoesIntoItselfAndRootsStay) {
    store_.MakeFile("Sub\\a.kra", "1");
    EXPECT_THAT(Copy(Path("Sub"), Path("Sub\\Deep")), IsRefused());
    EXPECT_THAT(Move(Path("Sub"), Path("Sub\\Deep")), IsRefused());
    EXPECT_THAT(Copy(Path("Sub\\a.kra"), Path("Sub\\a.kra"), VARIANT_TRUE), IsRefused());
    for (const std::string& root : {Path(""), std::string(InDirectory() ? "<Corp>" : "<Work>")}) {
        EXPECT_THAT(Move(root, folder_.At("root")), IsRefused());
        EXPECT_THAT(Move(root, other_.Path("root")), IsRefused());
        EXPECT_THAT(Copy(root, folder_.At("")), IsRefused());
    }
    EXPECT_THAT(Move(folder_.At("Work"), folder_.At("root")), IsRefused());
    EXPECT_EQ("1", store_.Bytes("Sub\\a.kra"));
}

TEST_P(TransfersAnywhereTest, MissingSourceChangesNothing) {
    other_.MakeFile("a.kra", "old");
    for (const VARIANT_BOOL mayExist : {VARIANT_FALSE, VARIANT_TRUE}) {
        EXPECT_THAT(Copy(Path("none.kra"), other_.Path("a.kra"), mayExist), IsRefused());
        EXPECT_EQ(ERROR_FILE_NOT_FOUND, LastCode());
        EXPECT_THAT(Move(Path("none.kra"), other_.Path("a.kra"), mayExist), IsRefused());
        EXPECT_EQ(ERROR_FILE_NOT_FOUND, LastCode());
    }
    EXPECT_EQ("old", other_.Bytes("a.kra"));
}

TEST_P(TransfersAnywhereTest, PlacesThatDependOnTheCurrentFolderAreRefused) {
    store_.MakeFile("a.kra", "1");
    for (const char* place : {"b.kra", "sub\\", "\\b.kra", "", "<None>\\b.kra"}) {
        EXPECT_THAT(Copy(Path("a.kra"), place), IsRefused()) << place;
        EXPECT_THAT(Move(Path("a.kra"), place), IsRefused()) << place;
        EXPECT_THAT(MakeFolder(place), IsRefused()) << place;
    }
    EXPECT_EQ("1", store_.Bytes("a.kra"));
}

TEST_P(TransfersAnywhereTest, FoldersAreMadeWithThoseAboveThem) {
    EXPECT_THAT(MakeFolder(Path("One\\Two")), IsOk());
    EXPECT_TRUE(IsThere(Path("One\\Two")));
    EXPECT_THAT(MakeFolder(folder_.At("One\\Two")), IsOk());
    EXPECT_TRUE(IsThere(folder_.At("One\\Two")));
    EXPECT_THAT(MakeFolder(Path("One")), IsRefused());
    EXPECT_EQ(ERROR_FILE_EXISTS, LastCode());
    EXPECT_THAT(MakeFolder(Path("One"), VARIANT_TRUE), IsOk());
    store_.MakeFile("a.kra", "1");
    EXPECT_THAT(MakeFolder(Path("a.kra"), VARIANT_TRUE), IsRefused());
    EXPECT_EQ("1", store_.Bytes("a.kra"));
}

TEST_P(TransfersAnywhereTest, ProgressIsCalledAfterEachFile) {
    store_.MakeFile("Sub\\a.kra", "12");
    store_.MakeFile("Sub\\b.kra", "345");
    ProgressObject progress;
    EXPECT_THAT(Copy(Path("Sub"), folder_.At("out"), VARIANT_FALSE, progress.AsVariant()), IsOk());
    ASSERT_THAT(progress.calls, testing::Not(IsEmpty()));
    EXPECT_EQ((std::vector<double>{2, 2, 5}), progress.calls.back());
}

TEST_P(TransfersAnywhereTest, ProgressThatReturnsFalseOrFailsStopsTheTransfer) {
    store_.MakeFile("Sub\\a.kra", "1");
    store_.MakeFile("Sub\\b.kra", "2");
    const std::function<HRESULT(VARIANT&)> answers[] = {[](VARIANT& result) {
                                                            V_VT(&result) = VT_BOOL;
                                                            V_BOOL(&result) = VARIANT_FALSE;
                                                            return S_OK;
                                                        },
                                                        [](VARIANT& result) {
                                                            V_VT(&result) = VT_I4;
                                                            V_I4(&result) = 0;
                                                            return S_OK;
                                                        },
                                                        [](VARIANT&) { return DISP_E_EXCEPTION; }};
    for (const auto& answer : answers) {
        ProgressObject progress;
        progress.answer = answer;
        EXPECT_THAT(Copy(Path("Sub"), folder_.At("out"), VARIANT_TRUE, progress.AsVariant()),
                    IsRefused());
        EXPECT_EQ(ERROR_CANCELLED, LastCode());
        EXPECT_THAT(Move(Path("Sub"), other_.Path("Moved"), VARIANT_FALSE, progress.AsVariant()),
                    IsRefused());
        EXPECT_EQ("1", store_.Bytes("Sub\\a.kra"));
        EXPECT_EQ("2", store_.Bytes("Sub\\b.kra"));
        EXPECT_THAT(api_->DPDeleteFile(Client(), Text(other_.Path("Moved\\a.kra"))), testing::_);
        EXPECT_THAT(api_->DPDeleteFile(Client(), Text(other_.Path("Moved\\b.kra"))), testing::_);
        RemoveDirectoryA(folder_.At("Work\\Moved").c_str());
        static_cast<void>(api_->DPDeleteFile(Client(), Text("<Corp>\\Moved")));
    }
}

TEST_P(TransfersAnywhereTest, ProgressOfAnotherKindIsRefusedBeforeAnythingIsDone) {
    store_.MakeFile("a.kra", "1");
    ProgressObject mute;
    mute.hasMethod = false;
    VARIANT number = {};
    V_VT(&number) = VT_I4;
    VARIANT nothing = {};
    V_VT(&nothing) = VT_DISPATCH;
    VARIANT dangling = {};
    V_VT(&dangling) = VT_DISPATCH | VT_BYREF;
    for (const VARIANT& progress : {mute.AsVariant(), number, dangling}) {
        EXPECT_THAT(Copy(Path("a.kra"), Path("b.kra"), VARIANT_FALSE, progress), IsRefused());
        EXPECT_EQ(ERROR_INVALID_PARAMETER, LastCode());
    }
    EXPECT_FALSE(IsThere(Path("b.kra")));
    EXPECT_THAT(Copy(Path("a.kra"), Path("b.kra"), VARIANT_FALSE, nothing), IsOk());
}

TEST_P(TransfersAnywhereTest, ProgressMayCallTheSameSessionWhichIsBusy) {
    store_.MakeFile("a.kra", "1");
    ProgressObject progress;
    progress.answer = [this](VARIANT&) {
        OutBool answer;
        EXPECT_THAT(api2_->Exists(Client(), Bstr(Path("a.kra")), answer), IsRefused());
        EXPECT_EQ(ERROR_BUSY, static_cast<DWORD>(LastErrorOf(*api2_, 0).code));
        return S_OK;
    };
    EXPECT_THAT(Copy(Path("a.kra"), folder_.At("b.kra"), VARIANT_FALSE, progress.AsVariant()),
                IsOk());
    EXPECT_EQ(0u, LastCode());
    EXPECT_THAT(boxes_.Texts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Stores, TransfersAnywhereTest,
                         testing::Values(DepotKind::kFolder, DepotKind::kDirectory), DepotKindName);

}  // namespace
}  // namespace depot::test
