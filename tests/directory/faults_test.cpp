#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::Fails;
using test::ForgetServer;
using test::IsCode;
using test::IsDone;
using test::MessageFor;
using testing::ElementsAre;
using testing::IsEmpty;

// Servers that fail, each a real one of its own.
class FaultsTest : public testing::Test {
protected:
    CLDAPItems& Connect(const CDepotPath& location) {
        ForgetServer(location.port);
        location_ = location.Clone();
        items_ = std::make_unique<CLDAPItems>(location_.get());
        EXPECT_THAT(items_->ConnectLocation(nullptr), IsDone());
        return *items_;
    }

    std::string Dn(const std::string& name) const { return "cn=" + name + "," + test::kSuffix; }

    static std::string Files(int count, const std::string& parent) {
        std::string entries;
        for (int index = 0; index < count; ++index) {
            const std::string name = "f" + std::to_string(index) + ".krc";
            entries += "dn: cn=" + name + "," + parent +
                       "\nobjectClass: quillonFileBinary\ncn: " + name +
                       "\nquillonFileContentsBinary: x\n\n";
        }
        return entries;
    }

    test::BoxLog boxes_;
    std::unique_ptr<CDepotPath> location_;
    std::unique_ptr<CLDAPItems> items_;
    std::string text_ = "junk";
};

