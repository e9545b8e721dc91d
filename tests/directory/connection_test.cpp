#include <cstring>

#include "support/directory_fixture.h"

namespace depot {
namespace {

using test::ForgetServer;
using test::MessageFor;
using testing::ElementsAre;
using testing::IsEmpty;

// What a replaced entry point saw of its calls; one test at a time.
struct Seen {
    int calls = 0;
    std::vector<std::pair<int, ULONG>> options;
    LONG seconds = -1;
    LONG microseconds = -1;
    std::string userName;
    ULONG method = 0;
};
Seen seen;
DirectoryClient genuine;

class ConnectionTest : public test::DirectoryFixture {
protected:
    ConnectionTest() {
        seen = {};
        BindDirectoryClient(genuine);
    }

    CLDAPItems& Make(const CDepotPath& location) {
        location_ = location.Clone();
        items_ = std::make_unique<CLDAPItems>(location_.get());
        items_->SetPrompt(&prompt_);
        return *items_;
    }
    CDepotPath Anonymous() const {
        CDepotPath location = server_.Location();
        location.authentication = kAnonymousAuthentication;
        return location;
    }
    CDepotPath WithoutServer() const {
        CDepotPath location = Anonymous();
        location.port = test::ClosedPort();
        ForgetServer(location.port);
        return location;
    }
    DirectoryInfo& Info() { return *items_->SharedInfo().Access(); }

