#include "manager/depot_file_context.h"

#include <gtest/gtest.h>

#include "manager/depot_world.h"
#include "platform/handles.h"
#include "platform/text.h"
#include "support/box_log.h"
#include "support/current_folder.h"
#include "support/full_disk.h"
#include "support/import_patch.h"
#include "support/random_text.h"
#include "support/unix_path.h"
#include "support/working_files.h"

namespace depot {
namespace {

class DepotFileContextTest : public testing::Test {
protected:
    DepotFileContextTest() { world_.depots.defaultDepot = &home_; }

    // Creates a file that no depot holds, right below the drive.
    static std::string MakeRootFile(const std::string& path) {
        const UniqueHandle file(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_TRUE(file);
        return path;
    }

    test::DepotWorld world_;
    CDepot& work_ = world_.Add("Work", "Travail", "w");
    CDepot& home_ = world_.Add("Home", "Maison", "h");
};

TEST_F(DepotFileContextTest, EmptyPathLeavesTheContextEmpty) {
    const DepotFileContext file("", world_.depots);
    EXPECT_EQ(nullptr, file.depot);
    EXPECT_EQ("", file.depotPath);
    EXPECT_EQ("", file.localPath);
    EXPECT_FALSE(file.changed);
    EXPECT_FALSE(file.NeedsWorkingCopy());
}

TEST_F(DepotFileContextTest, DisplayPathIsReadFromItsDepotsFolder) {
    const DepotFileContext file("<work>\\sub\\a.kra", world_.depots);
    EXPECT_EQ(&work_, file.depot);
    EXPECT_EQ("<work>\\sub\\a.kra", file.depotPath);
    EXPECT_EQ(world_.folder.At("w\\sub\\a.kra"), file.localPath);
    EXPECT_FALSE(file.changed);
    EXPECT_FALSE(file.NeedsWorkingCopy());
}

TEST_F(DepotFileContextTest, StoragePathUnderARootBelongsToItsDepot) {
    const std::string path = world_.folder.MakeFile("w\\a.kra", "x");
    const DepotFileContext file(path, world_.depots);
    EXPECT_EQ(&work_, file.depot);
    EXPECT_EQ("<Work>\\a.kra", file.depotPath);
    EXPECT_EQ(path, file.localPath);
}

TEST_F(DepotFileContextTest, ExistingFileUnderTheDefaultRootBelongsToTheDefaultDepot) {
    const std::string path = world_.folder.MakeFile("h\\a.kra", "x");
    const DepotFileContext file(path, world_.depots);
    EXPECT_EQ(&home_, file.depot);
    EXPECT_EQ("<Home>\\a.kra", file.depotPath);
    EXPECT_EQ(path, file.localPath);
}

TEST_F(DepotFileContextTest, ExistingFileOutsideEveryRootIsAPlainFile) {
    const std::string path = world_.folder.MakeFile("plain.ini", "x");
    const DepotFileContext file(path, world_.depots);
    EXPECT_EQ(nullptr, file.depot);
    EXPECT_EQ(path, file.depotPath);
    EXPECT_EQ(path, file.localPath);
    EXPECT_FALSE(file.NeedsWorkingCopy());
}

TEST_F(DepotFileContextTest, ExistingFileWhosePathBeginsWithTwoBackslashesIsAPlainFile) {
    const std::string path = test::NetworkPath(world_.folder.MakeFile("plain.ini", "[a]\nb=1\n"));
    ASSERT_TRUE(path.starts_with("\\\\"));
    ASSERT_EQ(std::string::npos, path.find(":\\"));
    const DepotFileContext file(path, world_.depots);
    EXPECT_EQ(nullptr, file.depot);
    EXPECT_EQ(path, file.depotPath);
    EXPECT_EQ(path, file.localPath);
    EXPECT_EQ(1u, file.ReadInt("a", "b", 0));
    const DepotFileContext missing(path + "x", world_.depots);
    EXPECT_EQ(&home_, missing.depot);
}

TEST_F(DepotFileContextTest, ExistingFolderIsAPlainFileToo) {
    EXPECT_EQ(nullptr, DepotFileContext(world_.folder.Path(), world_.depots).depot);
}

TEST_F(DepotFileContextTest, MissingFileOutsideEveryRootBelongsToTheDefaultDepot) {
    const std::string path = world_.folder.At("none.ini");
    const DepotFileContext file(path, world_.depots);
    EXPECT_EQ(&home_, file.depot);
    EXPECT_EQ(path, file.depotPath);
    EXPECT_EQ(path, file.localPath);
}

TEST_F(DepotFileContextTest, PlainFilesPathHasAtLeastEightCharacters) {
    const std::string eight = MakeRootFile("C:\\a.ini");
    const std::string seven = MakeRootFile("C:\\a.in");
    EXPECT_EQ(nullptr, DepotFileContext(eight, world_.depots).depot);
    const DepotFileContext file(seven, world_.depots);
    EXPECT_EQ(&home_, file.depot);
    EXPECT_EQ(seven, file.localPath);
    ::DeleteFileA(eight.c_str());
    ::DeleteFileA(seven.c_str());
}

DWORD WINAPI FindEverything(const char*) {
    return FILE_ATTRIBUTE_NORMAL;
}

TEST_F(DepotFileContextTest, OnlyAnAbsolutePathThatExistsIsAPlainFile) {
    const test::ImportPatch<decltype(&GetFileAttributesA)> attributes("GetFileAttributesA",
                                                                      &FindEverything);
    ASSERT_TRUE(attributes.IsInPlace());
    for (const char* plain : {"\\\\server\\share\\a.ini", "D:\\a.ini", "xyz:\\a.ini"}) {
        SCOPED_TRACE(plain);
        EXPECT_EQ(nullptr, DepotFileContext(plain, world_.depots).depot);
    }
    for (const char* other : {"\\server\\a.ini", "D:folder\\a.ini", "folder\\a.ini",
                              "<None>\\a.ini", "D:\\<x>\\a.ini"}) {
        SCOPED_TRACE(other);
        EXPECT_EQ(&home_, DepotFileContext(other, world_.depots).depot);
    }
}

TEST_F(DepotFileContextTest, RelativePathIsNoPlainFileEvenWhenItExists) {
    world_.folder.MakeFile("relative.ini", "x");
    const test::CurrentFolder current(world_.folder.Path());
    const DepotFileContext file("relative.ini", world_.depots);
    EXPECT_EQ(&home_, file.depot);
    EXPECT_EQ("relative.ini", file.depotPath);
}

TEST_F(DepotFileContextTest, BlanksBehindAPlainFilesPathDoNotHideIt) {
    const std::string path = world_.folder.MakeFile("plain.ini", "x");
    const DepotFileContext file(path + "  ", world_.depots);
    EXPECT_EQ(nullptr, file.depot);
    EXPECT_EQ(path + "  ", file.depotPath);
    EXPECT_EQ(path + "  ", file.localPath);
}

TEST_F(DepotFileContextTest, FileUnderTheUnnamedDepotsRootIsAPlainFile) {
    test::DepotWorld world;
    world.Add("", "My Depot", "m");
    const std::string path = world.folder.MakeFile("m\\a.kra", "x");
    const DepotFileContext file(path, world.depots);
    EXPECT_EQ(nullptr, file.depot);
    EXPECT_EQ(path, file.localPath);
}

TEST_F(DepotFileContextTest, ListWithoutDepotsGivesNoLocalFileForADisplayPath) {
    CDepots empty;
    const DepotFileContext file("<Work>\\a.kra", empty);
    EXPECT_EQ(nullptr, file.depot);
    EXPECT_EQ("<Work>\\a.kra", file.depotPath);
    EXPECT_EQ("", file.localPath);
}

TEST_F(DepotFileContextTest, FileInADirectoryWithoutAServerHasNoLocalFile) {
    // The missing server is reported in a box.
    const test::BoxLog boxes;
    CDepot& directory = world_.AddAt("Dir", "Dir", "dc=farrow", kDirectoryLocation);
    DepotFileContext file("<Dir>\\a.kra", world_.depots);
    EXPECT_EQ(&directory, file.depot);
    EXPECT_EQ("<Dir>\\a.kra", file.depotPath);
    EXPECT_EQ("", file.localPath);
    EXPECT_TRUE(file.NeedsWorkingCopy());
    EXPECT_EQ("default", file.ReadString("S", "K", "default", 100));
    file.WriteString("S", "K", "v");
    EXPECT_TRUE(file.changed);
    EXPECT_EQ("default", file.ReadString("S", "K", "default", 100));
}

TEST_F(DepotFileContextTest, StrangePathsBelongToTheDefaultDepot) {
    for (const std::string& path :
         {std::string("<None>\\a"), std::string("no bracket"), std::string("<Work"),
          std::string("Work>\\a"), std::string("<")}) {
        SCOPED_TRACE(path);
        const DepotFileContext file(path, world_.depots);
        EXPECT_EQ(&home_, file.depot);
        EXPECT_EQ(path, file.depotPath);
        EXPECT_EQ(path, file.localPath);
        EXPECT_EQ("default", file.ReadString("S", "K", "default", 100));
    }
}

TEST_F(DepotFileContextTest, FileOfTheCurrentFolderOrDriveIsReadAndNotWritten) {
    const std::string text = "[S]\r\nK=old\r\n";
    world_.folder.MakeFolder("sub");
    const std::string file = world_.folder.MakeFile("sub\\a.ini", text);
    const test::CurrentFolder current(world_.folder.Path());
    // The drive's own folder on it is the current one.
    const std::string drive = file.substr(0, 2);
    for (const std::string& path : {std::string("sub\\a.ini"), std::string(".\\sub\\a.ini"),
                                    drive + "sub\\a.ini", file.substr(2)}) {
        SCOPED_TRACE(path);
        DepotFileContext context(path, world_.depots);
        EXPECT_EQ(path, context.localPath);
        EXPECT_EQ("old", context.ReadString("S", "K", "default", 100));
        context.WriteString("S", "K", "new");
        EXPECT_TRUE(context.changed);
        EXPECT_EQ(text, test::FileBytes(file));
    }
}

TEST_F(DepotFileContextTest, BareNameWritesNoFileOfTheSystemsFolder) {
    const std::string name = "depot-bare-name-test.ini";
    char windows[MAX_PATH] = {};
    GetWindowsDirectoryA(windows, sizeof(windows));
    const std::string file = std::string(windows) + "\\" + name;
    DepotFileContext context(name, world_.depots);
    context.WriteString("S", "K", "new");
    EXPECT_TRUE(context.changed);
    EXPECT_FALSE(test::Exists(file));
    ::DeleteFileA(file.c_str());
}

TEST_F(DepotFileContextTest, PathThatNoFileCanHaveHasNoLocalFile) {
    const std::string path(100'000, 'x');
    const DepotFileContext file(path, world_.depots);
    EXPECT_EQ(&home_, file.depot);
    EXPECT_TRUE(path == file.depotPath);
    EXPECT_EQ("", file.localPath);
    EXPECT_EQ("default", file.ReadString("S", "K", "default", 100));
}

class CurrentFileTest : public testing::Test {
protected:
    std::string Read(const std::string& key, std::uint32_t size = 100) const {
        return file_.ReadString("Section", key, "default", size);
    }

    void Write(const std::string& key, const std::string& value) {
        file_.WriteString("Section", key, value);
    }

    test::DepotWorld world_;
    CDepot& work_ = world_.Add("Work", "Work", "w");
    DepotFileContext file_{"<Work>\\a.kra", world_.depots};
};

TEST_F(CurrentFileTest, WrittenValuesAreReadBackExactly) {
    for (const char* value : {"plain", " leading", "trailing ", "\"quoted\"", "'quoted'", "'",
                              "a;b", "\xC4\x80\xFF", " 'both' "}) {
        SCOPED_TRACE(value);
        Write("Key", value);
        EXPECT_EQ(value, Read("Key"));
    }
}

TEST_F(CurrentFileTest, ValueThatBeginsWithABlankIsStoredBetweenSingleQuotes) {
    Write("Key", " a");
    EXPECT_EQ("[Section]\r\nKey=' a'\r\n", test::FileBytes(file_.localPath));
}

TEST_F(CurrentFileTest, EmptyValueRemovesTheKey) {
    Write("Key", "v");
    Write("Key", "");
    EXPECT_EQ("default", Read("Key"));
    EXPECT_EQ(std::string::npos, test::FileBytes(file_.localPath).find("Key"));
}

TEST_F(CurrentFileTest, ValueThatEqualsTheComparisonRemovesTheKey) {
    Write("Key", "v");
    const std::string comparison = "Standard";
    file_.WriteString("Section", "Key", "other", &comparison);
    EXPECT_EQ("other", Read("Key"));
    file_.WriteString("Section", "Key", "STANDARD", &comparison);
    EXPECT_EQ("default", Read("Key"));
    file_.WriteString("Section", "Key", "STANDARD");
    EXPECT_EQ("STANDARD", Read("Key"));
    const std::string none;
    file_.WriteString("Section", "Key", "again", &none);
    EXPECT_EQ("again", Read("Key"));
}

TEST_F(CurrentFileTest, EveryWriteMarksTheFileAsChanged) {
    EXPECT_FALSE(file_.changed);
    Write("Key", "");
    EXPECT_TRUE(file_.changed);
    file_.changed = false;
    Write("Key", "v");
    EXPECT_TRUE(file_.changed);
}

TEST_F(CurrentFileTest, ReadDoesNotMarkTheFileAsChanged) {
    Read("Key");
    file_.ReadInt("Section", "Key", 1);
    EXPECT_FALSE(file_.changed);
}

TEST_F(CurrentFileTest, WriteWithoutALocalFileOnlyMarksTheContext) {
    DepotFileContext empty("", world_.depots);
    empty.WriteString("Section", "Key", "v");
    EXPECT_TRUE(empty.changed);
    EXPECT_EQ("default", empty.ReadString("Section", "Key", "default", 100));
}

TEST_F(CurrentFileTest, RefusedWriteIsNotReportedAndLosesNothing) {
    world_.folder.MakeFile("w\\a.kra", "[Section]\r\nKey=old\r\n");
    const UniqueHandle holder(CreateFileA(file_.localPath.c_str(), GENERIC_READ, FILE_SHARE_READ,
                                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    Write("Key", "new");
    EXPECT_TRUE(file_.changed);
    EXPECT_EQ("old", Read("Key"));
}

TEST_F(CurrentFileTest, FolderInPlaceOfTheFileGivesDefaults) {
    world_.folder.MakeFolder("w\\a.kra");
    EXPECT_EQ("default", Read("Key"));
    EXPECT_EQ(7u, file_.ReadInt("Section", "Key", 7));
    Write("Key", "v");
    EXPECT_EQ("default", Read("Key"));
}

TEST_F(CurrentFileTest, ValueIsCutToTheSize) {
    Write("Key", "sixsix");
    EXPECT_EQ("", Read("Key", 0));
    EXPECT_EQ("", Read("Key", 1));
    EXPECT_EQ("six", Read("Key", 4));
    EXPECT_EQ("sixsix", Read("Key", 0xFFFFFFFF));
}

TEST_F(CurrentFileTest, NumbersAreReadAsTheSystemReadsThem) {
    const struct {
        const char* value;
        std::uint32_t number;
    } rows[] = {{"42", 42}, {" 7 ", 7}, {"12abc", 12}, {"text", 0}, {"0", 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        world_.folder.MakeFile("w\\a.kra", std::string("[Section]\r\nKey=") + row.value + "\r\n");
        EXPECT_EQ(row.number, file_.ReadInt("Section", "Key", 99));
    }
    EXPECT_EQ(99u, file_.ReadInt("Section", "None", 99));
    EXPECT_EQ(0xFFFFFFFFu, file_.ReadInt("Section", "None", 0xFFFFFFFF));
    EXPECT_EQ(0x80000000u, file_.ReadInt("None", "Key", 0x80000000));
}

TEST_F(CurrentFileTest, ReleasingAFileInAFolderLeavesItAsItIs) {
    Write("Key", "v");
    const std::string bytes = test::FileBytes(file_.localPath);
    file_.Release();
    EXPECT_EQ(bytes, test::FileBytes(file_.localPath));
}

constexpr char kProfile[] = "[S]\r\nA=1\r\nK=old\r\nZ=26\r\n";

TEST_F(DepotFileContextTest, FileThatAFullDiskCutsGetsBackWhatItHeld) {
    const std::string path = world_.folder.MakeFile("w\\a.kra", kProfile);
    const test::BoxLog boxes;
    DepotFileContext file("<Work>\\a.kra", world_.depots);
    for (const auto answer : {test::CutWrite::kFails, test::CutWrite::kSucceeds}) {
        const test::FullDisk full(path, answer);
        file.WriteString("S", "K", "new");
        EXPECT_EQ(kProfile, test::FileBytes(path));
    }
    EXPECT_TRUE(file.Release());
    EXPECT_TRUE(boxes.Boxes().empty());
}

// Lets the bytes of recovered files through.
decltype(&WriteFile) realWrite = nullptr;
int refusedWrites = 0;

BOOL WINAPI RefuseFirstWrites(HANDLE file, LPCVOID bytes, DWORD length, LPDWORD written,
                              OVERLAPPED* overlapped) {
    if (refusedWrites-- <= 0) return realWrite(file, bytes, length, written, overlapped);
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(DepotFileContextTest, BytesOfACutFileThatCannotBePutBackAreRecovered) {
    const std::string path = world_.folder.MakeFile("w\\a.kra", kProfile);
    const test::CleanWorkingFiles clean;
    const test::BoxLog boxes;
    DepotFileContext file("<Work>\\a.kra", world_.depots);
    {
        const test::FullDisk full(path, test::CutWrite::kFails);
        const test::ImportPatch<decltype(&WriteFile)> writing("WriteFile", &RefuseFirstWrites);
        ASSERT_TRUE(writing.IsInPlace());
        realWrite = writing.Genuine();
        refusedWrites = 2;
        file.WriteString("S", "K", "new");
    }
    ASSERT_EQ(1u, test::RecoveredFiles().size());
    const std::string kept = test::RecoveredFiles().front();
    EXPECT_EQ(kProfile, test::FileBytes(kept));
    ASSERT_EQ(1u, boxes.Texts().size());
    EXPECT_TRUE(boxes.Texts().front().starts_with(path + "\n"));
    EXPECT_TRUE(boxes.Texts().front().ends_with("\n" + kept)) << boxes.Texts().front();
}

}  // namespace
}  // namespace depot
