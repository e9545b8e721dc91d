#include "support/access_rules.h"
#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::ForgetServer;
using test::IsCode;
using test::IsDone;
using test::MessageFor;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class SearchTest : public test::DirectoryFixture {
protected:
    static std::string Text(const FileBuffer& buffer) {
        return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
    }
    static FileBuffer Junk() {
        FileBuffer buffer;
        buffer.length = 3;
        buffer.bytes = std::make_unique<std::uint8_t[]>(3);
        return buffer;
    }
};

TEST_F(SearchTest, FindingAnEntryAsksForItAloneAndForNoAttributes) {
    server_.AddFile("a.krc", base_, "x");
    Connected();
    server_.Mark();
    EXPECT_THAT(CodeOf(Connected().Entries().Find(base_)), IsDone());
    const std::string log = server_.Log();
    EXPECT_THAT(log, HasSubstr("SRCH base=\"" + base_ + "\" scope=0"));
    EXPECT_THAT(log, HasSubstr("SRCH attr=1.1\n"));
    EXPECT_THAT(log, HasSubstr("nentries=1 "));
}

TEST_F(SearchTest, EverySearchUsesTheFilterForAnyEntry) {
    server_.AddFile("a.krc", base_, "x");
    Connected();
    server_.Mark();
    LdapItemList items;
    FileBuffer buffer;
    EXPECT_THAT(Connected().ListChildren(base_, items), IsDone());
    EXPECT_THAT(Connected().ReadFileContents(Dn("a.krc"), buffer), IsDone());
    EXPECT_THAT(CodeOf(Connected().Entries().Find(base_)), IsDone());
    EXPECT_THAT(Connected().AddFolderEntry(Dn("sub"), "sub", nullptr), IsDone());
    EXPECT_THAT(Connected().EnsureFolderPath("cn=b.krc,cn=deep," + Dn("sub"), false, nullptr),
                IsDone());
    const std::string log = server_.Log();
    int filters = 0;
    constexpr std::string_view kFilter = " filter=\"(objectClass=*)\"\n";
    for (std::size_t at = log.find(kFilter); at != std::string::npos;
         at = log.find(kFilter, at + 1)) {
        ++filters;
    }
    EXPECT_EQ(server_.Counts().searches, filters) << log;
    EXPECT_GE(filters, 6);
}

TEST_F(SearchTest, FindingGivesTheDirectorysCode) {
    EXPECT_THAT(CodeOf(Connected().Entries().Find(Dn("missing"))), Fails(LDAP_NO_SUCH_OBJECT));
    EXPECT_THAT(CodeOf(Connected().Entries().Find("not a name")), Fails(LDAP_INVALID_DN_SYNTAX));
}

TEST_F(SearchTest, BaseWithMoreEntriesThanTheServersLimitIsFound) {
    std::string entries;
    for (int index = 0; index < 700; ++index) {
        const std::string name = "f" + std::to_string(index) + ".krc";
        entries += "dn: " + Dn(name) + "\nobjectClass: quillonFileBinary\ncn: " + name +
                   "\nquillonFileContentsBinary: x\n\n";
    }
    server_.Apply(entries);
    EXPECT_THAT(CodeOf(Connected().Entries().Find(base_)), IsDone());
    LdapItemList children;
    EXPECT_THAT(Connected().ListChildren(base_, children), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SIZELIMIT_EXCEEDED));
}

TEST_F(SearchTest, ReadingAsksForTheEntryAndItsContentsOnly) {
    server_.AddFile("a.krc", base_, "bytes");
    Connected();
    server_.Mark();
    FileBuffer buffer = Junk();
    EXPECT_THAT(Connected().ReadFileContents(Dn("a.krc"), buffer), IsDone());
    EXPECT_EQ("bytes", Text(buffer));
    const std::string log = server_.Log();
    EXPECT_THAT(log, HasSubstr("scope=0"));
    EXPECT_THAT(log, HasSubstr("SRCH attr=quillonFileContentsBinary\n"));
    EXPECT_EQ((test::OperationCounts{.searches = 1}), server_.Counts());
}

TEST_F(SearchTest, ReadingMatchesADnOfAnotherLetterCase) {
    server_.AddFile("Report.krc", base_, "bytes");
    FileBuffer buffer;
    EXPECT_THAT(Connected().ReadFileContents("CN=REPORT.KRC," + base_, buffer), IsDone());
    EXPECT_EQ("bytes", Text(buffer));
}

TEST_F(SearchTest, ReadingAnotherAttributeTakesThatOne) {
    server_.Apply("dn: " + Dn("sub") + "\nobjectClass: quillonFolder\ncn: sub\ndescription: d\n");
    FileBuffer buffer;
    EXPECT_THAT(Connected().ReadFileContents(Dn("sub"), buffer, "DESCRIPTION"), IsDone());
    EXPECT_EQ("d", Text(buffer));
}