    std::string text_ = "junk";
};

TEST_F(ConnectionTest, ANewObjectIsUsableAndNotConnected) {
    CLDAPItems& items = Make(server_.Location());
    EXPECT_TRUE(items.IsBound());
    EXPECT_TRUE(items.IsUsable());
    EXPECT_FALSE(items.IsConnected());
    EXPECT_EQ(0u, items.LastError());
}

TEST_F(ConnectionTest, WithoutARecordTheObjectOwnsADefaultOne) {
    CLDAPItems items(nullptr);
    EXPECT_EQ(389u, items.Location().port);
    EXPECT_EQ(nullptr, items.Location().owner);
    EXPECT_EQ(":389", items.SharedInfo().Key());
}

TEST_F(ConnectionTest, TheBlockKeyIsMadeOfTheServer) {
    CDepotPath location = server_.Location();
    location.host = "LocalHost";
    EXPECT_EQ("localhost:" + std::to_string(location.port), Make(location).SharedInfo().Key());
}

TEST_F(ConnectionTest, SimpleAuthenticationBindsWithTheGivenCredentials) {
    CLDAPItems& items = Make(server_.Location());
    server_.Mark();
    EXPECT_EQ(1, items.Connect("127.0.0.1", test::kReaderPassword, test::kReader, &text_));
    EXPECT_TRUE(items.IsConnected());
    EXPECT_EQ("junk", text_);
    EXPECT_THAT(server_.Log(), testing::HasSubstr("BIND dn=\"cn=reader,dc=farrow,dc=test\""));
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(ConnectionTest, AnyOtherAuthenticationNumberBindsAsSimple) {
    CDepotPath location = server_.Location();
    location.authentication = 5;
    server_.Mark();
    EXPECT_EQ(1, Make(location).ConnectLocation(&text_));
    EXPECT_THAT(server_.Log(), testing::HasSubstr("BIND dn=\"cn=editor,dc=farrow,dc=test\""));
}

TEST_F(ConnectionTest, AnonymousAuthenticationBindsWithoutAName) {
    server_.Mark();
    EXPECT_EQ(1, Make(Anonymous()).ConnectLocation(&text_));
    EXPECT_THAT(server_.Log(), testing::HasSubstr("BIND dn=\"\" method=128"));
}

TEST_F(ConnectionTest, ProtocolVersionIsTheRecords) {
    CDepotPath location = server_.Location();
    location.version = 2;
    CLDAPItems& items = Make(location);
    items.Client().ldap_set_option = [](LDAP* connection, int option, const void* value) -> ULONG {
        ULONG number = 0;
        std::memcpy(&number, value, sizeof(number));
        seen.options.emplace_back(option, number);
        return genuine.ldap_set_option(connection, option, value);
    };
    EXPECT_EQ(1, items.ConnectLocation(&text_));
    EXPECT_THAT(seen.options, testing::Contains(std::pair(17, ULONG{2})));
}

TEST_F(ConnectionTest, ASecondConnectOfAConnectedObjectDoesNotTouchTheServer) {
    CLDAPItems& items = Make(server_.Location());
    ASSERT_EQ(1, items.ConnectLocation(&text_));
    server_.Mark();
    EXPECT_EQ(1, items.ConnectLocation(&text_));
    EXPECT_EQ(test::OperationCounts(), server_.Counts());
}

TEST_F(ConnectionTest, ASuccessfulBindClearsTheServersLastError) {
    CLDAPItems& items = Make(server_.Location());
    Info().lastError = 49;
    EXPECT_EQ(1, items.ConnectLocation(&text_));
    EXPECT_EQ(0u, Info().lastError);
}

TEST_F(ConnectionTest, TheDefaultTimeoutMakesNoConnectCall) {
    const auto spy = [](LDAP* connection, l_timeval* limit) -> ULONG {
        ++seen.calls;
        seen.seconds = limit->tv_sec;
        seen.microseconds = limit->tv_usec;
        return genuine.ldap_connect(connection, limit);
    };
    for (const unsigned timeout : {119u, 120u, 121u}) {
        SCOPED_TRACE(timeout);
        seen = {};
        CDepotPath location = server_.Location();
        location.connectTimeout = timeout;
        CLDAPItems& items = Make(location);
        items.Client().ldap_connect = spy;
        EXPECT_EQ(1, items.ConnectLocation(&text_));
        EXPECT_EQ(timeout == 120 ? 0 : 1, seen.calls);
        EXPECT_EQ(timeout == 120 ? -1 : static_cast<LONG>(timeout), seen.seconds);
        EXPECT_EQ(timeout == 120 ? -1 : 0, seen.microseconds);
    }
}

TEST_F(ConnectionTest, EveryTimeLimitOfTheClientIsSet) {
    for (const unsigned timeout : {0u, 7u, 120u}) {
        SCOPED_TRACE(timeout);
        seen = {};
        CDepotPath location = server_.Location();
        location.connectTimeout = timeout;
        CLDAPItems& items = Make(location);
        items.Client().ldap_set_option = [](LDAP*, int option, const void* value) -> ULONG {
            ULONG number = 0;
            std::memcpy(&number, value, sizeof(number));
            seen.options.emplace_back(option, number);
            return LDAP_SUCCESS;
        };
        items.Client().ldap_connect = [](LDAP*, l_timeval*) -> ULONG { return LDAP_SUCCESS; };
        items.ConnectLocation(&text_);
        const ULONG seconds = timeout == 0 ? 120 : timeout;
        EXPECT_THAT(seen.options,
                    ElementsAre(std::pair(17, ULONG{3}), std::pair(LDAP_OPT_TIMELIMIT, seconds),
                                std::pair(0x42, seconds)));
    }
}

TEST_F(ConnectionTest, AClientThatDoesNotKnowTheLimitsConnectsAllTheSame) {
    CLDAPItems& items = Make(server_.Location());
    items.Client().ldap_set_option = [](LDAP* connection, int option, const void* value) -> ULONG {
        return option == LDAP_OPT_PROTOCOL_VERSION
                   ? genuine.ldap_set_option(connection, option, value)
                   : ULONG{LDAP_NOT_SUPPORTED};
    };
    EXPECT_EQ(1, items.ConnectLocation(&text_));
}

TEST_F(ConnectionTest, AnAbsentServerIsReportedOnceAndTheObjectStaysUnusable) {
    CLDAPItems& items = Make(WithoutServer());
    EXPECT_EQ(0, items.ConnectLocation(&text_));
    EXPECT_EQ(81u, items.LastError());
    EXPECT_EQ(81u, Info().lastError);
    EXPECT_EQ(MessageFor(81), text_);
    ASSERT_EQ(1u, boxes_.Boxes().size());
    const test::ShownBox box = boxes_.Boxes()[0];
    EXPECT_EQ("Quillon", box.caption);
    EXPECT_EQ(MessageFor(81), box.text);
    EXPECT_TRUE(box.hasErrorIcon);
    EXPECT_EQ(nullptr, box.owner);
    EXPECT_FALSE(items.IsUsable());
    EXPECT_FALSE(items.IsConnected());
}

TEST_F(ConnectionTest, AFailedAnonymousBindTurnsPromptingOff) {
    CLDAPItems& items = Make(WithoutServer());
    EXPECT_EQ(0, items.ConnectLocation(nullptr));
    EXPECT_EQ(1u, Info().noPrompt);
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(ConnectionTest, AfterAnAnonymousFailureASimpleBindFailsWithoutAPrompt) {
    CDepotPath location = server_.Location();
    location.password = "wrong";
    CLDAPItems& items = Make(location);
    Info().noPrompt = 1;
    EXPECT_EQ(0, items.ConnectLocation(&text_));
    EXPECT_EQ(88u, items.LastError());
    EXPECT_FALSE(items.IsUsable());
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(49)));
}

TEST_F(ConnectionTest, AnUnusableObjectFailsAtOnceWithItsOwnBox) {
    CDepotPath location = Anonymous();
    CLDAPItems& items = Make(location);
    items.Client().ldap_init = [](PCHAR, ULONG) -> LDAP* { return nullptr; };
    items.Client().LdapGetLastError = []() -> ULONG { return LDAP_NO_MEMORY; };
    EXPECT_EQ(0, items.ConnectLocation(&text_));
    EXPECT_EQ(90u, items.LastError());
    EXPECT_FALSE(items.IsUsable());
    items.Client() = genuine;
    server_.Mark();
    text_ = "junk";
    EXPECT_EQ(0, items.ConnectLocation(&text_));
    EXPECT_EQ(81u, items.LastError());
    EXPECT_EQ(81u, Info().lastError);
    EXPECT_EQ(MessageFor(81), text_);
    EXPECT_EQ("", server_.Log());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(90), MessageFor(81)));
}

