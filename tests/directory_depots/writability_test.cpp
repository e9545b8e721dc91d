#include "manager/writability.h"

#include "directory_depots/depot_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::IsCode;
using test::IsDone;
using test::kNo;
using test::kYes;
using test::OperationCounts;

int TestIn(CDepot& work, const std::string& path, std::string& text) {
    text = "junk";
    return TestPathWritable(work, "<Work>\\" + path, &text);
}

class DirectoryWritabilityTest : public test::DepotFixture {
protected:
    int Test(const std::string& path) { return TestIn(*work_, path, text_); }
};

TEST_F(DirectoryWritabilityTest, ExistingEntryIsWritableAndStays) {
    server_.AddFile("a.kra", base_, "x");
    Choose();
    EXPECT_EQ(kYes, Test("a.kra"));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
    EXPECT_EQ("x", Stored("a.kra"));
    EXPECT_FALSE(Directory().IsConnected());
}

TEST_F(DirectoryWritabilityTest, MissingPlaceIsCreatedAndRemovedWithItsParents) {
    Choose();
    EXPECT_EQ(kYes, Test("x\\y\\z.kra"));
    const OperationCounts counts = server_.Counts();
    EXPECT_EQ(2, counts.adds);
    EXPECT_EQ(2, counts.deletions);
    EXPECT_EQ(1, counts.binds);
    EXPECT_FALSE(server_.Holds(Dn("x")));
    EXPECT_EQ("junk", text_);
}

TEST_F(DirectoryWritabilityTest, OpenConnectionIsUsedAndStaysOpen) {
    Choose();
    ASSERT_THAT(Directory().ConnectLocation(nullptr), IsDone());
    server_.Mark();
    EXPECT_EQ(kYes, Test("x"));
    EXPECT_EQ(0, server_.Counts().binds);
    EXPECT_TRUE(Directory().IsConnected());
}

TEST_F(DirectoryWritabilityTest, ExistingParentsStay) {
    server_.AddFolder("x", base_);
    Choose();
    EXPECT_EQ(kYes, Test("x\\y\\z.kra"));
    EXPECT_TRUE(server_.Holds(Dn("x")));
    EXPECT_FALSE(server_.Holds("cn=y," + Dn("x")));
}

TEST_F(DirectoryWritabilityTest, PlaceThatCannotBeCreatedIsNotWritable) {
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(kNo, Test("x\\y.kra"));
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
    EXPECT_EQ(kNo, Test("seen"));
    EXPECT_EQ(kNo, Test("seen\\below"));
    EXPECT_TRUE(server_.Holds(Dn("seen")));
    EXPECT_EQ(0, server_.Counts().deletions);
}

TEST_F(DirectoryWritabilityTest, FailedCreationKeepsItsLastError) {
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(kNo, Test("x\\y.kra"));
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_PARAM_ERROR));
}

TEST_F(DirectoryWritabilityTest, InvalidNameIsReportedAndNotWritable) {
    Choose();
    EXPECT_EQ(kNo, TestWritable(kDirectoryLocation, "not a name", &Directory(), &text_));
    EXPECT_EQ(test::MessageFor(LDAP_INVALID_DN_SYNTAX), text_);
}

