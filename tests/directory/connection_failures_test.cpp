// Connections that cannot be made, and what is told of them.
#include "directory/connection_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::ForgetServer;
using test::genuine;
using test::IsCode;
using test::IsDone;
using test::MessageFor;
using test::seen;
using testing::ElementsAre;
using testing::IsEmpty;

using ConnectionFailuresTest = test::ConnectionTest;

TEST_F(ConnectionFailuresTest, AbsentServerIsReportedOnceAndTheObjectStaysUnusable) {
    CLDAPItems& items = Make(WithoutServer());
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SERVER_DOWN));
    EXPECT_EQ(MessageFor(LDAP_SERVER_DOWN), text_);
    ASSERT_EQ(1u, boxes_.Boxes().size());
    const test::ShownBox box = boxes_.Boxes()[0];
    EXPECT_EQ("Quillon", box.caption);
    EXPECT_EQ(MessageFor(LDAP_SERVER_DOWN), box.text);
    EXPECT_TRUE(box.hasErrorIcon);
    EXPECT_EQ(nullptr, box.owner);
    EXPECT_FALSE(items.IsUsable());
    EXPECT_FALSE(items.IsConnected());
}

TEST_F(ConnectionFailuresTest, FailedAnonymousBindTurnsPromptingOff) {
    CLDAPItems& items = Make(WithoutServer());
    EXPECT_THAT(items.ConnectLocation(nullptr), Fails());
    EXPECT_EQ(1u, Info().noPrompt);
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(ConnectionFailuresTest, AfterAnAnonymousFailureASimpleBindFailsWithoutAPrompt) {
    CDepotPath location = server_.Location();
    location.password = "wrong";
    CLDAPItems& items = Make(location);
    Info().noPrompt = 1;
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_FALSE(items.IsUsable());
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS)));
}

TEST_F(ConnectionFailuresTest, UnusableObjectFailsAtOnceWithItsOwnBox) {
    CDepotPath location = Anonymous();
    CLDAPItems& items = Make(location);
    items.Client().ldap_init = [](PCHAR, ULONG) -> LDAP* { return nullptr; };
    items.Client().LdapGetLastError = []() -> ULONG { return LDAP_NO_MEMORY; };
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_NO_MEMORY));
    EXPECT_FALSE(items.IsUsable());
    items.Client() = genuine;
    server_.Mark();
    text_ = "junk";
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SERVER_DOWN));
    EXPECT_EQ(MessageFor(LDAP_SERVER_DOWN), text_);
    EXPECT_EQ("", server_.Log());
    EXPECT_THAT(boxes_.Texts(),
                ElementsAre(MessageFor(LDAP_NO_MEMORY), MessageFor(LDAP_SERVER_DOWN)));
}

TEST_F(ConnectionFailuresTest, EmptyHostIsAServerThatIsDown) {
    CDepotPath location = Anonymous();
    location.host.clear();
    CLDAPItems& items = Make(location);
    items.Client().ldap_init = [](PCHAR, ULONG) -> LDAP* { return nullptr; };
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_EQ(1u, boxes_.Boxes().size());
}

TEST_F(ConnectionFailuresTest, ProtocolVersionThatIsRefusedEndsTheConnection) {
    CLDAPItems& items = Make(server_.Location());
    items.Client().ldap_set_option = [](LDAP*, int, const void*) -> ULONG {
        return LDAP_PARAM_ERROR;
    };
    items.Client().ldap_unbind_s = [](LDAP* connection) -> ULONG {
        ++seen.calls;
        return genuine.ldap_unbind_s(connection);
    };
    ExpectEnded(items, 89);
    EXPECT_EQ(1, seen.calls);
}

TEST_F(ConnectionFailuresTest, ConnectionThatWouldFollowReferralsIsEnded) {
    CLDAPItems& items = Make(server_.Location());
    items.Client().ldap_set_option = [](LDAP* connection, int option, const void* value) -> ULONG {
        return option == LDAP_OPT_REFERRALS ? ULONG{LDAP_PARAM_ERROR}
                                            : genuine.ldap_set_option(connection, option, value);
    };
    ExpectEnded(items, 89);
}

TEST_F(ConnectionFailuresTest, ConnectCallThatFailsEndsTheConnection) {
    CDepotPath location = server_.Location();
    location.connectTimeout = 3;
    CLDAPItems& items = Make(location);
    items.Client().ldap_connect = [](LDAP*, l_timeval*) -> ULONG { return LDAP_TIMEOUT; };
    ExpectEnded(items, 85);
}