TEST_F(SearchTest, ReadingAnEntryWithoutContentsGivesAnEmptyBuffer) {
    server_.AddFolder("sub", base_);
    FileBuffer buffer = Junk();
    EXPECT_THAT(Connected().ReadFileContents(Dn("sub"), buffer), IsDone());
    EXPECT_EQ(0u, buffer.length);
    EXPECT_EQ(nullptr, buffer.bytes);
}

TEST_F(SearchTest, ReadingAMissingEntryFails) {
    FileBuffer buffer = Junk();
    EXPECT_THAT(Connected().ReadFileContents(Dn("missing.krc"), buffer), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_EQ(0u, buffer.length);
    EXPECT_THAT(Connected().ReadFileContents("not a name", buffer), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_INVALID_DN_SYNTAX));
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

// Some servers have a search succeed without the entry that the user may not see.
TEST_F(SearchTest, SearchWithoutAnEntryHasFoundNone) {
    test::DirectoryServer blind(test::FindsNothing());
    const std::string folder = "cn=Sessions," + std::string(test::kSuffix);
    blind.AddFolder("Sessions", test::kSuffix);
    blind.AddFile("a.krc", folder, "x");
    location_ = blind.Location().Clone();
    items_ = std::make_unique<CLDAPItems>(location_.get());
    ASSERT_THAT(items_->ConnectLocation(nullptr), IsDone());
    EntryStore& entries = items_->Entries();
    EXPECT_THAT(CodeOf(entries.Find(folder)), IsCode(LDAP_NO_SUCH_OBJECT));
    EntryKind kind = EntryKind::kFolder;
    EXPECT_THAT(CodeOf(entries.FindKind(folder, kind)), IsCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_EQ(EntryKind::kOther, kind);
    KindLookup lookups[] = {{folder}, {"cn=a.krc," + folder}};
    entries.FindKindsTogether(lookups);
    for (const KindLookup& lookup : lookups) {
        EXPECT_THAT(CodeOf(lookup.result), IsCode(LDAP_NO_SUCH_OBJECT));
    }
    FileBuffer buffer = Junk();
    EXPECT_THAT(CodeOf(entries.ReadSeen("cn=a.krc," + folder, buffer)),
                IsCode(LDAP_NO_SUCH_OBJECT));
    ContentsRead reads[] = {{"cn=a.krc," + folder}, {"cn=b.krc," + folder}};
    entries.ReadTogether(reads);
    for (const ContentsRead& read : reads) {
        EXPECT_THAT(CodeOf(read.result), IsCode(LDAP_NO_SUCH_OBJECT));
    }
    // By its name the operation has searched and found no value.
    EXPECT_THAT(items_->ReadFileContents("cn=a.krc," + folder, buffer), IsDone());
    EXPECT_EQ(nullptr, buffer.bytes);
    // A folder that nobody sees is added, and not taken for one that is there.
    EXPECT_THAT(items_->AddFolderEntry("cn=new," + folder, "new", nullptr), IsDone());
    EXPECT_TRUE(blind.Holds("cn=new," + folder));
    // The suffix is out of sight as well, and no folder.
    EXPECT_THAT(items_->EnsureFolderPath("cn=deep," + folder, false, nullptr), Fails());
}

TEST_F(SearchTest, EnsuringAFilesPathCreatesItsMissingFolderOnly) {
    server_.AddFolder("root", base_);
    Connected();
    server_.Mark();
    EXPECT_THAT(Connected().EnsureFolderPath("CN=a.krc,CN=sub," + Dn("root"), false, &text_),
                IsDone());
    EXPECT_EQ(1, server_.Counts().adds);
    EXPECT_TRUE(server_.Holds("cn=sub," + Dn("root")));
    EXPECT_FALSE(server_.Holds("cn=a.krc,cn=sub," + Dn("root")));
    EXPECT_EQ("junk", text_);
    EXPECT_TRUE(Connected().IsConnected());
}

TEST_F(SearchTest, EnsuringAPathCreatesTheUpperFolderFirst) {
    Connected();
    server_.Mark();
    EXPECT_THAT(Connected().EnsureFolderPath("CN=a.krc,CN=sub,CN=root," + base_, false, &text_),
                IsDone());
    const std::string log = server_.Log();
    const std::size_t root = log.find("ADD dn=\"cn=root,");
    const std::size_t sub = log.find("ADD dn=\"cn=sub,");
    ASSERT_NE(std::string::npos, root) << log;
    ASSERT_NE(std::string::npos, sub) << log;
    EXPECT_LT(root, sub);
    EXPECT_EQ(2, server_.Counts().adds);
}

TEST_F(SearchTest, EnsuringAFoldersPathIncludesTheFolder) {
    EXPECT_THAT(Connected().EnsureFolderPath("CN=sub," + base_, false, &text_), IsDone());
    EXPECT_TRUE(server_.Holds(Dn("sub")));
}

TEST_F(SearchTest, EnsuringAnExistingPathAsksOnce) {
    Connected();
    server_.Mark();
    EXPECT_THAT(Connected().EnsureFolderPath("CN=a.krc," + base_, false, &text_), IsDone());
    EXPECT_EQ((test::OperationCounts{.searches = 1}), server_.Counts());
    EXPECT_THAT(server_.Log(), Not(HasSubstr("scope=2")));
}

TEST_F(SearchTest, EnsuringAPathBeyondAsciiCreatesItsFolders) {
    EXPECT_THAT(Connected().EnsureFolderPath("CN=\xE9t\xE9," + base_, false, &text_), IsDone());
    LdapItemList children;
    EXPECT_THAT(Connected().ListChildren(base_, children), IsDone());
    ASSERT_EQ(1u, children.Count());
    EXPECT_EQ("CN=\xE9t\xE9," + base_, children.At(0).path);
}

TEST_F(SearchTest, EnsuringWithConnectLeavesTheObjectDisconnected) {
    location_ = server_.Location(base_).Clone();
    items_ = std::make_unique<CLDAPItems>(location_.get());
    server_.Mark();
    EXPECT_THAT(items_->EnsureFolderPath("CN=sub," + base_, true, &text_), IsDone());
    EXPECT_FALSE(items_->IsConnected());
    EXPECT_TRUE(items_->IsUsable());
    EXPECT_EQ(1, server_.Counts().binds);
    EXPECT_TRUE(server_.Holds(Dn("sub")));
    ASSERT_THAT(items_->ConnectLocation(nullptr), IsDone());
    EXPECT_THAT(items_->EnsureFolderPath("CN=sub," + base_, true, &text_), IsDone());
    EXPECT_FALSE(items_->IsConnected());
}

TEST_F(SearchTest, EnsuringWithConnectFailsWhenTheUserCancels) {
    location_ = server_.Location(base_).Clone();
    location_->password.clear();
    items_ = std::make_unique<CLDAPItems>(location_.get());
    EXPECT_THAT(items_->EnsureFolderPath("CN=sub," + base_, true, &text_), Fails());
    EXPECT_THAT(items_->LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_EQ(MessageFor(LDAP_USER_CANCELLED), text_);
    EXPECT_FALSE(server_.Holds(Dn("sub")));
}

TEST_F(SearchTest, EnsuringNothingFails) {
    EXPECT_THAT(Connected().EnsureFolderPath("", true, &text_), Fails());
    EXPECT_TRUE(Connected().IsConnected());
}

TEST_F(SearchTest, EnsuringAnInvalidNameFails) {
    EXPECT_THAT(Connected().EnsureFolderPath("not a name", false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_INVALID_DN_SYNTAX));
    EXPECT_EQ(MessageFor(LDAP_INVALID_DN_SYNTAX), text_);
}

TEST_F(SearchTest, EnsuringAPathThatTheServerRefusesToReadFails) {
    // The client takes this name apart, the server does not know its attribute.
    EXPECT_THAT(Connected().EnsureFolderPath("nosuchattribute=a," + base_, false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_INVALID_DN_SYNTAX));
    EXPECT_EQ(MessageFor(LDAP_INVALID_DN_SYNTAX), text_);
}

TEST_F(SearchTest, EnsuringAFolderOfAnotherKindFailsOnItsName) {
    EXPECT_THAT(Connected().EnsureFolderPath("CN=a.krc,ou=other," + base_, false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_INVALID_DN_SYNTAX));
    EXPECT_EQ(MessageFor(LDAP_INVALID_DN_SYNTAX), text_);
    EXPECT_THAT(server_.Show(base_, "one", "1.1"), "");
}

TEST_F(SearchTest, EnsuringAFolderThatCannotBeAddedIsAParameterError) {
    location_ = server_.Location(base_).Clone();
    location_->username = test::kReader;
    location_->password = test::kReaderPassword;
    items_ = std::make_unique<CLDAPItems>(location_.get());
    ASSERT_THAT(items_->ConnectLocation(nullptr), IsDone());
    EXPECT_THAT(items_->EnsureFolderPath("CN=sub," + base_, false, &text_), Fails());
    EXPECT_THAT(items_->LastError(), IsCode(LDAP_PARAM_ERROR));
    EXPECT_EQ(MessageFor(LDAP_PARAM_ERROR), text_);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

}  // namespace
}  // namespace depot
