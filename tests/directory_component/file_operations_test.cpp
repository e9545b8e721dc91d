// Changing, copying and listing files of a depot of either kind, through the interface alone.
#include <gmock/gmock.h>

#include <algorithm>

#include "directory_component/stores_fixture.h"
#include "support/current_folder.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr char kProfile[] = "[S]\r\nK=1\r\n";

using FileOperationsTest = StoresTest;

TEST_P(FileOperationsTest, RenamedFileHasItsNewNameAndPlace) {
    store_.MakeFile("a.kra", "1");
    EXPECT_THAT(Rename(Path("a.kra"), Path("b.kra")), IsOk());
    EXPECT_THAT(Rename(Path("b.kra"), Path("Sub\\c.kra")), IsOk());
    EXPECT_EQ((StoreContents{{"Sub", kFolderMark}, {"Sub\\c.kra", "1"}}), store_.Contents());
}

TEST_P(FileOperationsTest, RenamedTreeKeepsItsShape) {
    store_.MakeTree("tree");
    EXPECT_THAT(Rename(Path("tree"), Path("Sub\\tree")), IsOk());
    EXPECT_EQ(TestFolder::Tree(), store_.Contents("Sub\\tree"));
    EXPECT_FALSE(store_.Holds("tree"));
}

TEST_P(FileOperationsTest, RenameRefusesWhatItCannotDo) {
    store_.MakeFile("a.kra", "1");
    store_.MakeFile("b.kra", "2");
    store_.MakeTree("tree");
    ExpectNotRenamed(Path("none.kra"), Path("c.kra"));
    ExpectNotRenamed(Path("a.kra"), Path("b.kra"));
    ExpectNotRenamed(Path("a.kra"), Path("tree"));
    ExpectNotRenamed(Path("a.kra"), "");
    ExpectNotRenamed("", Path("c.kra"));
    ExpectNotRenamed("<Nowhere>\\a.kra", Path("c.kra"));
    ExpectNotRenamed(Path("tree"), Path("tree\\sub\\tree"));
    ExpectNotRenamed(Path("tree"), Path("tree\\new"));
    ExpectNotRenamed(Path(""), Path("Sub\\all"));
    EXPECT_THAT(api_->DPRenameFile(0, Text(Path("a.kra")), Text(Path("c.kra"))), IsRefused());
}

TEST_P(FileOperationsTest, RenameNeverLeadsIntoTheCurrentFolder) {
    store_.MakeFile("a.kra", "1");
    folder_.MakeFolder("now\\sub");
    const CurrentFolder current(folder_.At("now"));
    const std::string drive = folder_.Path().substr(0, 2);
    for (const std::string& place :
         {std::string("sub\\b.kra"), std::string(".\\f.kra"), std::string("..\\f.kra"),
          std::string("\\depot-test-x.kra"), drive + "d.kra", std::string("bare.kra")}) {
        ExpectNotRenamed(Path("a.kra"), place);
        EXPECT_FALSE(Exists(place)) << place;
    }
}

TEST_P(FileOperationsTest, BareNameOfTheDepotStandsForItsRoot) {
    store_.MakeFile("a.kra", "1");
    const std::string root = Path("");
    const std::string bare = root.substr(0, root.size() - 1);
    LONG_PTR list = 0;
    LONG count = 0;
    ASSERT_THAT(api_->DPFindInit(&list, Text(bare), Text(".kra"), APP_SKEIN, &count), IsOk());
    std::vector<std::wstring> found;
    for (LONG index = 0; index < count; ++index) {
        OutText path;
        EXPECT_THAT(api_->DPFindNext(list, index, path), IsOk());
        found.push_back(path.Value());
    }
    EXPECT_THAT(api_->DPUnInitialize(list), IsOk());
    EXPECT_THAT(found, testing::Contains(WidePath("a.kra")));
    EXPECT_THAT(api_->DPFileExists(Client(), Text(bare)), IsOk());
    EXPECT_THAT(api_->DPIsPathWriteAble(Client(), Text(bare)), IsOk());
    const StoreContents before = store_.Contents();
    EXPECT_THAT(Delete(bare), IsRefused());
    EXPECT_EQ(before, store_.Contents());
    ExpectNotRenamed(bare, Path("Sub\\all"));
    ExpectNotRenamed(Path("a.kra"), bare);
}

