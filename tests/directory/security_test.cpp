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
using testing::HasSubstr;
using testing::Not;

DirectoryServer& TlsServer() {
    static DirectoryServer server("tls");
    return server;
}

// The client library of some systems, Wine's among them, accepts a certificate that nobody vouches
// for; what these tests show is that nothing is sent before a session is secure, and that each
// failure to make it so ends the connection.
class SecurityTest : public testing::Test {
protected:
    CLDAPItems& Make(std::uint32_t security, unsigned port) {
        location_ = TlsServer().Location().Clone();
        location_->host = "localhost";
        location_->port = port;
        location_->security = security;
        location_->authentication = kAnonymousAuthentication;
        ForgetServer(port, "localhost");
        items_ = std::make_unique<CLDAPItems>(location_.get());
        return *items_;
    }
    // A location that logs on by name and password, which it may be without.
    CLDAPItems& MakeSimple(std::uint32_t security, unsigned port, const std::string& password) {
        CLDAPItems& items = Make(security, port);
        location_->authentication = kSimpleAuthentication;
        location_->password = password;
        items.Connection().SetPrompt(&prompt_);
        return items;
    }
    unsigned PortOf(std::uint32_t security) const {
        return security == 2 ? TlsServer().TlsPort() : TlsServer().Port();
    }

    test::BoxLog boxes_;
    test::ScriptedPrompt prompt_;
    std::unique_ptr<CDepotPath> location_;
    std::unique_ptr<CLDAPItems> items_;
    std::string text_ = "junk";
};

TEST_F(SecurityTest, WithoutTheSettingTheSessionIsOpen) {
    TlsServer().Mark();
    EXPECT_THAT(Make(0, TlsServer().Port()).ConnectLocation(&text_), IsDone());
    EXPECT_THAT(TlsServer().Log(), Not(HasSubstr("TLS")));
}

TEST_F(SecurityTest, StartTlsSecuresTheSessionBeforeTheBind) {
    TlsServer().Mark();
    CLDAPItems& items = Make(1, TlsServer().Port());
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    const std::string log = TlsServer().Log();
    EXPECT_THAT(log, HasSubstr("STARTTLS"));
    EXPECT_LT(log.find("TLS established"), log.find("BIND dn="));
    EXPECT_THAT(CodeOf(items.Entries().Find(test::kSuffix)), IsDone());
}

TEST_F(SecurityTest, LdapsSecuresTheSessionFromItsStart) {
    TlsServer().Mark();
    CLDAPItems& items = Make(2, TlsServer().TlsPort());
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    const std::string log = TlsServer().Log();
    EXPECT_THAT(log, Not(HasSubstr("STARTTLS")));
    EXPECT_LT(log.find("TLS established"), log.find("BIND dn="));
    EXPECT_THAT(CodeOf(items.Entries().Find(test::kSuffix)), IsDone());
}

TEST_F(SecurityTest, FormOfNamesIsAskedForOverASecuredConnection) {
    prompt_.showsExamples = true;
    for (const std::uint32_t security : {1u, 2u}) {
        SCOPED_TRACE(security);
        prompt_.examples.clear();
        CLDAPItems& items = MakeSimple(security, PortOf(security), "");
        location_->username.clear();
        prompt_.Type(test::kEditor, test::kEditorPassword);
        TlsServer().Mark();
        EXPECT_THAT(items.Connection().Open(), IsDone());
        EXPECT_THAT(prompt_.examples, ElementsAre("cn=Mary Walker,dc=farrow,dc=test"));
        const std::string log = TlsServer().Log();
        EXPECT_LT(log.find("TLS established"), log.find("SRCH base=\"\""));
        EXPECT_THAT(log, HasSubstr("SRCH base=\"\""));
    }
}

TEST_F(SecurityTest, UnknownSettingIsTakenAsStartTls) {
    TlsServer().Mark();
    EXPECT_THAT(Make(3, TlsServer().Port()).ConnectLocation(&text_), IsDone());
    EXPECT_THAT(TlsServer().Log(), HasSubstr("TLS established"));
}

TEST_F(SecurityTest, ServerThatRefusesStartTlsIsNotBoundTo) {
    DirectoryServer plain;
    CLDAPItems& items = Make(1, plain.Port());
    plain.Mark();
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), testing::Not(IsCode(LDAP_SUCCESS)));
    EXPECT_FALSE(items.IsUsable());
    EXPECT_EQ(0, plain.Counts().binds);
    EXPECT_EQ(1u, boxes_.Boxes().size());
}

