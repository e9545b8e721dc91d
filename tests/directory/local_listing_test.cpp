#include "directory/local_listing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/directory_client.h"
#include "platform/file_search.h"
#include "support/folder_link.h"
#include "support/page_names.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::Fails;
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

// What a folder with a reparse point is by the tag that the system shows: a link, but for folders
// whose files stand elsewhere until they are wanted.
TEST_F(LocalListingTest, OnlyRealLinksAreLeftOutAndCounted) {
    const std::string link = folder_.At("link");
    const test::FolderLink made(link, folder_.At("b\\c"));
    constexpr DWORD kCloud = 0x9000001A, kLinuxLink = 0xA000001D, kNotShown = 0;
    for (const auto& [tag, isLink] : {std::pair<DWORD, bool>(kCloud, false),
                                      {IO_REPARSE_TAG_MOUNT_POINT, true},
                                      {IO_REPARSE_TAG_SYMLINK, true},
                                      {kLinuxLink, true},
                                      {kNotShown, true}}) {
        SCOPED_TRACE(tag);
        const test::ShownReparseTag shown(tag);
        EXPECT_EQ(isLink, IsLinkToFolder(link));
        EXPECT_EQ(isLink, IsLinkToFolder(link + "\\"));
        items_.Clear();
        EXPECT_EQ(isLink ? 1u : 0u, AddLocalChildren(folder_.Path(), Subfolders::kTake, items_));
        EXPECT_EQ(isLink ? 3u : 4u, items_.Count());
        items_.Clear();
        AddLocalFoldersBelow(folder_.Path(), items_);
        EXPECT_EQ(isLink ? 2u : 3u, items_.Count());
    }
    EXPECT_FALSE(IsLinkToFolder(folder_.At("b")));
    EXPECT_FALSE(IsLinkToFolder(folder_.At("a.krc")));
    EXPECT_FALSE(IsLinkToFolder(folder_.At("missing")));
}

TEST_F(LocalListingTest, NamesThatTheCodePageCannotHoldAreLeftOutAndCounted) {
    const std::wstring folder = WideFromAnsi(folder_.Path());
    test::MakeWideFile(folder + L"\\\x0100.krc", "x");
    test::MakeWideFile(folder + L"\\\xFF21.krc", "x");
    CreateDirectoryW((folder + L"\\\x8868").c_str(), nullptr);
    std::uint32_t unsafeNames = 0;
    EXPECT_THAT(AddLocalChildren(folder_.Path(), Subfolders::kTake, items_, &unsafeNames),
                Fails(LDAP_TIMELIMIT_EXCEEDED));
    EXPECT_EQ(3u, unsafeNames);
    EXPECT_THAT(Found(), UnorderedElementsAre("file \\a.krc", "file \\plain", "folder \\b"));
    items_.Clear();
    AddLocalFoldersBelow(folder_.Path(), items_);
    EXPECT_THAT(Found(), ElementsAre("folder \\b", "folder \\b\\c"));
}

TEST_F(LocalListingTest, PathCountsAsAFolderWhenItIsOne) {
    AddLocalPath(folder_.At("b"), items_);
    AddLocalPath(folder_.At("a.krc"), items_);
    AddLocalPath(folder_.At("missing"), items_);
    EXPECT_THAT(Found(), ElementsAre("folder \\b", "file \\a.krc", "file \\missing"));
}

TEST_F(LocalListingTest, MissingFolderAddsNothing) {
    AddLocalFoldersBelow(folder_.At("missing"), items_);
    AddLocalChildren(folder_.At("missing"), Subfolders::kTake, items_);
    EXPECT_EQ(0u, items_.Count());
}

}  // namespace
}  // namespace depot