TEST_P(FileOperationsTest, DeletedFileIsGoneAndNothingElse) {
    store_.MakeFile("a.kra", "1");
    store_.MakeFile("b.kra", "2");
    EXPECT_THAT(Delete(Path("a.kra")), IsOk());
    EXPECT_THAT(Delete(Path("a.kra")), IsRefused());
    const StoreContents before = store_.Contents();
    for (const std::string& path : {Path(""), Path("none.kra"), std::string("<Nowhere>\\b.kra"),
                                    std::string("b.kra"), std::string()}) {
        SCOPED_TRACE(path);
        EXPECT_THAT(Delete(path), IsRefused());
        EXPECT_EQ(before, store_.Contents());
    }
    EXPECT_THAT(api_->DPDeleteFile(0, Text(Path("b.kra"))), IsRefused());
    EXPECT_EQ("2", store_.Bytes("b.kra"));
}

TEST_P(FileOperationsTest, DeletedFolderOfADirectoryTakesAllThatItHolds) {
    store_.MakeTree("tree");
    EXPECT_EQ(InDirectory() ? S_OK : S_FALSE, Delete(Path("tree")));
    EXPECT_EQ(InDirectory() ? StoreContents() : TestFolder::Tree(), store_.Contents("tree"));
}

TEST_P(FileOperationsTest, NumberedCopyTakesTheFirstFreeName) {
    store_.MakeFile("Sub\\a.kra", "1");
    store_.MakeFile("Sub\\a - copy (2).kra", "other");
    EXPECT_EQ(WidePath("Sub\\a - copy.kra"), MakeCopy(Path("Sub\\a.kra")));
    EXPECT_EQ(WidePath("Sub\\a - copy (3).kra"), MakeCopy(Path("Sub\\a.kra")));
    EXPECT_EQ((StoreContents{{"a - copy (2).kra", "other"},
                             {"a - copy (3).kra", "1"},
                             {"a - copy.kra", "1"},
                             {"a.kra", "1"}}),
              store_.Contents("Sub"));
}

TEST_P(FileOperationsTest, NumberedCopyKeepsTheFolderAsItWasWritten) {
    store_.MakeFile("Sub\\a.kra", "1");
    std::string source = Path("sUB\\a.kra");
    std::transform(source.begin(), source.begin() + 5, source.begin(),
                   [](char c) { return static_cast<char>(std::toupper(c)); });
    EXPECT_EQ(Wide(source.substr(0, source.size() - 4)) + L" - copy.kra", MakeCopy(source));
    EXPECT_EQ("1", store_.Bytes("Sub\\a - copy.kra"));
}

TEST_P(FileOperationsTest, NumberedCopyOfAnyNameIsACopy) {
    for (const std::string name :
         {"%s.kra", "%n", "%99999d.kra", "trailing %", "(.kra", "((3).kra", "(99999999999).kra"}) {
        SCOPED_TRACE(name);
        store_.MakeFile("Sub\\" + name, "1");
        MakeCopy(Path("Sub\\" + name));
        StoreContents there = store_.Contents("Sub");
        EXPECT_EQ(2u, there.size());
        for (const auto& [path, bytes] : there) {
            EXPECT_EQ("1", bytes) << path;
            EXPECT_THAT(Delete(Path("Sub\\" + path)), IsOk()) << path;
        }
    }
}

