#include "manager/writability.h"

#include "directory_depots/depot_fixture.h"

namespace depot {
namespace {

using test::OperationCounts;

class DirectoryWritabilityTest : public test::DepotFixture {
protected:
    int Test(const std::string& path) {
        text_ = "junk";
        return TestPathWritable(*work_, "<Work>\\" + path, &text_);
    }

    std::string text_;
};

TEST_F(DirectoryWritabilityTest, ExistingEntryIsWritableAndStays) {
    server_.AddFile("a.kra", base_, "x");
    Choose();
    EXPECT_EQ(1, Test("a.kra"));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
    EXPECT_EQ("x", Contents("a.kra"));
    EXPECT_FALSE(Directory().IsConnected());
}

TEST_F(DirectoryWritabilityTest, MissingPlaceIsCreatedAndRemovedWithItsParents) {
    Choose();
    EXPECT_EQ(1, Test("x\\y\\z.kra"));
    const OperationCounts counts = server_.Counts();
    EXPECT_EQ(2, counts.adds);
    EXPECT_EQ(2, counts.deletions);
    EXPECT_EQ(1, counts.binds);
    EXPECT_FALSE(server_.Holds(Dn("x")));
    EXPECT_EQ("junk", text_);
}

TEST_F(DirectoryWritabilityTest, OpenConnectionIsUsedAndStaysOpen) {
    Choose();
    ASSERT_EQ(1, Directory().ConnectLocation(nullptr));
    server_.Mark();
    EXPECT_EQ(1, Test("x"));
    EXPECT_EQ(0, server_.Counts().binds);
    EXPECT_TRUE(Directory().IsConnected());
}

TEST_F(DirectoryWritabilityTest, ExistingParentsStay) {
    server_.AddFolder("x", base_);
    Choose();
    EXPECT_EQ(1, Test("x\\y\\z.kra"));
    EXPECT_TRUE(server_.Holds(Dn("x")));
    EXPECT_FALSE(server_.Holds("cn=y," + Dn("x")));
}

TEST_F(DirectoryWritabilityTest, PlaceThatCannotBeCreatedIsNotWritable) {
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(0, Test("x\\y.kra"));
    EXPECT_FALSE(server_.Holds(Dn("x")));
    EXPECT_NE("junk", text_);
}

ULONG LDAPAPI FindNothing(LDAP*, const PCHAR, ULONG, const PCHAR, PCHAR[], ULONG, LDAPMessage**) {
    return LDAP_NO_SUCH_OBJECT;
}

TEST_F(DirectoryWritabilityTest, EntryThatCannotBeSeenStays) {
    server_.AddFolder("seen", base_);
    Choose();
    Directory().Client().ldap_search_s = &FindNothing;
    EXPECT_EQ(0, Test("seen"));
    EXPECT_EQ(0, Test("seen\\below"));
    EXPECT_TRUE(server_.Holds(Dn("seen")));
    EXPECT_EQ(0, server_.Counts().deletions);
}

TEST_F(DirectoryWritabilityTest, FailedCreationKeepsItsLastError) {
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(0, Test("x\\y.kra"));
    EXPECT_EQ(std::uint32_t{LDAP_PARAM_ERROR}, Directory().LastError());
}

TEST_F(DirectoryWritabilityTest, InvalidNameIsToldAndNotWritable) {
    Choose();
    EXPECT_EQ(0, TestWritable(kDirectoryLocation, "not a name", &Directory(), &text_));
    EXPECT_EQ(test::MessageFor(34), text_);
}

TEST_F(DirectoryWritabilityTest, CachedRefusalIsAccessDenied) {
    Define(server_.Port(), "cn=missing," + base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(0, TestDepotWritable(*work_, "Shown", &text_));
    server_.Mark();
    EXPECT_EQ(0, TestDepotWritable(*work_, "Shown", &text_));
    EXPECT_EQ("", server_.Log());
    std::string denied;
    FormatErrorText(ERROR_ACCESS_DENIED, "Shown", "Quillon", &denied, nullptr);
    EXPECT_EQ(denied, text_);
}

TEST_F(DirectoryWritabilityTest, NewFileInAnExistingFolderIsTriedAndRemoved) {
    server_.AddFolder("x", base_);
    Choose();
    EXPECT_EQ(1, Test("x\\new.kra"));
    EXPECT_EQ(1, server_.Counts().adds);
    EXPECT_EQ(1, server_.Counts().deletions);
    EXPECT_FALSE(server_.Holds("cn=new.kra," + Dn("x")));
    EXPECT_TRUE(server_.Holds(Dn("x")));
    EXPECT_EQ("junk", text_);
}

TEST_F(DirectoryWritabilityTest, NewFileInAnExistingFolderIsNotForReaders) {
    server_.AddFolder("x", base_);
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(0, Test("x\\new.kra"));
    EXPECT_EQ(test::MessageFor(50), text_);
}

TEST_F(DirectoryWritabilityTest, UnreachableServerIsNotWritable) {
    Choose();
    server_.Stop();
    EXPECT_EQ(0, Test("a.kra"));
    server_.Continue();
    // Without a prompt nobody cancels: the reason is that of the failed bind.
    EXPECT_EQ(test::MessageFor(81), text_);
}

TEST_F(DirectoryWritabilityTest, PathWithoutAConnectionIsNotWritable) {
    EXPECT_EQ(0, TestWritable(kDirectoryLocation, base_, nullptr, nullptr));
}

TEST_F(DirectoryWritabilityTest, ExactFormAsksEachTime) {
    server_.AddFile("a.kra", base_, "x");
    Choose();
    EXPECT_EQ(1, Test("a.kra"));
    server_.Mark();
    EXPECT_EQ(1, Test("a.kra"));
    EXPECT_EQ(1, server_.Counts().searches);
}

TEST_F(DirectoryWritabilityTest, CachedFormAsksOnce) {
    Choose();
    EXPECT_EQ(1, TestDepotWritable(*work_, {}, &text_));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
    server_.Mark();
    EXPECT_EQ(1, TestDepotWritable(*work_, {}, &text_));
    EXPECT_EQ("", server_.Log());
}

}  // namespace
}  // namespace depot
