// Changing and copying files.
#include "component/component.h"
#include "platform/handles.h"
#include "support/box_log.h"
#include "support/current_folder.h"
#include "support/import_patch.h"
#include "support/results.h"

namespace depot::test {
namespace {

class FileMethodsTest : public ComponentTest {
protected:
    std::string Make(const std::string& name, const std::string& bytes) {
        return folder_.MakeFile(name, bytes);
    }
    HRESULT CopyOut(const char* source, const std::string& target, VARIANT_BOOL failIfExists) {
        return api_->DPCopyFileToLocalFS(session_, Text(source), Text(target), failIfExists);
    }
    // Makes a numbered copy and returns its path.
    std::wstring MakeCopy(const char* source, HRESULT expected = S_OK) {
        OutText copy;
        EXPECT_EQ(expected, api_->DPMakeCopyFromSrcFile(session_, Text(source), copy));
        return copy.Value();
    }

    const BoxLog boxes_;
    // A session knows the depots that were there before it.
    const std::string root_ = DefineDepot("Work");
    Session session_{*api_};
};

TEST_F(FileMethodsTest, RenameGivesAFileItsNewName) {
    Make("Work\\a.kra", "1");
    EXPECT_THAT(api_->DPRenameFile(session_, Text("<Work>\\a.kra"), Text("<Work>\\b.kra")), IsOk());
    EXPECT_FALSE(Exists(folder_.At("Work\\a.kra")));
    EXPECT_EQ("1", FileBytes(folder_.At("Work\\b.kra")));
}

TEST_F(FileMethodsTest, RenameRefusesWhatItCannotDo) {
    Make("Work\\a.kra", "1");
    Make("Work\\b.kra", "2");
    const std::string plain = Make("plain.kra", "3");
    const char* const cases[][2] = {
        {"<None>\\a.kra", "<Work>\\c.kra"}, {"<Work>\\none.kra", "<Work>\\c.kra"},
        {"<Work>\\a.kra", "<Work>\\b.kra"}, {"<Work>\\a.kra", ""},
        {"<Work>\\a.kra", "bare.kra"},      {plain.c_str(), "<Work>\\c.kra"}};
    for (const auto& row : cases) {
        SCOPED_TRACE(row[0]);
        EXPECT_THAT(api_->DPRenameFile(session_, Text(row[0]), Text(row[1])), IsRefused());
    }
    EXPECT_EQ("1", FileBytes(folder_.At("Work\\a.kra")));
    EXPECT_EQ("2", FileBytes(folder_.At("Work\\b.kra")));
    EXPECT_FALSE(Exists(folder_.At("Work\\c.kra")));
}

TEST_F(FileMethodsTest, RenameNeverMovesAFileIntoTheCurrentFolderOrDrive) {
    const std::string file = Make("Work\\a.kra", "1");
    folder_.MakeFolder("now\\sub");
    const CurrentFolder current(folder_.At("now"));
    for (const std::string& place :
         {std::string("sub\\b.kra"), std::string(".\\f.kra"), std::string("..\\f.kra"),
          std::string("\\depot-test-x.kra"), file.substr(0, 2) + "d.kra", std::string("sub/b.kra"),
          std::string("bare.kra")}) {
        SCOPED_TRACE(place);
        EXPECT_THAT(api_->DPRenameFile(session_, Text("<Work>\\a.kra"), Text(place)), IsRefused());
        EXPECT_FALSE(Exists(place));
    }
    EXPECT_EQ("1", FileBytes(file));
    EXPECT_THAT(api_->DPRenameFile(session_, Text("<Work>\\a.kra"), Text(root_ + "\\b.kra")),
                IsOk());
    EXPECT_EQ("1", FileBytes(folder_.At("Work\\b.kra")));
}

TEST_F(FileMethodsTest, CopyOutTakesADestinationInTheCurrentFolder) {
    Make("Work\\a.kra", "1");
    const CurrentFolder current(folder_.MakeFolder("now"));
    EXPECT_THAT(CopyOut("<Work>\\a.kra", "out.kra", VARIANT_TRUE), IsOk());
    EXPECT_EQ("1", FileBytes(folder_.At("now\\out.kra")));
}

TEST_F(FileMethodsTest, BareNameOfADepotIsNeitherDeletedNorRenamed) {
    Make("Work\\a.kra", "1");
    EXPECT_THAT(api_->DPDeleteFile(session_, Text("<Work>")), IsRefused());
    EXPECT_THAT(api_->DPRenameFile(session_, Text("<Work>"), Text("<Work>\\sub")), IsRefused());
    EXPECT_THAT(api_->DPRenameFile(session_, Text("<Work>\\a.kra"), Text("<Work>")), IsRefused());
    EXPECT_EQ("1", FileBytes(folder_.At("Work\\a.kra")));
}

TEST_F(FileMethodsTest, DeleteRemovesAFileOfADepotOnly) {
    Make("Work\\a.kra", "1");
    const std::string plain = Make("plain.kra", "2");
    EXPECT_THAT(api_->DPDeleteFile(session_, Text("<Work>\\a.kra")), IsOk());
    EXPECT_FALSE(Exists(folder_.At("Work\\a.kra")));
    EXPECT_THAT(api_->DPDeleteFile(session_, Text("<Work>\\a.kra")), IsRefused());
    EXPECT_THAT(api_->DPDeleteFile(session_, Text("<None>\\a.kra")), IsRefused());
    EXPECT_THAT(api_->DPDeleteFile(session_, Text(plain)), IsRefused());
    EXPECT_TRUE(Exists(plain));
}

TEST_F(FileMethodsTest, CopyOutWritesTheSourcesTextAndMakesItTheCurrentFile) {
    Make("Work\\a.kra", "[S]\r\nK=1\r\n");
    EXPECT_THAT(CopyOut("<Work>\\a.kra", folder_.At("out.kra"), VARIANT_TRUE), IsOk());
    EXPECT_EQ("[S]\r\nK=1\r\n", FileBytes(folder_.At("out.kra")));
    EXPECT_EQ(L"1", Read(session_, L"S", L"K"));
}

TEST_F(FileMethodsTest, CopyOutLeavesAnExistingFileWhenItIsToFail) {
    Make("Work\\a.kra", "new");
    const std::string target = Make("out.kra", "old");
    EXPECT_THAT(CopyOut("<Work>\\a.kra", target, VARIANT_TRUE), IsRefused());
    EXPECT_EQ("old", FileBytes(target));
}

TEST_F(FileMethodsTest, RefusedCopyOutKeepsTheCurrentFile) {
    Make("Work\\a.kra", "[S]\r\nK=a\r\n");
    Make("Work\\b.kra", "[S]\r\nK=b\r\n");
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\a.kra")), IsOk());
    EXPECT_THAT(CopyOut("<Work>\\b.kra", Make("out.kra", "old"), VARIANT_TRUE), IsRefused());
    EXPECT_EQ(L"a", Read(session_, L"S", L"K"));
}

TEST_F(FileMethodsTest, CopyOutWritesBesideAReader) {
    Make("Work\\a.kra", "new");
    const std::string target = Make("out.kra", "much older text");
    const UniqueHandle reader =
        OwnFile(CreateFileA(target.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(reader);
    EXPECT_THAT(CopyOut("<Work>\\a.kra", target, VARIANT_FALSE), IsOk());
    EXPECT_EQ("new", FileBytes(target));
}

TEST_F(FileMethodsTest, CopyOutTakesOneForFalse) {
    Make("Work\\a.kra", "new");
    for (const VARIANT_BOOL overwrite : {VARIANT_BOOL{1}, VARIANT_FALSE}) {
        SCOPED_TRACE(overwrite);
        const std::string target = Make("out.kra", "much older text");
        EXPECT_THAT(CopyOut("<Work>\\a.kra", target, overwrite), IsOk());
        EXPECT_EQ("new", FileBytes(target));
    }
}

TEST_F(FileMethodsTest, CopyOutWithoutASourceCopiesTheCurrentFile) {
    EXPECT_THAT(CopyOut("", folder_.At("none.kra"), VARIANT_FALSE), IsRefused());
    EXPECT_FALSE(Exists(folder_.At("none.kra")));
    const std::string file = Make("Work\\a.kra", "[S]\r\nK=1\r\n");
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\a.kra")), IsOk());
    EXPECT_THAT(CopyOut("", folder_.At("out.kra"), VARIANT_FALSE), IsOk());
    EXPECT_EQ(FileBytes(file), FileBytes(folder_.At("out.kra")));
}

TEST_F(FileMethodsTest, CopyOutOfAMissingSourceMakesAnEmptyFile) {
    EXPECT_THAT(CopyOut("<Work>\\none.kra", folder_.At("out.kra"), VARIANT_TRUE), IsOk());
    EXPECT_EQ("", FileBytes(folder_.At("out.kra")));
}

TEST_F(FileMethodsTest, CopyOutToAnImpossiblePlaceFails) {
    Make("Work\\a.kra", "1");
    EXPECT_THAT(CopyOut("<Work>\\a.kra", folder_.At("no\\out.kra"), VARIANT_FALSE), IsRefused());
    EXPECT_THAT(CopyOut("<Work>\\a.kra", "", VARIANT_FALSE), IsRefused());
}

TEST_F(FileMethodsTest, CopyOutOntoTheSourceItselfKeepsIt) {
    const std::string file = Make("Work\\a.kra", "1");
    EXPECT_THAT(CopyOut("<Work>\\a.kra", file, VARIANT_FALSE), IsRefused());
    EXPECT_EQ("1", FileBytes(file));
}

TEST_F(FileMethodsTest, CopyOutLosesWhatFollowsANulInItsBlock) {
    Make("Work\\a.kra", std::string("one\0two", 7) + std::string(512, 'x') + "next");
    EXPECT_THAT(CopyOut("<Work>\\a.kra", folder_.At("out.kra"), VARIANT_FALSE), IsOk());
    EXPECT_EQ("onenext", FileBytes(folder_.At("out.kra")));
}

TEST_F(FileMethodsTest, CopyTakesTheFirstFreeName) {
    Make("Work\\a.kra", "1");
    const std::wstring first = MakeCopy("<Work>\\a.kra");
    const std::wstring second = MakeCopy("<Work>\\a.kra");
    EXPECT_EQ(L"<Work>\\a - copy.kra", first);
    EXPECT_EQ(L"<Work>\\a - copy (2).kra", second);
    EXPECT_EQ("1", FileBytes(folder_.At("Work\\a - copy.kra")));
    EXPECT_EQ("1", FileBytes(folder_.At("Work\\a - copy (2).kra")));
}

TEST_F(FileMethodsTest, CopyKeepsTheFolderAsItWasWritten) {
    folder_.MakeFolder("Work\\Sub");
    Make("Work\\Sub\\a.kra", "1");
    EXPECT_EQ(L"<WORK>\\sUB\\a - copy.kra", MakeCopy("<WORK>\\sUB\\a.kra"));
    EXPECT_EQ("1", FileBytes(folder_.At("Work\\Sub\\a - copy.kra")));
}

TEST_F(FileMethodsTest, FailedCopyGivesAnEmptyText) {
    Make("plain.kra", "1");
    for (const std::string& source :
         {std::string("<None>\\a.kra"), std::string("<Work>\\no.kra"), std::string("a.kra"),
          std::string(), folder_.At("plain.kra")}) {
        SCOPED_TRACE(source);
        EXPECT_EQ(L"", MakeCopy(source.c_str(), S_FALSE));
    }
}

decltype(&WriteFile) realWrite = nullptr;
int writesLeft = 0;

// The write that fails takes half of its bytes.
BOOL WINAPI FillDisk(HANDLE file, LPCVOID bytes, DWORD length, LPDWORD written, OVERLAPPED* other) {
    if (writesLeft-- != 0) return realWrite(file, bytes, length, written, other);
    realWrite(file, bytes, length / 2, written, other);
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(FileMethodsTest, CopyToALocalFileThatDoesNotFitLeavesTheOldOne) {
    Make("Work\\a.kra", "much longer than what was there before");
    const std::string target = Make("old.kra", "old");
    const ImportPatch<decltype(&WriteFile)> writing("WriteFile", &FillDisk,
                                                    Library::Own().Module());
    ASSERT_TRUE(writing.IsInPlace());
    realWrite = writing.Genuine();
    writesLeft = 0;
    EXPECT_THAT(CopyOut("<Work>\\a.kra", target, VARIANT_FALSE), IsRefused());
    EXPECT_EQ(-2, writesLeft);
    EXPECT_EQ("old", FileBytes(target));
}

TEST_F(FileMethodsTest, CopyToALocalFileKeepsWhatBelongsToTheOldOne) {
    Make("Work\\a.kra", "new");
    const std::string target = Make("old.kra", "old text");
    const std::string other = folder_.At("other.kra");
    ASSERT_TRUE(CreateHardLinkA(other.c_str(), target.c_str(), nullptr));
    SetFileAttributesA(target.c_str(), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_THAT(CopyOut("<Work>\\a.kra", target, VARIANT_FALSE), IsOk());
    EXPECT_EQ("new", FileBytes(other));
    EXPECT_NE(0u, GetFileAttributesA(target.c_str()) & FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(FileMethodsTest, CopyToADeviceIsACopy) {
    Make("Work\\a.kra", "new");
    EXPECT_THAT(CopyOut("<Work>\\a.kra", "NUL", VARIANT_FALSE), IsOk());
}

TEST_F(FileMethodsTest, CopyOverAFileTooLongToBePutBackIsRefused) {
    Make("Work\\a.kra", "new");
    const std::string target = Make("old.kra", "old");
    {
        const UniqueHandle file = OwnFile(
            CreateFileA(target.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        LARGE_INTEGER end = {};
        end.QuadPart = LONGLONG{5} << 30;
        ASSERT_TRUE(SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN));
        ASSERT_TRUE(SetEndOfFile(file.get()));
    }
    EXPECT_THAT(CopyOut("<Work>\\a.kra", target, VARIANT_FALSE), IsRefused());
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    ASSERT_TRUE(GetFileAttributesExA(target.c_str(), GetFileExInfoStandard, &data));
    EXPECT_EQ(1u, data.nFileSizeHigh);
}

TEST_F(FileMethodsTest, DestinationIsLookedAtBeforeAnyLocationIsChosen) {
    depots_.Text("Wrong", "Path1", "no name of an entry");
    depots_.Dword("Wrong", "Type1", 1);
    depots_.Text("Wrong", "Host1", "127.0.0.1");
    depots_.Dword("Wrong", "Port1", 1);
    const Session session(*api_);
    const std::string target = Make("old.kra", "old");
    EXPECT_THAT(
        api_->DPCopyFileToLocalFS(session, Text("<Wrong>\\a.kra"), Text(target), VARIANT_TRUE),
        IsRefused());
    EXPECT_TRUE(boxes_.Texts().empty());
    EXPECT_EQ("old", FileBytes(target));
}

using DirectoryAloneTest = ComponentTest;

TEST_F(DirectoryAloneTest, PlainFileIsNotEmptiedByACopyOntoItself) {
    depots_.Text("Corp", "Path1", "dc=farrow,dc=test");
    depots_.Dword("Corp", "Type1", 1);
    depots_.Text("Corp", "Host1", "127.0.0.1");
    depots_.Dword("Corp", "Port1", 1);
    depots_.Dword("Corp", "Authentication1", 0);
    folder_.MakeFile("plain.kre", "[S]\nK=1\n");
    const BoxLog boxes;
    const Session session(*api_);
    const std::string plain = folder_.At("plain.kre");
    EXPECT_THAT(api_->DPCopyFileToLocalFS(session, Text(plain), Text(plain), VARIANT_FALSE),
                IsRefused());
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    ASSERT_TRUE(GetFileAttributesExA(plain.c_str(), GetFileExInfoStandard, &data));
    EXPECT_EQ(8U, data.nFileSizeLow);
}

}  // namespace
}  // namespace depot::test