TEST_F(ConnectionTest, AnEmptyHostIsAServerThatIsDown) {
    CDepotPath location = Anonymous();
    location.host.clear();
    CLDAPItems& items = Make(location);
    items.Client().ldap_init = [](PCHAR, ULONG) -> LDAP* { return nullptr; };
    EXPECT_EQ(0, items.ConnectLocation(&text_));
    EXPECT_EQ(81u, items.LastError());
    EXPECT_EQ(1u, boxes_.Boxes().size());
}

TEST_F(ConnectionTest, AProtocolVersionThatIsRefusedEndsTheConnection) {
    CLDAPItems& items = Make(server_.Location());
    items.Client().ldap_set_option = [](LDAP*, int, const void*) -> ULONG {
        return LDAP_PARAM_ERROR;
    };
    items.Client().ldap_unbind_s = [](LDAP* connection) -> ULONG {
        ++seen.calls;
        return genuine.ldap_unbind_s(connection);
    };
    EXPECT_EQ(0, items.ConnectLocation(&text_));
    EXPECT_EQ(89u, items.LastError());
    EXPECT_EQ(1, seen.calls);
    EXPECT_FALSE(items.IsUsable());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(89)));
}

TEST_F(ConnectionTest, AConnectCallThatFailsEndsTheConnection) {
    CDepotPath location = server_.Location();
    location.connectTimeout = 3;
    CLDAPItems& items = Make(location);
    items.Client().ldap_connect = [](LDAP*, l_timeval*) -> ULONG { return LDAP_TIMEOUT; };
    EXPECT_EQ(0, items.ConnectLocation(&text_));
    EXPECT_EQ(85u, items.LastError());
    EXPECT_FALSE(items.IsUsable());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(85)));
}

TEST_F(ConnectionTest, NegotiateFailsCleanlyAgainstAServerWithoutIt) {
    CDepotPath location = server_.Location();
    location.authentication = kNegotiateAuthentication;
    CLDAPItems& items = Make(location);
    EXPECT_EQ(0, items.ConnectLocation(&text_));
    EXPECT_NE(0u, items.LastError());
    EXPECT_EQ(1u, Info().noPrompt);
    EXPECT_EQ(1u, boxes_.Boxes().size());
    EXPECT_FALSE(items.IsUsable());
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(ConnectionTest, NegotiateBindsAsTheCurrentUser) {
    CDepotPath location = server_.Location();
    location.authentication = kNegotiateAuthentication;
    CLDAPItems& items = Make(location);
    items.Client().ldap_bind_s = [](LDAP* connection, PCHAR name, PCHAR credentials,
                                    ULONG method) -> ULONG {
        seen.calls += name == nullptr && credentials == nullptr ? 1 : 100;
        seen.method = method;
        return genuine.ldap_simple_bind_s(connection, nullptr, nullptr);
    };
    EXPECT_EQ(1, items.ConnectLocation(&text_));
    EXPECT_EQ(1, seen.calls);
    EXPECT_EQ(0x486u, seen.method);
    EXPECT_EQ(0u, Info().noPrompt);
    EXPECT_EQ(0u, items.FindEntry(base_));
}

TEST_F(ConnectionTest, DisconnectLeavesAnUnusableObject) {
    CLDAPItems& items = Make(server_.Location());
    ASSERT_EQ(1, items.ConnectLocation(&text_));
    EXPECT_EQ(0, items.Disconnect());
    EXPECT_FALSE(items.IsUsable());
    EXPECT_FALSE(items.IsConnected());
    EXPECT_EQ(0, items.Disconnect());
}

TEST_F(ConnectionTest, CloseLeavesAnObjectThatCanConnectAgain) {
    CLDAPItems& items = Make(server_.Location());
    EXPECT_EQ(1, items.Close());
    ASSERT_EQ(1, items.ConnectLocation(&text_));
    server_.Mark();
    EXPECT_EQ(1, items.Close());
    EXPECT_FALSE(items.IsConnected());
    EXPECT_TRUE(items.IsUsable());
    EXPECT_TRUE(server_.WaitForLog("UNBIND"));
    EXPECT_EQ(1, items.ConnectLocation(&text_));
}

TEST_F(ConnectionTest, CloseReportsAFailedUnbind) {
    CLDAPItems& items = Make(server_.Location());
    ASSERT_EQ(1, items.ConnectLocation(&text_));
    items.Client().ldap_unbind_s = [](LDAP* connection) -> ULONG {
        genuine.ldap_unbind_s(connection);
        return LDAP_LOCAL_ERROR;
    };
    EXPECT_EQ(0, items.Close());
    EXPECT_FALSE(items.IsConnected());
    EXPECT_TRUE(items.IsUsable());
}

TEST_F(ConnectionTest, AMissingLibraryMakesEveryOperationFailAsServerDown) {
    CLDAPItems& items = Make(Anonymous());
    EXPECT_EQ(0, BindDirectoryClient(items.Client(), "C:\\no-such-folder\\wldap32.dll"));
    EXPECT_EQ(0, items.ConnectLocation(&text_));
    EXPECT_EQ(81u, items.LastError());
    EXPECT_EQ(81u, Info().lastError);
    EXPECT_EQ(MessageFor(81), text_);
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(81)));
}

