#include "support/directory_fixture.h"

namespace depot {
namespace {

using test::OperationCounts;

// What each kind of work costs the server, counted in its own log.
class OperationCountsTest : public test::DirectoryFixture {
protected:
    OperationCountsTest() { server_.Mark(); }
};

TEST_F(OperationCountsTest, LoadingAFileIsOneBindAndOneSearch) {
    server_.AddFile("a.krc", base_, "x");
    server_.Mark();
    FileBuffer buffer;
    EXPECT_EQ(1, Connected().ReadFileContents("cn=a.krc," + base_, buffer));
    Connected().Close();
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
}

TEST_F(OperationCountsTest, WritingAFileBackIsOneBindAndOneModification) {
    server_.AddFile("a.krc", base_, "x");
    server_.Mark();
    EXPECT_EQ(0u, Connected().ReplaceFileContents("cn=a.krc," + base_, "y", 1));
    Connected().Close();
    EXPECT_EQ((OperationCounts{.binds = 1, .modifications = 1}), server_.Counts());
}

TEST_F(OperationCountsTest, ListingIsOneBindAndOneSearchWhateverTheFolderHolds) {
    for (int index = 0; index < 5; ++index) {
        server_.AddFile("f" + std::to_string(index) + ".krc", base_, "x");
    }
    server_.Mark();
    LdapItemList children;
    EXPECT_EQ(1, Connected().ListChildren(base_, children));
    EXPECT_EQ(5u, children.Count());
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
}

TEST_F(OperationCountsTest, AskingForAnEntryIsOneBindAndOneSearch) {
    EXPECT_EQ(32u, CodeOf(Connected().Entries().Find("cn=missing," + base_)));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
}

TEST_F(OperationCountsTest, RenamingAndDeletingAnEntryAreOneOperationEach) {
    server_.AddFile("a.krc", base_, "x");
    Connected();
    server_.Mark();
    EXPECT_EQ(1, Connected().RenameEntry("cn=a.krc," + base_, "cn=b.krc," + base_, nullptr));
    EXPECT_EQ((OperationCounts{.renames = 1}), server_.Counts());
    server_.Mark();
    EXPECT_EQ(1, Connected().DeleteTree("cn=b.krc," + base_, nullptr));
    EXPECT_EQ((OperationCounts{.searches = 1, .deletions = 1}), server_.Counts());
}

}  // namespace
}  // namespace depot