TEST_F(DirectoryWritabilityTest, CachedRefusalIsAccessDenied) {
    Define(server_.Port(), "cn=missing," + base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(kNo, TestDepotWritable(*work_, "Shown", &text_));
    server_.Mark();
    EXPECT_EQ(kNo, TestDepotWritable(*work_, "Shown", &text_));
    EXPECT_EQ("", server_.Log());
    std::string denied;
    FormatErrorText(ERROR_ACCESS_DENIED, "Shown", "Quillon", &denied, nullptr);
    EXPECT_EQ(denied, text_);
}

TEST_F(DirectoryWritabilityTest, NewFileInAnExistingFolderIsTriedAndRemoved) {
    server_.AddFolder("x", base_);
    Choose();
    EXPECT_EQ(kYes, Test("x\\new.kra"));
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
    EXPECT_EQ(kNo, Test("x\\new.kra"));
    EXPECT_EQ(test::MessageFor(LDAP_INSUFFICIENT_RIGHTS), text_);
}

TEST_F(DirectoryWritabilityTest, ProbesBytesAreLikeNoOthers) {
    server_.AddFolder("x", base_);
    Choose();
    static std::vector<std::string> added;
    added.clear();
    Directory().Client().ldap_add_s = [](LDAP*, PCHAR, LDAPModA* attributes[]) -> ULONG {
        for (; *attributes != nullptr; ++attributes) {
            if (((*attributes)->mod_op & LDAP_MOD_BVALUES) == 0) continue;
            const berval& value = **(*attributes)->mod_vals.modv_bvals;
            added.emplace_back(value.bv_val, value.bv_len);
        }
        return LDAP_BUSY;
    };
    Test("x\\new.kra");
    Test("x\\new.kra");
    ASSERT_EQ(2u, added.size());
    EXPECT_NE(added[0], added[1]);
    EXPECT_THAT(added[0], testing::StartsWith("DepotIntr tests whether"));
}

// A server that does not say which controls it knows, and one that cannot compare contents.
constexpr char kSilentAboutControls[] =
    "global access to dn.base=\"\" attrs=supportedControl by * none\n"
    "global access to * by * write";
constexpr char kWithoutComparison[] =
    "no-schema\n"
    "global attributetype ( 1.3.6.1.4.1.99999.1.1 NAME 'quillonFileContentsBinary' "
    "SYNTAX 1.3.6.1.4.1.1466.115.121.1.40 SINGLE-VALUE )\n"
    "global objectclass ( 1.3.6.1.4.1.99999.2.1 NAME 'quillonFolder' SUP top STRUCTURAL MUST cn )\n"
    "global objectclass ( 1.3.6.1.4.1.99999.2.2 NAME 'quillonFileBinary' SUP top STRUCTURAL "
    "MUST cn MAY quillonFileContentsBinary )";
// One where an editor adds files but does not see what they hold.
constexpr char kHidesContents[] =
    "global access to attrs=quillonFileContentsBinary by * =awx\n"
    "global access to * by * write";

// The same on servers that test and delete in one request, and on others.
class ProbeRemovalTest : public test::DepotFixture,
                         public testing::WithParamInterface<const char*> {
protected:
    ProbeRemovalTest() : own_(GetParam()) {
        Define(own_.Port(), test::kSuffix);
        changed = this;
    }

    int Test(const std::string& path) { return TestIn(*work_, path, text_); }

    // Has someone do this as soon as the test has added an entry.
    void AfterTheAddition(const std::string& ldif) {
        change = ldif;
        genuineAdd = Directory().Client().ldap_add_s;
        Directory().Client().ldap_add_s = &AddThenChange;
    }

    static ULONG LDAPAPI AddThenChange(LDAP* connection, PCHAR dn, LDAPModA* attributes[]) {
        const ULONG code = genuineAdd(connection, dn, attributes);
        if (const std::string ldif = std::exchange(change, {}); !ldif.empty()) {
            changed->own_.Apply(ldif);
        }
        return code;
    }

    static inline ProbeRemovalTest* changed = nullptr;
    static inline std::string change;
    static inline decltype(DirectoryClient::ldap_add_s) genuineAdd = nullptr;
    const std::string entry_ = std::string("cn=new.kra,") + test::kSuffix;
    DirectoryServer own_;
};

TEST_P(ProbeRemovalTest, ProbeIsRemoved) {
    Choose();
    EXPECT_EQ(kYes, Test("new.kra"));
    EXPECT_FALSE(own_.Holds(entry_));
}

TEST_P(ProbeRemovalTest, FileThatSomebodyStoresMeanwhileStays) {
    // Its contents are seen by nobody.
    if (GetParam() == kHidesContents) return;
    Choose();
    AfterTheAddition("dn: " + entry_ +
                     "\nchangetype: modify\nreplace: quillonFileContentsBinary\n"
                     "quillonFileContentsBinary: theirs\n");
    EXPECT_EQ(kYes, Test("new.kra"));
    EXPECT_THAT(own_.Show(entry_), testing::HasSubstr("quillonFileContentsBinary"));
}

TEST_P(ProbeRemovalTest, FolderInWhichSomebodyStoresMeanwhileStays) {
    Choose();
    const std::string folder = std::string("cn=x,") + test::kSuffix;
    AfterTheAddition("dn: cn=a.kra," + folder +
                     "\nchangetype: add\nobjectClass: quillonFileBinary\ncn: a.kra\n"
                     "quillonFileContentsBinary: theirs\n");
    EXPECT_EQ(kYes, Test("x\\y\\z.kra"));
    EXPECT_TRUE(own_.Holds("cn=a.kra," + folder));
    EXPECT_FALSE(own_.Holds("cn=y," + folder));
}

INSTANTIATE_TEST_SUITE_P(Servers, ProbeRemovalTest,
                         testing::Values("", kSilentAboutControls, kWithoutComparison,
                                         kHidesContents));

TEST_F(DirectoryWritabilityTest, UnreachableServerIsNotWritable) {
    Choose();
    server_.Stop();
    EXPECT_EQ(kNo, Test("a.kra"));
    server_.Continue();
    // Without a prompt nobody cancels: the reason is that of the failed bind.
    EXPECT_EQ(test::MessageFor(LDAP_SERVER_DOWN), text_);
}

TEST_F(DirectoryWritabilityTest, PathWithoutAConnectionIsNotWritable) {
    EXPECT_EQ(kNo, TestWritable(kDirectoryLocation, base_, nullptr, nullptr));
}

TEST_F(DirectoryWritabilityTest, ExactFormAsksEachTime) {
    server_.AddFile("a.kra", base_, "x");
    Choose();
    EXPECT_EQ(kYes, Test("a.kra"));
    server_.Mark();
    EXPECT_EQ(kYes, Test("a.kra"));
    EXPECT_EQ(1, server_.Counts().searches);
}

TEST_F(DirectoryWritabilityTest, CachedFormAsksOnce) {
    Choose();
    EXPECT_EQ(kYes, TestDepotWritable(*work_, {}, &text_));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
    server_.Mark();
    EXPECT_EQ(kYes, TestDepotWritable(*work_, {}, &text_));
    EXPECT_EQ("", server_.Log());
}

}  // namespace
}  // namespace depot