TEST_P(FileOperationsTest, NumberedCopyOfNothingGivesAnEmptyText) {
    const StoreContents before = store_.Contents();
    for (const std::string& source :
         {Path("none.kra"), Path(""), std::string("<Nowhere>\\a.kra"), std::string("a.kra")}) {
        SCOPED_TRACE(source);
        EXPECT_EQ(L"", MakeCopy(source, S_FALSE));
    }
    EXPECT_EQ(before, store_.Contents());
    OutText untouched;
    EXPECT_THAT(api_->DPMakeCopyFromSrcFile(0, Text(Path("a.kra")), untouched), IsRefused());
    EXPECT_TRUE(untouched.IsUntouched());
}

TEST_P(FileOperationsTest, CopyOutWritesTheSourcesTextAndMakesItTheCurrentFile) {
    store_.MakeFile("a.kra", kProfile);
    EXPECT_THAT(CopyOut(Path("a.kra"), folder_.At("out.kra"), VARIANT_TRUE), IsOk());
    EXPECT_EQ(kProfile, FileBytes(folder_.At("out.kra")));
    EXPECT_EQ(L"1", Value(L"S", L"K"));
}

TEST_P(FileOperationsTest, CopyOutFailsOnAnExistingFileWhenAskedToAndOneIsNotAsking) {
    store_.MakeFile("a.kra", kProfile);
    const std::string target = folder_.MakeFile("out.kra", "much older than that");
    EXPECT_THAT(CopyOut(Path("a.kra"), target, VARIANT_TRUE), IsRefused());
    EXPECT_EQ("much older than that", FileBytes(target));
    EXPECT_THAT(CopyOut(Path("a.kra"), target, VARIANT_BOOL{1}), IsOk());
    EXPECT_EQ(kProfile, FileBytes(target));
}

TEST_P(FileOperationsTest, CopyOutOfAMissingSourceMakesAnEmptyFile) {
    EXPECT_THAT(CopyOut(Path("none.kra"), folder_.At("out.kra"), VARIANT_TRUE), IsOk());
    EXPECT_EQ("", FileBytes(folder_.At("out.kra")));
}

TEST_P(FileOperationsTest, CopyOutStoresTheChangedFileBeforeIt) {
    store_.MakeFile("a.kra", kProfile);
    store_.MakeFile("b.kra", "[S]\r\nK=b\r\n");
    Load(Path("a.kra"));
    EXPECT_THAT(api_->DPSetProfileString(Client(), Text("S"), Text("K"), Text("2")), IsOk());
    EXPECT_THAT(CopyOut(Path("b.kra"), folder_.At("out.kra")), IsOk());
    EXPECT_EQ("[S]\r\nK=2\r\n", store_.Bytes("a.kra"));
    EXPECT_EQ(L"b", Value(L"S", L"K"));
    // Without a source the current file is copied.
    EXPECT_THAT(CopyOut("", folder_.At("again.kra")), IsOk());
    EXPECT_EQ("[S]\r\nK=b\r\n", FileBytes(folder_.At("again.kra")));
}

