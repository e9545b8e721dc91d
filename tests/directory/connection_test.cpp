#include <cstring>

#include "directory/connection_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::ConnectionTest;
using test::Fails;
using test::genuine;
using test::IsCode;
using test::IsDone;
using test::seen;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ConnectionTest, NewObjectIsUsableAndNotConnected) {
    CLDAPItems& items = Make(server_.Location());
    EXPECT_TRUE(items.IsBound());
    EXPECT_TRUE(items.IsUsable());
    EXPECT_FALSE(items.IsConnected());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SUCCESS));
}

TEST_F(ConnectionTest, WithoutARecordTheObjectOwnsADefaultOne) {
    CLDAPItems items(nullptr);
    EXPECT_EQ(389u, items.Location().port);
    EXPECT_EQ(nullptr, items.Location().owner);
    EXPECT_EQ(":389", items.Connection().Shared().Block().Key());
}

TEST_F(ConnectionTest, BlockKeyIsMadeOfTheServer) {
    CDepotPath location = server_.Location();
    location.host = "LocalHost";
    EXPECT_EQ("localhost:" + std::to_string(location.port),
              Make(location).Connection().Shared().Block().Key());
}

TEST_F(ConnectionTest, SimpleAuthenticationBindsWithTheGivenCredentials) {
    CLDAPItems& items = Make(server_.Location());
    server_.Mark();
    EXPECT_THAT(items.Connect("127.0.0.1", test::kReaderPassword, test::kReader, &text_), IsDone());
    EXPECT_TRUE(items.IsConnected());
    EXPECT_EQ("junk", text_);
    EXPECT_THAT(server_.Log(), testing::HasSubstr("BIND dn=\"cn=reader,dc=farrow,dc=test\""));
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(ConnectionTest, AnyOtherAuthenticationNumberBindsAsSimple) {
    CDepotPath location = server_.Location();
    location.authentication = 5;
    server_.Mark();
    EXPECT_THAT(Make(location).ConnectLocation(&text_), IsDone());
    EXPECT_THAT(server_.Log(), testing::HasSubstr("BIND dn=\"cn=editor,dc=farrow,dc=test\""));
}

TEST_F(ConnectionTest, AnonymousAuthenticationBindsWithoutAName) {
    server_.Mark();
    EXPECT_THAT(Make(Anonymous()).ConnectLocation(&text_), IsDone());
    EXPECT_THAT(server_.Log(), testing::HasSubstr("BIND dn=\"\" method=128"));
}

TEST_F(ConnectionTest, ProtocolVersionIsTheRecords) {
    CDepotPath location = server_.Location();
    location.version = 2;
    CLDAPItems& items = Make(location);
    items.Client().ldap_set_option = [](LDAP* connection, int option, const void* value) -> ULONG {
        // That one is no pointer.
        if (option == LDAP_OPT_REFERRALS) return LDAP_SUCCESS;
        ULONG number = 0;
        std::memcpy(&number, value, sizeof(number));
        seen.options.emplace_back(option, number);
        return genuine.ldap_set_option(connection, option, value);
    };
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    EXPECT_THAT(seen.options, testing::Contains(std::pair(17, ULONG{2})));
}

TEST_F(ConnectionTest, SecondConnectOfAConnectedObjectDoesNotTouchTheServer) {
    CLDAPItems& items = Make(server_.Location());
    ASSERT_THAT(items.ConnectLocation(&text_), IsDone());
    server_.Mark();
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    EXPECT_EQ(test::OperationCounts(), server_.Counts());
}

TEST_F(ConnectionTest, SuccessfulBindClearsTheServersLastError) {
    CLDAPItems& items = Make(server_.Location());
    Info().lastError = 49;
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
}

TEST_F(ConnectionTest, DefaultTimeoutMakesNoConnectCall) {
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
        EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
        EXPECT_EQ(timeout == 120 ? 0 : 1, seen.calls);
        EXPECT_EQ(timeout == 120 ? -1 : static_cast<LONG>(timeout), seen.seconds);
        EXPECT_EQ(timeout == 120 ? -1 : 0, seen.microseconds);
    }
}

