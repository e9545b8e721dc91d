#include "directory/local_listing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/scratch.h"

namespace depot {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

class LocalListingTest : public testing::Test {
protected:
    LocalListingTest() {
        folder_.MakeFolder("b\\c");
        folder_.MakeFile("a.krc", "x");
        folder_.MakeFile("plain", "x");
        folder_.MakeFile("b\\d.krc", "x");
    }
    std::vector<std::string> Found() const {
        std::vector<std::string> found;
        for (const CLDAPItem* item : items_) {
            found.push_back((item->isFolder ? "folder " : "file ") +
                            item->path.substr(folder_.Path().size()));
        }
        return found;
    }

    test::ScratchFolder folder_;
    LdapItemList items_;
};

TEST_F(LocalListingTest, FoldersBelowAreFoundAtEveryDepthAndFilesAreNot) {
    AddLocalFoldersBelow(folder_.Path(), items_);
    EXPECT_THAT(Found(), ElementsAre("folder \\b", "folder \\b\\c"));
}

TEST_F(LocalListingTest, ChildrenAreFilesAndOnRequestFolders) {
    AddLocalChildren(folder_.Path() + "\\", Subfolders::kLeaveOut, items_);
    EXPECT_THAT(Found(), UnorderedElementsAre("file \\a.krc", "file \\plain"));
    items_.Clear();
    AddLocalChildren(folder_.Path(), Subfolders::kTake, items_);
    EXPECT_THAT(Found(), UnorderedElementsAre("file \\a.krc", "file \\plain", "folder \\b"));
}

TEST_F(LocalListingTest, APathCountsAsAFolderWhenItIsOne) {
    AddLocalPath(folder_.At("b"), items_);
    AddLocalPath(folder_.At("a.krc"), items_);
    AddLocalPath(folder_.At("missing"), items_);
    EXPECT_THAT(Found(), ElementsAre("folder \\b", "file \\a.krc", "file \\missing"));
}

TEST_F(LocalListingTest, AMissingFolderAddsNothing) {
    AddLocalFoldersBelow(folder_.At("missing"), items_);
    AddLocalChildren(folder_.At("missing"), Subfolders::kTake, items_);
    EXPECT_EQ(0u, items_.Count());
}

}  // namespace
}  // namespace depot