TEST_F(ConnectionTest, MissingEntryPointsOfTheConnectionFailAsServerDown) {
    const auto fails = [&](auto member, const CDepotPath& location) {
        CLDAPItems& items = Make(location);
        items.Client().*member = DirectoryClient().*member;
        EXPECT_EQ(0, items.ConnectLocation(&text_));
        EXPECT_EQ(81u, Info().lastError);
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

TEST_F(ConnectionTest, EveryHandleIsUnboundWithTheObject) {
    static int open;
    open = 0;
    for (int round = 0; round < 3; ++round) {
        CDepotPath location = server_.Location();
        location.password = "wrong";
        CLDAPItems& items = Make(location);
        items.Client().ldap_init = [](PCHAR host, ULONG port) {
            ++open;
            return genuine.ldap_init(host, port);
        };
        items.Client().ldap_unbind_s = [](LDAP* connection) -> ULONG {
            --open;
            return genuine.ldap_unbind_s(connection);
        };
        prompt_.Type(test::kEditor, "wrong again");
        prompt_.Type(test::kEditor, test::kEditorPassword);
        EXPECT_EQ(1, items.ConnectLocation(&text_));
        // The handles of the two failed binds are kept as long as the object.
        EXPECT_EQ(3, open);
        items_.reset();
        EXPECT_EQ(0, open);
    }
}

TEST_F(ConnectionTest, ErrorTextPrefersWhatAnyProcessSawAtTheServer) {
    CLDAPItems& items = Make(server_.Location());
    items.SetLastError(32);
    EXPECT_EQ(MessageFor(32), items.ErrorText());
    Info().lastError = 49;
    EXPECT_EQ(MessageFor(49), items.ErrorText());
}

TEST_F(ConnectionTest, ReportingSuccessShowsNothing) {
    CLDAPItems& items = Make(server_.Location());
    items.ReportError(34, &text_);
    EXPECT_EQ(MessageFor(34), text_);
    items.ReportError(0, &text_);
    EXPECT_EQ(0u, Info().lastError);
    EXPECT_EQ(1u, boxes_.Boxes().size());
}

TEST_F(ConnectionTest, ACodeWithoutAMessageLeavesTheTextAlone) {
    CLDAPItems& items = Make(server_.Location());
    items.Client().LdapMapErrorToWin32 = [](ULONG) -> ULONG { return 0xDEAD0001; };
    items.ReportError(80, &text_);
    EXPECT_EQ("junk", text_);
    EXPECT_THAT(boxes_.Texts(), ElementsAre(""));
}

TEST_F(ConnectionTest, AServerThatStopsAfterTheBindIsDownForEachOperation) {
    test::DirectoryServer mine;
    ForgetServer(mine.Port());
    CLDAPItems& items = Make(mine.Location());
    ASSERT_EQ(1, items.ConnectLocation(&text_));
    mine.Stop();
    EXPECT_EQ(81u, items.FindEntry(test::kSuffix));
    FileBuffer buffer;
    EXPECT_EQ(0, items.ReadFileContents("cn=a.krc,dc=farrow,dc=test", buffer));
    EXPECT_EQ(81u, items.LastError());
    LdapItemList children;
    EXPECT_EQ(0, items.ListChildren(test::kSuffix, children));
    EXPECT_EQ(81u, items.LastError());
    EXPECT_EQ(81u, items.AddFileEntry("cn=a.krc,dc=farrow,dc=test", "a.krc", "x", 1));
    EXPECT_EQ(0, items.DeleteTree("cn=a.krc,dc=farrow,dc=test", nullptr));
    EXPECT_EQ(81u, items.LastError());
    mine.Continue();
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

}  // namespace
}  // namespace depot