TEST_F(ConnectionTest, OperationsHaveAtLeastTwoMinutesAndNothingWaitsLongerThanADay) {
    constexpr unsigned kDay = 86400;
    const struct {
        unsigned timeout;
        LONG connecting;
        ULONG operating;
    } rows[] = {
        {0, 0, 120},
        {7, 7, 120},
        {120, -1, 120},  // without a call
        {121, 121, 121},
        {kDay, kDay, kDay},
        {kDay + 1, kDay, kDay},
        {0x7FFFFFFF, kDay, kDay},
        {0x80000000, kDay, kDay},
        {0xFFFFFFFF, kDay, kDay},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.timeout);
        seen = {};
        CDepotPath location = server_.Location();
        location.connectTimeout = row.timeout;
        CLDAPItems& items = Make(location);
        items.Client().ldap_set_option = [](LDAP*, int option, const void* value) -> ULONG {
            // That one is no pointer.
            if (option == LDAP_OPT_REFERRALS) return LDAP_SUCCESS;
            ULONG number = 0;
            std::memcpy(&number, value, sizeof(number));
            seen.options.emplace_back(option, number);
            return LDAP_SUCCESS;
        };
        items.Client().ldap_connect = [](LDAP*, l_timeval* limit) -> ULONG {
            seen.seconds = limit->tv_sec;
            return LDAP_SUCCESS;
        };
        items.ConnectLocation(&text_);
        EXPECT_THAT(seen.options, ElementsAre(std::pair(17, ULONG{3}),
                                              std::pair(LDAP_OPT_TIMELIMIT, row.operating),
                                              std::pair(0x42, row.operating)));
        EXPECT_EQ(row.connecting, seen.seconds);
    }
}

TEST_F(ConnectionTest, SearchesSucceedWithATimeoutOfAnySize) {
    for (const unsigned timeout : {1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(timeout);
        CDepotPath location = server_.Location();
        location.connectTimeout = timeout;
        CLDAPItems& items = Make(location);
        ASSERT_THAT(items.ConnectLocation(&text_), IsDone());
        EXPECT_THAT(CodeOf(items.Entries().Find(base_)), IsDone());
    }
}

TEST_F(ConnectionTest, ClientThatDoesNotKnowTheLimitsConnectsAllTheSame) {
    CLDAPItems& items = Make(server_.Location());
    items.Client().ldap_set_option = [](LDAP* connection, int option, const void* value) -> ULONG {
        const bool isLimit = option == LDAP_OPT_TIMELIMIT || option == 0x42;
        return !isLimit ? genuine.ldap_set_option(connection, option, value)
                        : ULONG{LDAP_NOT_SUPPORTED};
    };
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
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
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    EXPECT_EQ(1, seen.calls);
    EXPECT_EQ(0x486u, seen.method);
    EXPECT_EQ(0u, Info().noPrompt);
    EXPECT_THAT(CodeOf(items.Entries().Find(base_)), IsDone());
}

TEST_F(ConnectionTest, DisconnectLeavesAnUnusableObject) {
    CLDAPItems& items = Make(server_.Location());
    ASSERT_THAT(items.ConnectLocation(&text_), IsDone());
    EXPECT_THAT(items.Disconnect(), Fails());
    EXPECT_FALSE(items.IsUsable());
    EXPECT_FALSE(items.IsConnected());
    EXPECT_THAT(items.Disconnect(), Fails());
}

TEST_F(ConnectionTest, CloseLeavesAnObjectThatCanConnectAgain) {
    CLDAPItems& items = Make(server_.Location());
    EXPECT_THAT(items.Close(), IsDone());
    ASSERT_THAT(items.ConnectLocation(&text_), IsDone());
    server_.Mark();
    EXPECT_THAT(items.Close(), IsDone());
    EXPECT_FALSE(items.IsConnected());
    EXPECT_TRUE(items.IsUsable());
    EXPECT_TRUE(server_.WaitForLog("UNBIND"));
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
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
        EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
        // The handles of the two failed binds are kept as long as the object.
        EXPECT_EQ(3, open);
        items_.reset();
        EXPECT_EQ(0, open);
    }
}

}  // namespace
}  // namespace depot