TEST_P(FileOperationsTest, CopyOutToAFileOpenElsewhereFails) {
    store_.MakeFile("a.kra", kProfile);
    const std::string target = folder_.MakeFile("out.kra", "old");
    const HANDLE reader = CreateFileA(target.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_THAT(CopyOut(Path("a.kra"), target), IsRefused());
    CloseHandle(reader);
    EXPECT_EQ("old", FileBytes(target));
}

TEST_P(FileOperationsTest, ListingFindsTheFilesOfOneTypeAndKeepsEverySecondOther) {
    for (const char* name : {"a.krv", "b.krv", "c.kra", "d.txt"}) store_.MakeFile(name, "x");
    const auto list = [&](const std::string& folder, const char* extensions, APP_TYPE type) {
        LONG_PTR handle = 0;
        LONG count = -1;
        EXPECT_THAT(api_->DPFindInit(&handle, Text(folder), Text(extensions), type, &count),
                    IsOk());
        std::vector<std::wstring> found;
        for (LONG index = 0; index < count; ++index) {
            OutText path;
            EXPECT_THAT(api_->DPFindNext(handle, index, path), IsOk());
            found.push_back(path.Value());
        }
        OutText none;
        EXPECT_THAT(api_->DPFindNext(handle, count, none), IsRefused());
        EXPECT_TRUE(none.IsNull());
        EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
        return found;
    };
    const auto skeins = list(Path(""), ".kra", APP_SKEIN);
    EXPECT_THAT(skeins, testing::Contains(WidePath("c.kra")));
    const auto kickoffs = list(Path(""), ".krv", APP_KICKOFF);
    EXPECT_THAT(kickoffs, testing::IsSupersetOf({WidePath("a.krv"), WidePath("b.krv")}));
    EXPECT_TRUE(list(Path("Sub"), ".kra", APP_SKEIN).empty());
    EXPECT_TRUE(list("<Nowhere>\\x", ".kra", APP_SKEIN).empty());
    EXPECT_THAT(Delete(Path("c.kra")), IsOk());
    EXPECT_THAT(list(Path(""), ".kra", APP_SKEIN),
                testing::Not(testing::Contains(WidePath("c.kra"))));
}

TEST_P(FileOperationsTest, WritabilityIsFoundByTryingAndLeavesNothing) {
    store_.MakeFile("a.kra", kProfile);
    const auto isWritable = [&](const std::string& path) {
        return api_->DPIsPathWriteAble(Client(), Text(path)) == S_OK;
    };
    const StoreContents before = store_.Contents();
    for (const char* name : {"", "Sub", "Sub\\", "a.kra", "new.kra", "Sub\\new.kra"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(isWritable(Path(name)));
        EXPECT_EQ(before, store_.Contents());
    }
    // A directory makes the folders of a file, a folder depot does not.
    EXPECT_EQ(InDirectory(), isWritable(Path("none\\new.kra")));
    EXPECT_EQ(before, store_.Contents());
    EXPECT_FALSE(isWritable("<Nowhere>\\a.kra"));
}

INSTANTIATE_TEST_SUITE_P(EveryDepot, FileOperationsTest,
                         testing::Values(DepotKind::kFolder, DepotKind::kDirectory), DepotKindName);

class FolderWritabilityTest : public ComponentTest {
protected:
    bool IsWritable(const std::string& path) {
        const Session session(*api_);
        return api_->DPIsPathWriteAble(session, Text(path)) == S_OK;
    }
    static constexpr char kProbe[] = "Work\\____Test____Writable____File___.twr";
    const std::string root_ = DefineDepot("Work");
};

TEST_F(FolderWritabilityTest, ProbeFileThatIsThereStays) {
    folder_.MakeFile(kProbe, "mine");
    EXPECT_TRUE(IsWritable("<Work>\\"));
    EXPECT_EQ("mine", FileBytes(folder_.At(kProbe)));
}

TEST_F(FolderWritabilityTest, FileOpenElsewhereIsNotWritable) {
    const std::string file = folder_.MakeFile("Work\\a.kra", "1");
    const HANDLE owner = CreateFileA(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_FALSE(IsWritable("<Work>\\a.kra"));
    CloseHandle(owner);
    // It is tested anew each time.
    EXPECT_TRUE(IsWritable("<Work>\\a.kra"));
    EXPECT_EQ("1", FileBytes(file));
}

TEST_F(FolderWritabilityTest, ProbeFileOpenElsewhereMakesItsFolderNotWritable) {
    const std::string probe = folder_.MakeFile(kProbe, "mine");
    const HANDLE owner = CreateFileA(probe.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_FALSE(IsWritable("<Work>\\"));
    CloseHandle(owner);
    EXPECT_TRUE(Exists(probe));
}

TEST_F(FolderWritabilityTest, PlaceBelowAFileOrAMissingFolderIsNotWritable) {
    folder_.MakeFile("Work\\a.kra", "1");
    EXPECT_FALSE(IsWritable("<Work>\\a.kra\\b.kra"));
    EXPECT_FALSE(IsWritable("<Work>\\none\\b.kra"));
    EXPECT_FALSE(Exists(folder_.At("Work\\none")));
}

}  // namespace
}  // namespace depot::test
