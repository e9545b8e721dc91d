#include "fileops/depot_file.h"

#include <gtest/gtest.h>

#include "manager/depot_world.h"
#include "support/box_log.h"

namespace depot {
namespace {

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
        EXPECT_EQ(1, FileExists(work_, path));
    }
    EXPECT_EQ(1, FileExists(work_, world_.folder.At("w\\a.kra")));
}

TEST_F(FileExistsTest, AnythingElseDoesNot) {
    world_.folder.MakeFile("w\\a.kra", "");
    for (const std::string& path :
         {std::string("<Work>\\none.kra"), std::string("<Work>\\none\\a.kra"), std::string(),
          std::string("<Work>\\a.kra\\b"), std::string("<Travail>\\a.kra"),
          std::string("<None>\\a.kra"), "<Work>\\" + std::string(100'000, 'x')}) {
        SCOPED_TRACE(path.substr(0, 100));
        EXPECT_EQ(0, FileExists(work_, path));
    }
}

TEST_F(FileExistsTest, ADepotWhoseRootIsMissingHoldsNothing) {
    CDepot& gone = world_.AddAt("Gone", "Gone", world_.folder.At("none"));
    EXPECT_EQ(0, FileExists(gone, "<Gone>\\a.kra"));
    EXPECT_EQ(0, FileExists(gone, "<Gone>\\"));
}

TEST_F(FileExistsTest, ADepotWithoutLocationsHoldsNothing) {
    CDepot empty(nullptr);
    empty.name = "Empty";
    EXPECT_EQ(0, FileExists(empty, world_.folder.Path()));
}

TEST_F(FileExistsTest, ADirectoryWithoutAServerHoldsNothing) {
    // The missing server is reported in a box.
    const test::BoxLog boxes;
    CDepot& directory = world_.AddAt("Dir", "Dir", "dc=farrow", kDirectoryLocation);
    EXPECT_EQ(0, FileExists(directory, "<Dir>\\a.kra"));
    EXPECT_EQ(0, FileExists(directory, world_.folder.Path()));
}

}  // namespace
}  // namespace depot