TEST_F(ConnectionFailuresTest, NegotiateFailsCleanlyAgainstAServerWithoutIt) {
    CDepotPath location = server_.Location();
    location.authentication = kNegotiateAuthentication;
    CLDAPItems& items = Make(location);
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), testing::Not(IsCode(LDAP_SUCCESS)));
    EXPECT_EQ(1u, Info().noPrompt);
    EXPECT_EQ(1u, boxes_.Boxes().size());
    EXPECT_FALSE(items.IsUsable());
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(ConnectionFailuresTest, CloseReportsAFailedUnbind) {
    CLDAPItems& items = Make(server_.Location());
    ASSERT_THAT(items.ConnectLocation(&text_), IsDone());
    items.Client().ldap_unbind_s = [](LDAP* connection) -> ULONG {
        genuine.ldap_unbind_s(connection);
        return LDAP_LOCAL_ERROR;
    };
    EXPECT_THAT(items.Close(), Fails());
    EXPECT_FALSE(items.IsConnected());
    EXPECT_TRUE(items.IsUsable());
}

TEST_F(ConnectionFailuresTest, MissingLibraryMakesEveryOperationFailAsServerDown) {
    CLDAPItems& items = Make(Anonymous());
    EXPECT_THAT(BindDirectoryClient(items.Client(), "C:\\no-such-folder\\wldap32.dll"), Fails());
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SERVER_DOWN));
    EXPECT_EQ(MessageFor(LDAP_SERVER_DOWN), text_);
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_SERVER_DOWN)));
}

TEST_F(ConnectionFailuresTest, MissingEntryPointsOfTheConnectionFailAsServerDown) {
    const auto fails = [&](auto member, const CDepotPath& location) {
        CLDAPItems& items = Make(location);
        items.Client().*member = DirectoryClient().*member;
        EXPECT_THAT(items.ConnectLocation(&text_), Fails());
        EXPECT_THAT(Info().lastError, IsCode(LDAP_SERVER_DOWN));
        ForgetServer(server_.Port());
    };
    CDepotPath timed = Anonymous();
    timed.connectTimeout = 5;
    CDepotPath negotiate = Anonymous();
    negotiate.authentication = kNegotiateAuthentication;
    fails(&DirectoryClient::ldap_init, Anonymous());
    fails(&DirectoryClient::ldap_set_option, Anonymous());
    fails(&DirectoryClient::ldap_connect, timed);
    fails(&DirectoryClient::ldap_simple_bind_s, Anonymous());
    fails(&DirectoryClient::ldap_bind_s, negotiate);
    EXPECT_EQ(5u, boxes_.Boxes().size());
}

TEST_F(ConnectionFailuresTest, ErrorTextPrefersWhatAnyProcessSawAtTheServer) {
    CLDAPItems& items = Make(server_.Location());
    items.SetLastError(32);
    EXPECT_EQ(MessageFor(LDAP_NO_SUCH_OBJECT), items.ErrorText());
    Info().lastError = 49;
    EXPECT_EQ(MessageFor(LDAP_INVALID_CREDENTIALS), items.ErrorText());
}

TEST_F(ConnectionFailuresTest, ReportingSuccessShowsNothing) {
    CLDAPItems& items = Make(server_.Location());
    items.ReportError(34, &text_);
    EXPECT_EQ(MessageFor(LDAP_INVALID_DN_SYNTAX), text_);
    items.ReportError(0, &text_);
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
    EXPECT_EQ(1u, boxes_.Boxes().size());
}

TEST_F(ConnectionFailuresTest, CodeWithoutAMessageLeavesTheTextAlone) {
    CLDAPItems& items = Make(server_.Location());
    items.Client().LdapMapErrorToWin32 = [](ULONG) -> ULONG { return 0xDEAD0001; };
    items.ReportError(80, &text_);
    EXPECT_EQ("junk", text_);
    EXPECT_THAT(boxes_.Texts(), ElementsAre(""));
}

TEST_F(ConnectionFailuresTest, ServerThatStopsAfterTheBindIsDownForEachOperation) {
    test::DirectoryServer mine;
    ForgetServer(mine.Port());
    CLDAPItems& items = Make(mine.Location());
    ASSERT_THAT(items.ConnectLocation(&text_), IsDone());
    mine.Stop();
    EXPECT_THAT(CodeOf(items.Entries().Find(test::kSuffix)), Fails(LDAP_SERVER_DOWN));
    FileBuffer buffer;
    EXPECT_THAT(items.ReadFileContents("cn=a.krc,dc=farrow,dc=test", buffer), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    LdapItemList children;
    EXPECT_THAT(items.ListChildren(test::kSuffix, children), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(items.AddFileEntry("cn=a.krc,dc=farrow,dc=test", "a.krc", "x", 1),
                Fails(LDAP_SERVER_DOWN));
    EXPECT_THAT(items.DeleteTree("cn=a.krc,dc=farrow,dc=test", nullptr), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    mine.Continue();
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

}  // namespace
}  // namespace depot