TEST_F(SecurityTest, AbsentServerIsReportedOnceWithLdaps) {
    CLDAPItems& items = Make(2, test::ClosedPort());
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_EQ(1u, boxes_.Boxes().size());
}

TEST_F(SecurityTest, CertificateThatTheClientRefusesEndsTheConnection) {
    CLDAPItems& items = Make(1, TlsServer().Port());
    items.Client().ldap_start_tls_s = [](LDAP*, PULONG, LDAPMessage**, PLDAPControlA*,
                                         PLDAPControlA*) -> ULONG { return LDAP_CONNECT_ERROR; };
    TlsServer().Mark();
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_CONNECT_ERROR));
    EXPECT_EQ(MessageFor(LDAP_CONNECT_ERROR), text_);
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_CONNECT_ERROR)));
    EXPECT_FALSE(items.IsUsable());
    EXPECT_EQ(0, TlsServer().Counts().binds);
}

// Some clients shake hands within the bind only.
TEST_F(SecurityTest, HandshakeThatBreaksBeforeTheBindAsksForNoPassword) {
    for (const std::uint32_t security : {1u, 2u}) {
        for (const std::uint32_t code : {LDAP_SERVER_DOWN, LDAP_CONNECT_ERROR, LDAP_LOCAL_ERROR}) {
            SCOPED_TRACE(testing::Message() << security << ", " << code);
            static std::uint32_t answer;
            answer = code;
            CLDAPItems& items = MakeSimple(security, PortOf(security), "editor-secret");
            items.Client().ldap_bind_s = [](LDAP*, PCHAR, PCHAR, ULONG) -> ULONG { return answer; };
            EXPECT_THAT(items.ConnectLocation(&text_), Fails());
            EXPECT_THAT(items.LastError(), IsCode(code));
        }
    }
    EXPECT_EQ(6u, boxes_.Boxes().size());
    EXPECT_TRUE(prompt_.shown.empty());
}

TEST_F(SecurityTest, PasswordThatCouldNotBeSentIsNotAskedFor) {
    for (const std::uint32_t timeout : {120u, 30u}) {
        for (const std::uint32_t security : {1u, 2u}) {
            SCOPED_TRACE(testing::Message() << timeout << ", " << security);
            CLDAPItems& items = MakeSimple(security, PortOf(security), "");
            location_->connectTimeout = timeout;
            // Some clients do not secure what they have connected with a limit.
            items.Client().ldap_start_tls_s = [](LDAP*, PULONG, LDAPMessage**, PLDAPControlA*,
                                                 PLDAPControlA*) -> ULONG {
                return LDAP_LOCAL_ERROR;
            };
            items.Client().ldap_connect = [](LDAP*, l_timeval*) -> ULONG {
                return LDAP_LOCAL_ERROR;
            };
            TlsServer().Mark();
            EXPECT_THAT(items.Connection().Open(), Fails(LDAP_LOCAL_ERROR));
            EXPECT_EQ(0, TlsServer().Counts().binds);
        }
    }
    EXPECT_EQ(4u, boxes_.Boxes().size());
    EXPECT_TRUE(prompt_.shown.empty());
}

TEST_F(SecurityTest, PasswordIsAskedForOnceTheSessionCanBeSecured) {
    for (const std::uint32_t security : {1u, 2u}) {
        CLDAPItems& items = MakeSimple(security, PortOf(security), "");
        prompt_.Type("cn=editor,dc=farrow,dc=test", "editor-secret");
        TlsServer().Mark();
        EXPECT_THAT(items.Connection().Open(), IsDone());
        EXPECT_EQ(1, TlsServer().Counts().binds);
    }
    EXPECT_EQ(2u, prompt_.shown.size());
    EXPECT_EQ(0u, boxes_.Boxes().size());
}

TEST_F(SecurityTest, RefusedPasswordOfASecuredSessionIsAskedForAgain) {
    CLDAPItems& items = MakeSimple(1, TlsServer().Port(), "wrong");
    prompt_.Type("cn=editor,dc=farrow,dc=test", "editor-secret");
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    EXPECT_EQ(1u, prompt_.shown.size());
}

TEST_F(SecurityTest, ClientWithoutTlsFailsAsServerDown) {
    for (const std::uint32_t security : {1u, 2u}) {
        CLDAPItems& items = Make(security, TlsServer().Port());
        items.Client().ldap_start_tls_s = DirectoryClient().ldap_start_tls_s;
        items.Client().ldap_sslinit = DirectoryClient().ldap_sslinit;
        EXPECT_THAT(items.ConnectLocation(&text_), Fails());
        EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    }
}

}  // namespace
}  // namespace depot
