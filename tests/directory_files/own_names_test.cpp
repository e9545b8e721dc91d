// Depots over directories with classes and attributes of their own.
#include "directory_files/directory_world.h"
#include "fileops/depot_file.h"
#include "fileops/enumerate.h"
#include "fileops/item_operations.h"
#include "fileops/numbered_copy.h"
#include "support/results.h"

namespace depot {
namespace {

using test::FileBytes;
using test::IsDone;
using test::kYes;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

// Folders are organizational units, and files are accounts with their bytes in the description.
class DepotWithItsOwnNames : public test::DirectoryWorldTest {
protected:
    DepotWithItsOwnNames() {
        CDepotPath& location = *work_->paths->At(0);
        location.folderAttributeName = "ou";
        location.folderObjectClass = "organizationalUnit";
        location.fileAttributeName = "uid";
        location.fileObjectClass = "account";
        location.fileContentsAttributeName = "description";
    }
    std::string Entry(const std::string& dn) { return server_.Show(DN(dn)); }
    std::vector<std::string> List(const std::string& folder) {
        CDepotItems items;
        const CDepotItem item(folder, work_);
        Enumerate(items, &item, ".*", {}, false);
        std::vector<std::string> paths;
        for (std::size_t index = 0; index < items.Count(); ++index) {
            paths.push_back(items.At(index)->path);
        }
        return paths;
    }
};

TEST_F(DepotWithItsOwnNames, TakesFilesUnderThem) {
    Make("h\\a.kra", "bytes");
    EXPECT_THAT(CopyFile(home_, "<Home>\\a.kra", "<Work>\\sub\\a.kra", work_, true, &error_),
                IsDone());
    EXPECT_THAT(Entry("ou=sub"), HasSubstr("objectClass: organizationalUnit\n"));
    EXPECT_THAT(Entry("uid=a.kra,ou=sub"), HasSubstr("objectClass: account\n"));
    EXPECT_THAT(Entry("uid=a.kra,ou=sub"), HasSubstr("description: bytes\n"));
}

TEST_F(DepotWithItsOwnNames, ListsAndFetchesThem) {
    MakeTree();
    EXPECT_THAT(CopyFile(home_, At("tree"), "<Work>\\tree", work_, true, &error_), IsDone());
    EXPECT_THAT(List("<Work>\\tree"),
                UnorderedElementsAre("<Work>\\tree\\a.kra", "<Work>\\tree\\sub"));
    EXPECT_EQ(kYes, FileExists(*work_, "<Work>\\tree\\sub\\b.kra"));
    EXPECT_THAT(CopyFile(*work_, "<Work>\\tree", "<Home>\\out", &home_, true, &error_), IsDone());
    EXPECT_EQ("1", FileBytes(At("h\\out\\a.kra")));
    EXPECT_EQ("2", FileBytes(At("h\\out\\sub\\b.kra")));
}

TEST_F(DepotWithItsOwnNames, CopiesRenamesAndDeletesThem) {
    MakeTree();
    EXPECT_THAT(CopyFile(home_, At("tree"), "<Work>\\tree", work_, true, &error_), IsDone());
    EXPECT_EQ("<Work>\\tree\\a - copy.kra",
              MakeNumberedCopy(world_.depots, "<Work>\\tree\\a.kra", CopyNameStyle::kDash));
    EXPECT_THAT(
        MoveFile(*work_, "<Work>\\tree\\a.kra", "<Work>\\tree\\c.kra", nullptr, nullptr, &error_),
        IsDone());
    EXPECT_THAT(MoveFile(*work_, "<Work>\\tree", "<Work>\\moved", nullptr, nullptr, &error_),
                IsDone());
    EXPECT_THAT(List("<Work>\\moved"),
                UnorderedElementsAre("<Work>\\moved\\a - copy.kra", "<Work>\\moved\\c.kra",
                                     "<Work>\\moved\\sub"));
    EXPECT_THAT(Entry("uid=b.kra,ou=sub,ou=moved"), HasSubstr("description: 2\n"));
    EXPECT_THAT(DeleteFile(*work_, "<Work>\\moved"), IsDone());
    EXPECT_TRUE(List("<Work>\\").empty());
    EXPECT_FALSE(server_.Holds(DN("ou=moved")));
}

}  // namespace
}  // namespace depot
