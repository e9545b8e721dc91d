#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;
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
    EXPECT_THAT(Connected().ReadFileContents("cn=a.krc," + base_, buffer), IsDone());
    Connected().Close();
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
}

TEST_F(OperationCountsTest, WritingAFileBackIsOneBindAndOneModification) {
    server_.AddFile("a.krc", base_, "x");
    server_.Mark();
    EXPECT_THAT(Connected().ReplaceFileContents("cn=a.krc," + base_, "y", 1), IsDone());
    Connected().Close();
    EXPECT_EQ((OperationCounts{.binds = 1, .modifications = 1}), server_.Counts());
}

TEST_F(OperationCountsTest, ListingIsOneBindAndOneSearchWhateverTheFolderHolds) {
    for (int index = 0; index < 5; ++index) {
        server_.AddFile("f" + std::to_string(index) + ".krc", base_, "x");
    }
    server_.Mark();
    LdapItemList children;
    EXPECT_THAT(Connected().ListChildren(base_, children), IsDone());
    EXPECT_EQ(5u, children.Count());
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
}

TEST_F(OperationCountsTest, AskingForAnEntryIsOneBindAndOneSearch) {
    EXPECT_THAT(CodeOf(Connected().Entries().Find("cn=missing," + base_)),
                Fails(LDAP_NO_SUCH_OBJECT));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
}

TEST_F(OperationCountsTest, RenamingAndDeletingAnEntryAreOneOperationEach) {
    server_.AddFile("a.krc", base_, "x");
    Connected();
    server_.Mark();
    EXPECT_THAT(Connected().RenameEntry("cn=a.krc," + base_, "cn=b.krc," + base_, nullptr),
                IsDone());
    EXPECT_EQ((OperationCounts{.renames = 1}), server_.Counts());
    server_.Mark();
    EXPECT_THAT(Connected().DeleteTree("cn=b.krc," + base_, nullptr), IsDone());
    EXPECT_EQ((OperationCounts{.searches = 1, .deletions = 1}), server_.Counts());
}

}  // namespace
}  // namespace depot
