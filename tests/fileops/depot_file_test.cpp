#include "fileops/depot_file.h"

#include <gtest/gtest.h>

#include "manager/depot_world.h"
#include "platform/error_text.h"
#include "support/box_log.h"
#include "support/current_folder.h"
#include "support/import_patch.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;
using test::kNo;
using test::kYes;

class FileExistsTest : public testing::Test {
protected:
    test::DepotWorld world_;
    CDepot& work_ = world_.Add("Work", "Travail", "w");
};

TEST_F(FileExistsTest, FilesAndFoldersOfTheDepotExist) {
    world_.folder.MakeFile("w\\a.kra", "");
    world_.folder.MakeFolder("w\\sub");
    world_.folder.MakeFile("w\\sub\\b.kra", "");
    for (const char* path : {"<Work>\\a.kra", "<WORK>\\A.KRA", "<Work>\\sub", "<Work>\\sub\\",
                             "<Work>\\sub\\b.kra", "<Work>\\"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(kYes, FileExists(work_, path));
    }
    EXPECT_EQ(kYes, FileExists(work_, world_.folder.At("w\\a.kra")));
}

TEST_F(FileExistsTest, AnythingElseDoesNot) {
    world_.folder.MakeFile("w\\a.kra", "");
    for (const std::string& path :
         {std::string("<Work>\\none.kra"), std::string("<Work>\\none\\a.kra"), std::string(),
          std::string("<Work>\\a.kra\\b"), std::string("<Travail>\\a.kra"),
          std::string("<None>\\a.kra"), "<Work>\\" + std::string(100'000, 'x')}) {
        SCOPED_TRACE(path.substr(0, 100));
        EXPECT_EQ(kNo, FileExists(work_, path));
    }
}

TEST_F(FileExistsTest, DepotWhoseRootIsMissingHoldsNothing) {
    CDepot& gone = world_.AddAt("Gone", "Gone", world_.folder.At("none"));
    EXPECT_EQ(kNo, FileExists(gone, "<Gone>\\a.kra"));
    EXPECT_EQ(kNo, FileExists(gone, "<Gone>\\"));
}

TEST_F(FileExistsTest, DepotWithoutLocationsHoldsNothing) {
    CDepot empty(nullptr);
    empty.name = "Empty";
    EXPECT_EQ(kNo, FileExists(empty, world_.folder.Path()));
}

TEST_F(FileExistsTest, DirectoryWithoutAServerHoldsNothing) {
    // The missing server is reported in a box.
    const test::BoxLog boxes;
    CDepot& directory = world_.AddAt("Dir", "Dir", "dc=farrow", kDirectoryLocation);
    EXPECT_EQ(kNo, FileExists(directory, "<Dir>\\a.kra"));
}

TEST_F(FileExistsTest, PlainPathBesideADirectoryIsLookedForInTheFileSystem) {
    const test::BoxLog boxes;
    CDepot& directory = world_.AddAt("Dir", "Dir", "dc=farrow", kDirectoryLocation);
    EXPECT_EQ(kYes, FileExists(directory, world_.folder.MakeFile("plain.kra", "")));
    EXPECT_EQ(kYes, FileExists(directory, world_.folder.Path()));
    EXPECT_EQ(kNo, FileExists(directory, world_.folder.At("none.kra")));
    EXPECT_EQ(nullptr, directory.paths->ChosenLocation()) << "a server was asked";
}

class DepotFileTest : public testing::Test {
protected:
    std::string At(const std::string& name) const { return world_.folder.At(name); }
    std::string Make(const std::string& name, const std::string& bytes = "1") {
        return world_.folder.MakeFile(name, bytes);
    }
    // What a failure with this code says of a path.
    static std::string Message(DWORD error, const std::string& path) {
        std::string text;
        FormatErrorText(error, path.c_str(), nullptr, &text, nullptr);
        return text;
    }

    test::DepotWorld world_;
    CDepot& work_ = world_.Add("Work", "Work", "w");
    CDepot& home_ = world_.Add("Home", "Home", "h");
    std::string error_ = "junk";
    const test::BoxLog boxes_;
};

TEST_F(DepotFileTest, DeleteFileRemovesAFileOnly) {
    Make("w\\a.kra");
    world_.folder.MakeFolder("w\\sub");
    EXPECT_THAT(DeleteFile(work_, "<Work>\\a.kra"), IsDone());
    EXPECT_FALSE(test::Exists(At("w\\a.kra")));
    EXPECT_THAT(DeleteFile(work_, "<Work>\\a.kra"), Fails());
    EXPECT_THAT(DeleteFile(work_, "<Work>\\sub"), Fails());
    EXPECT_THAT(DeleteFile(work_, ""), Fails());
    EXPECT_TRUE(test::Exists(At("w\\sub")));
}

TEST_F(DepotFileTest, MoveFileWithoutADestinationDepotRenames) {
    Make("w\\a.kra");
    EXPECT_THAT(MoveFile(work_, "<Work>\\a.kra", "<Work>\\b.kra", nullptr, nullptr, &error_),
                IsDone());
    EXPECT_FALSE(test::Exists(At("w\\a.kra")));
    EXPECT_EQ("1", test::FileBytes(At("w\\b.kra")));
    EXPECT_EQ("junk", error_);
}

BOOL WINAPI ShowNoFacts(HANDLE, BY_HANDLE_FILE_INFORMATION* facts) {
    *facts = {};
    return TRUE;
}

TEST_F(DepotFileTest, FilesAreRenamedAndMovedOnAVolumeThatShowsNoIdentities) {
    const test::ImportPatch<BOOL(WINAPI*)(HANDLE, BY_HANDLE_FILE_INFORMATION*)> facts(
        "GetFileInformationByHandle", &ShowNoFacts);
    ASSERT_TRUE(facts.IsInPlace());
    Make("w\\a.kra");
    EXPECT_THAT(MoveFile(work_, "<Work>\\a.kra", "<Work>\\b.kra", nullptr, nullptr, &error_),
                IsDone());
    EXPECT_THAT(MoveFile(work_, "<Work>\\b.kra", "<Home>\\c.kra", nullptr, &home_, &error_),
                IsDone());
    EXPECT_EQ("1", test::FileBytes(At("h\\c.kra")));
    EXPECT_THAT(MoveFile(home_, "<Home>\\c.kra", "<Home>\\C.kra", nullptr, &home_, &error_),
                Fails());
    EXPECT_EQ("1", test::FileBytes(At("h\\c.kra")));
}

TEST_F(DepotFileTest, RenamingOntoAnExistingFileKeepsBothFiles) {
    Make("w\\a.kra");
    Make("w\\b.kra", "2");
    EXPECT_THAT(MoveFile(work_, "<Work>\\a.kra", "<Work>\\b.kra", nullptr, nullptr, &error_),
                Fails());
    EXPECT_EQ("1", test::FileBytes(At("w\\a.kra")));
    EXPECT_EQ("2", test::FileBytes(At("w\\b.kra")));
}

TEST_F(DepotFileTest, RenamingWhatIsNotThereOrToNothingFails) {
    Make("w\\a.kra");
    EXPECT_THAT(MoveFile(work_, "<Work>\\no", "<Work>\\b.kra", nullptr, nullptr, nullptr), Fails());
    EXPECT_THAT(MoveFile(work_, "<Work>\\a.kra", "", nullptr, nullptr, &error_), Fails());
    EXPECT_TRUE(test::Exists(At("w\\a.kra")));
}

TEST_F(DepotFileTest, PathsOfTheCurrentFolderOrDriveAreNeverWritten) {
    const std::string file = Make("w\\a.kra");
    world_.folder.MakeFolder("now\\sub");
    const test::CurrentFolder current(At("now"));
    for (const std::string& place :
         {std::string("b.kra"), std::string("sub\\b.kra"), std::string(".\\b.kra"),
          std::string("..\\b.kra"), std::string("sub/b.kra"), file.substr(0, 2) + "b.kra",
          std::string("\\depot-test-b.kra"), std::string("<Other>\\b.kra"),
          "\\\\.\\" + At("b.kra")}) {
        SCOPED_TRACE(place);
        for (CDepot* const target : {static_cast<CDepot*>(nullptr), &home_}) {
            EXPECT_THAT(MoveFile(work_, "<Work>\\a.kra", place, nullptr, target, &error_), Fails());
            EXPECT_EQ(Message(ERROR_INVALID_PARAMETER, place), error_);
            EXPECT_THAT(CopyFile(work_, "<Work>\\a.kra", place, target, false, &error_), Fails());
            EXPECT_EQ(Message(ERROR_INVALID_PARAMETER, place), error_);
        }
        EXPECT_FALSE(test::Exists(place));
    }
    EXPECT_EQ("1", test::FileBytes(file));
}

TEST_F(DepotFileTest, DepotWhoseRootIsRelativeKeepsWhatItHolds) {
    world_.folder.MakeFolder("now\\sub");
    const std::string file = Make("now\\sub\\a.kra");
    const test::CurrentFolder current(At("now"));
    CDepot& relative = world_.AddAt("Rel", "Rel", "sub");
    EXPECT_EQ(kYes, FileExists(relative, "<Rel>\\a.kra"));
    EXPECT_THAT(DeleteFile(relative, "<Rel>\\a.kra"), Fails());
    EXPECT_THAT(MoveFile(relative, "<Rel>\\a.kra", At("b.kra"), nullptr, nullptr, &error_),
                Fails());
    EXPECT_THAT(CopyFile(relative, "<Rel>\\a.kra", "<Rel>\\b.kra", &relative, true, &error_),
                Fails());
    EXPECT_EQ("1", test::FileBytes(file));
    EXPECT_FALSE(test::Exists(At("now\\sub\\b.kra")));
    EXPECT_THAT(CopyFile(relative, "<Rel>\\a.kra", At("c.kra"), nullptr, true, &error_), IsDone());
}

TEST_F(DepotFileTest, MoveFileWithADestinationDepotMovesThere) {
    Make("w\\a.kra");
    EXPECT_THAT(MoveFile(work_, "<Work>\\a.kra", "<Home>\\b.kra", nullptr, &home_, &error_),
                IsDone());
    EXPECT_FALSE(test::Exists(At("w\\a.kra")));
    EXPECT_EQ("1", test::FileBytes(At("h\\b.kra")));
}

TEST_F(DepotFileTest, CopyFileWritesIntoAnotherDepotOrToAPlainPath) {
    Make("w\\a.kra");
    EXPECT_THAT(CopyFile(work_, "<Work>\\a.kra", "<Home>\\b.kra", &home_, true, &error_), IsDone());
    EXPECT_EQ("1", test::FileBytes(At("h\\b.kra")));
    EXPECT_THAT(CopyFile(work_, "<Work>\\a.kra", At("c.kra"), nullptr, true, &error_), IsDone());
    EXPECT_EQ("1", test::FileBytes(At("c.kra")));
    EXPECT_TRUE(test::Exists(At("w\\a.kra")));
    EXPECT_EQ("junk", error_);
}

TEST_F(DepotFileTest, CopyFileIntoAFolderKeepsTheName) {
    Make("w\\a.kra");
    EXPECT_THAT(CopyFile(work_, "<Work>\\a.kra", "<Home>\\", &home_, true, nullptr), IsDone());
    EXPECT_EQ("1", test::FileBytes(At("h\\a.kra")));
}

TEST_F(DepotFileTest, CopyFileOntoAnExistingFileFailsWithTheSystemsTextOrReplacesIt) {
    Make("w\\a.kra");
    const std::string target = Make("old.kra", "old");
    EXPECT_THAT(CopyFile(work_, "<Work>\\a.kra", target, nullptr, true, &error_), Fails());
    EXPECT_EQ(Message(ERROR_FILE_EXISTS, target), error_);
    EXPECT_EQ("old", test::FileBytes(target));
    EXPECT_THAT(CopyFile(work_, "<Work>\\a.kra", target, nullptr, false, &error_), IsDone());
    EXPECT_EQ("1", test::FileBytes(target));
}

TEST_F(DepotFileTest, CopyingAFileOntoItselfKeepsIt) {
    Make("w\\a.kra");
    CopyFile(work_, "<Work>\\a.kra", "<Work>\\a.kra", &work_, true, &error_);
    EXPECT_EQ("1", test::FileBytes(At("w\\a.kra")));
}

TEST_F(DepotFileTest, LastErrorCodeIsTheSystems) {
    SetLastError(ERROR_WRITE_PROTECT);
    EXPECT_EQ(DWORD{ERROR_WRITE_PROTECT}, LastErrorCode(work_));
    EXPECT_THAT(DeleteFile(work_, "<Work>\\no.kra"), Fails());
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, LastErrorCode(work_));
}

TEST_F(DepotFileTest, FailureWithoutAnErrorTextIsTheSame) {
    Make("w\\a.kra");
    Make("w\\b.kra", "2");
    EXPECT_THAT(CopyFile(work_, "<Work>\\a.kra", At("w\\b.kra"), nullptr, true, nullptr), Fails());
    EXPECT_THAT(MoveFile(work_, "<Work>\\no", "<Work>\\c.kra", nullptr, nullptr, nullptr), Fails());
    EXPECT_EQ("2", test::FileBytes(At("w\\b.kra")));
}

TEST_F(DepotFileTest, DestinationOf260CharactersIsReportedAsTooLong) {
    Make("w\\a.kra");
    const std::string start = At("missing\\");
    for (const std::size_t length : {259u, 260u, 261u}) {
        SCOPED_TRACE(length);
        const std::string target = start + std::string(length - start.size(), 'x');
        EXPECT_THAT(CopyFile(work_, "<Work>\\a.kra", target, nullptr, true, &error_), Fails());
        const std::string tooLong = Message(ERROR_BUFFER_OVERFLOW, target);
        if (length < 260) {
            EXPECT_NE(tooLong, error_);
        } else {
            EXPECT_EQ(tooLong, error_);
        }
    }
}

}  // namespace
}  // namespace depot