TEST_F(FaultsTest, ConnectionThatClosesInTheMiddleOfALargeValueIsDown) {
    DirectoryServer server;
    server.AddFile("big.krc", test::kSuffix, "x");
    const std::string bytes(10 * 1024 * 1024, 'b');
    CLDAPItems& writer = Connect(server.Location());
    ASSERT_THAT(writer.ReplaceFileContents(Dn("big.krc"), bytes.data(),
                                           static_cast<std::uint32_t>(bytes.size())),
                IsDone());
    CDepotPath location = server.Location();
    location.port = server.CutAfter(5 * 1024 * 1024);
    CLDAPItems& reader = Connect(location);
    FileBuffer buffer;
    EXPECT_THAT(reader.ReadFileContents(Dn("big.krc"), buffer), Fails());
    EXPECT_THAT(reader.LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_EQ(0u, buffer.length);
    EXPECT_EQ(MessageFor(LDAP_SERVER_DOWN), reader.ErrorText());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(FaultsTest, ServerThatStopsBetweenListingAndReadingIsDown) {
    DirectoryServer server;
    server.AddFile("a.krc", test::kSuffix, "x");
    CLDAPItems& items = Connect(server.Location());
    LdapItemList children;
    ASSERT_THAT(items.ListChildren(test::kSuffix, children), IsDone());
    ASSERT_EQ(1u, children.Count());
    server.Stop();
    FileBuffer buffer;
    EXPECT_THAT(items.ReadFileContents(children.At(0).path, buffer), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    server.Continue();
}

TEST_F(FaultsTest, AfterARestartANewConnectionWorks) {
    DirectoryServer server;
    server.AddFile("a.krc", test::kSuffix, "x");
    CLDAPItems& items = Connect(server.Location());
    server.Stop();
    server.Continue();
    FileBuffer buffer;
    EXPECT_THAT(items.ReadFileContents(Dn("a.krc"), buffer), Fails());
    items.Close();
    EXPECT_THAT(items.ConnectLocation(nullptr), IsDone());
    EXPECT_THAT(items.ReadFileContents(Dn("a.krc"), buffer), IsDone());
    EXPECT_EQ(1u, buffer.length);
}

TEST_F(FaultsTest, ListingOverTheServersSizeLimitFailsWithItsCode) {
    DirectoryServer server("database limits users size=3");
    server.Apply(Files(5, test::kSuffix));
    CLDAPItems& items = Connect(server.Location());
    LdapItemList children;
    EXPECT_THAT(items.ListChildren(test::kSuffix, children), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SIZELIMIT_EXCEEDED));
    EXPECT_EQ(MessageFor(LDAP_SIZELIMIT_EXCEEDED), items.ErrorText());
    // Looking for one entry stays within any limit.
    EXPECT_THAT(CodeOf(items.Entries().Find(test::kSuffix)), IsDone());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(FaultsTest, SearchOverTheServersTimeLimitFailsWithItsCode) {
    // The server answers searches of this entry as it does once the time is over.
    DirectoryServer server(
        "global moduleload retcode\ndatabase overlay retcode\n"
        "database retcode-parent \"ou=Slow,dc=farrow,dc=test\"\n"
        "database retcode-item \"cn=large\" 0x03 op=search\n");
    const std::string dn = std::string("cn=large,ou=Slow,") + test::kSuffix;
    CLDAPItems& items = Connect(server.Location());
    LdapItemList children;
    children.Add("junk", true);
    EXPECT_THAT(items.ListChildren(dn, children), Fails());
    EXPECT_EQ(0u, children.Count());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_TIMELIMIT_EXCEEDED));
    EXPECT_EQ(MessageFor(LDAP_TIMELIMIT_EXCEEDED), items.ErrorText());
    FileBuffer buffer;
    items.SetLastError(0);
    EXPECT_THAT(items.ReadFileContents(dn, buffer), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_TIMELIMIT_EXCEEDED));
    EXPECT_THAT(CodeOf(items.Entries().Find(dn)), Fails(LDAP_TIMELIMIT_EXCEEDED));
    // The connection itself goes on.
    EXPECT_THAT(CodeOf(items.Entries().Find(test::kSuffix)), IsDone());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(FaultsTest, EntriesWithoutTheNamingAttributeAreLeftOut) {
    DirectoryServer server;
    server.Apply("dn: uid=nameless," + std::string(test::kSuffix) +
                 "\nobjectClass: account\nuid: nameless\n");
    server.Apply("dn: " + Dn("named") +
                 "\nobjectClass: account\nobjectClass: extensibleObject\n"
                 "uid: u\ncn: named\n");
    CDepotPath location = server.Location();
    location.fileObjectClass = "account";
    CLDAPItems& items = Connect(location);
    LdapItemList children;
    EXPECT_THAT(items.ListChildren(test::kSuffix, children), IsDone());
    ASSERT_EQ(1u, children.Count());
    EXPECT_EQ("CN=named," + std::string(test::kSuffix), children.At(0).path);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(FaultsTest, ReferralEndsInTheServersCode) {
    DirectoryServer server;
    server.Apply("dn: " + Dn("elsewhere") +
                 "\nobjectClass: referral\nobjectClass: extensibleObject\n"
                 "cn: elsewhere\nref: ldap://127.0.0.1:1/dc=elsewhere\n");
    CLDAPItems& items = Connect(server.Location());
    FileBuffer buffer;
    EXPECT_THAT(items.ReadFileContents(Dn("elsewhere"), buffer), Fails());
    EXPECT_THAT(items.LastError(), testing::Not(IsCode(LDAP_SUCCESS)));
    EXPECT_THAT(CodeOf(items.Entries().Find("cn=a.krc," + Dn("elsewhere"))), Fails());
    LdapItemList children;
    EXPECT_THAT(items.ListChildren(test::kSuffix, children), IsDone());
    EXPECT_EQ(0u, children.Count());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(FaultsTest, WithoutTheSchemaAddingFailsWithTheServersCode) {
    DirectoryServer server("no-schema");
    CLDAPItems& items = Connect(server.Location());
    EXPECT_THAT(items.AddFolderEntry(Dn("sub"), "sub", &text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_INVALID_SYNTAX));
    EXPECT_EQ(MessageFor(LDAP_INVALID_SYNTAX).empty() ? "junk" : MessageFor(21), text_);
    EXPECT_THAT(items.AddFileEntry(Dn("a.krc"), "a.krc", "x", 1), Fails());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(FaultsTest, ServerThatRefusesTheProtocolVersionFailsTheBind) {
    DirectoryServer server("global disallow bind_simple");
    CDepotPath location = server.Location();
    location.authentication = kAnonymousAuthentication;
    ForgetServer(location.port);
    location_ = location.Clone();
    items_ = std::make_unique<CLDAPItems>(location_.get());
    location_->version = 9;
    EXPECT_THAT(items_->ConnectLocation(&text_), Fails());
    EXPECT_THAT(items_->LastError(), testing::Not(IsCode(LDAP_SUCCESS)));
    EXPECT_EQ(1u, boxes_.Boxes().size());
}

TEST_F(FaultsTest, ServerThatForbidsAnonymousAccessIsReportedOnce) {
    DirectoryServer server("global disallow bind_anon");
    CDepotPath location = server.Location();
    location.authentication = kAnonymousAuthentication;
    ForgetServer(location.port);
    location_ = location.Clone();
    items_ = std::make_unique<CLDAPItems>(location_.get());
    EXPECT_THAT(items_->ConnectLocation(&text_), Fails());
    EXPECT_THAT(items_->LastError(), IsCode(LDAP_INAPPROPRIATE_AUTH));
    EXPECT_EQ(1u, items_->Connection().Shared().Block().Access()->noPrompt);
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INAPPROPRIATE_AUTH)));
}

TEST_F(FaultsTest, FailureOfAnyCallOfTheConnectionLeavesNoHandleOpen) {
    static DirectoryClient genuine;
    static int open;
    static int left;
    BindDirectoryClient(genuine);
    DirectoryServer server;
    CDepotPath location = server.Location();
    location.authentication = kAnonymousAuthentication;
    location.connectTimeout = 10;
    for (int failing = 0; failing < 5; ++failing) {
        SCOPED_TRACE(failing);
        ForgetServer(location.port);
        open = 0;
        left = failing;
        {
            CLDAPItems items(&location);
            DirectoryClient& client = items.Client();
            client.ldap_init = [](PCHAR host, ULONG port) -> LDAP* {
                if (left-- == 0) return nullptr;
                ++open;
                return genuine.ldap_init(host, port);
            };
            client.ldap_set_option = [](LDAP* connection, int option, const void* value) -> ULONG {
                if (option != LDAP_OPT_PROTOCOL_VERSION) return LDAP_SUCCESS;
                return left-- == 0 ? ULONG{LDAP_NO_MEMORY}
                                   : genuine.ldap_set_option(connection, option, value);
            };
            client.ldap_connect = [](LDAP* connection, l_timeval* limit) -> ULONG {
                return left-- == 0 ? ULONG{LDAP_NO_MEMORY}
                                   : genuine.ldap_connect(connection, limit);
            };
            client.ldap_simple_bind_s = [](LDAP* connection, PCHAR name, PCHAR word) -> ULONG {
                return left-- == 0 ? ULONG{LDAP_NO_MEMORY}
                                   : genuine.ldap_simple_bind_s(connection, name, word);
            };
            client.ldap_unbind_s = [](LDAP* connection) -> ULONG {
                --open;
                return genuine.ldap_unbind_s(connection);
            };
            const bool connects = failing == 4;
            EXPECT_EQ(connects ? 1 : 0, items.ConnectLocation(nullptr));
            EXPECT_EQ(connects ? 1 : 0, open);
        }
        EXPECT_EQ(0, open);
    }
    EXPECT_EQ(4u, boxes_.Boxes().size());
}

}  // namespace
}  // namespace depot
