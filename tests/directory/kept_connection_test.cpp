// How long connections stay open: for one operation, for the operations of one call, or for the
// calls of a session.
#include <gmock/gmock.h>

#include "directory/call_connections.h"
#include "directory/connection_scope.h"
#include "support/directory_fixture.h"
#include "support/relay.h"

namespace depot {
namespace {

void ReadEntry(CLDAPItems& items, const std::string& dn) {
    const ConnectionScope scope(items.Connection());
    FileBuffer contents;
    ASSERT_TRUE(scope);
    EXPECT_TRUE(items.Entries().Read(dn, contents).IsDone());
}

// What one call of the interface does.
void ReadEntryInACall(CLDAPItems& items, const std::string& dn, int times = 1) {
    const CallConnections call;
    for (int time = 0; time < times; ++time) ReadEntry(items, dn);
}

class KeptConnectionTest : public test::DirectoryFixture {
protected:
    KeptConnectionTest() {
        location_ = server_.Location(base_).Clone();
        location_->port = relay_.Port();
        test::ForgetServer(relay_.Port());
        items_ = std::make_unique<CLDAPItems>(location_.get());
        server_.AddFile("a.kra", base_, "1");
    }

    void ReadInACall(int times = 1) { ReadEntryInACall(*items_, Dn("a.kra"), times); }
    void Read() { ReadEntry(*items_, Dn("a.kra")); }
    int Connections() const { return relay_.Counts().connections; }

    test::Relay relay_{server_.Port()};
};

TEST_F(KeptConnectionTest, OutsideOfACallEveryOperationConnects) {
    Read();
    Read();
    EXPECT_EQ(2, Connections());
}

TEST_F(KeptConnectionTest, OperationsOfOneCallShareAConnection) {
    ReadInACall(3);
    EXPECT_EQ(1, Connections());
    EXPECT_FALSE(items_->IsConnected());
}

TEST_F(KeptConnectionTest, NextCallConnectsAnew) {
    ReadInACall();
    ReadInACall();
    EXPECT_EQ(2, Connections());
}

TEST_F(KeptConnectionTest, ConnectionOfAnInnerCallEndsWithIt) {
    const CallConnections outer;
    ReadInACall();
    EXPECT_FALSE(items_->IsConnected());
}

TEST_F(KeptConnectionTest, ConnectionOfTheCallerStays) {
    ASSERT_THAT(items_->ConnectLocation(nullptr), test::IsDone());
    ReadInACall();
    EXPECT_TRUE(items_->IsConnected());
}

TEST_F(KeptConnectionTest, KeptConnectionServesTheNextCalls) {
    location_->keepConnection = 60;
    for (int call = 0; call < 5; ++call) ReadInACall();
    EXPECT_EQ(1, Connections());
    relay_.HoldBack(std::chrono::milliseconds(2));
    relay_.Mark();
    ReadInACall();
    EXPECT_EQ(1, relay_.Counts().roundTrips);
}

TEST_F(KeptConnectionTest, IdleConnectionEndsWithItsTime) {
    location_->keepConnection = 1;
    ReadInACall();
    EXPECT_TRUE(items_->IsConnected());
    Sleep(1100);
    // Any call of the process, also of another session, ends what has expired.
    { const CallConnections call; }
    EXPECT_FALSE(items_->IsConnected());
    ReadInACall();
    EXPECT_EQ(2, Connections());
}

TEST_F(KeptConnectionTest, LongerTimeThanAnHourKeepsItAsWell) {
    location_->keepConnection = 0xFFFFFFFF;
    ReadInACall();
    ReadInACall();
    EXPECT_EQ(1, Connections());
}

TEST_F(KeptConnectionTest, ConnectionThatIsGoneIsReplacedUnnoticed) {
    location_->keepConnection = 60;
    ReadInACall();
    relay_.DropAll();
    ReadInACall();
    EXPECT_EQ(2, Connections());
    EXPECT_THAT(boxes_.Texts(), testing::IsEmpty());
}

// No end of the connection comes: only the request shows that it is gone.
TEST_F(KeptConnectionTest, ConnectionThatEndsWithTheFirstRequestIsReplacedUnnoticed) {
    location_->keepConnection = 60;
    for (const bool before : {true, false}) {
        ReadInACall();
        relay_.Disturb({.dropBeforeRequest = before ? 1 : 0, .dropAfterRequest = before ? 0 : 1});
        ReadInACall();
        relay_.Disturb({});
    }
    EXPECT_THAT(boxes_.Texts(), testing::IsEmpty());
}

TEST_F(KeptConnectionTest, FirstChangeOnALostConnectionIsMadeOnce) {
    location_->keepConnection = 60;
    ReadInACall();
    relay_.Disturb({.dropAfterRequest = 1});
    const CallConnections call;
    const ConnectionScope scope(items_->Connection());
    ASSERT_TRUE(scope);
    EXPECT_TRUE(items_->Entries().AddFile(Dn("b.kra"), "b.kra", "2", 1).IsDone());
    EXPECT_EQ("2", Contents(Dn("b.kra")));
}

TEST_F(KeptConnectionTest, OtherCredentialsGetTheirOwnConnection) {
    location_->keepConnection = 60;
    ReadInACall();
    items_->Connection().SetPrompt(&prompt_);
    location_->password = location_->password.Plain() + "x";
    const CallConnections call;
    const ConnectionScope scope(items_->Connection());
    EXPECT_FALSE(scope);
    EXPECT_GE(Connections(), 2);
}

// The editor's password is changed while a connection is kept. Who is bound already stays so.
class ChangedPasswordTest : public test::DirectoryFixture {
protected:
    ChangedPasswordTest() {
        CDepotPath location = own_.Location();
        location.port = ownRelay_.Port();
        location.keepConnection = 60;
        test::ForgetServer(ownRelay_.Port());
        base_ = test::kSuffix;
        own_.AddFile("a.kra", base_, "1");
        Make(location);
        ReadInACall();
        own_.Apply(std::string("dn: ") + test::kEditor +
                   "\nchangetype: modify\nreplace: userPassword\nuserPassword: other\n");
        ReadInACall();
        EXPECT_EQ(1, ownRelay_.Counts().connections);
        prompt_.Type(test::kEditor, "other");
    }
    void ReadInACall() { ReadEntryInACall(*items_, Dn("a.kra")); }
    void ExpectOneQuestion() {
        EXPECT_EQ(1u, prompt_.shown.size());
        EXPECT_EQ(std::vector<std::string>{test::MessageFor(LDAP_INVALID_CREDENTIALS)},
                  boxes_.Texts());
    }

    test::DirectoryServer own_;
    test::Relay ownRelay_{own_.Port()};
};

TEST_F(ChangedPasswordTest, IsAskedForWhenTheKeptConnectionHasEnded) {
    ownRelay_.DropAll();
    ReadInACall();
    ExpectOneQuestion();
    ReadInACall();
    ExpectOneQuestion();
}

// Nothing is asked in the middle of an operation: that one fails, and the next one asks.
TEST_F(ChangedPasswordTest, IsAskedForAfterTheRequestThatFoundTheConnectionGone) {
    ownRelay_.Disturb({.dropBeforeRequest = 1});
    {
        const CallConnections call;
        const ConnectionScope scope(items_->Connection());
        FileBuffer contents;
        ASSERT_TRUE(scope);
        EXPECT_TRUE(items_->Entries().Read(Dn("a.kra"), contents).Is(Reason::kUnreachable));
    }
    EXPECT_THAT(boxes_.Texts(), testing::IsEmpty());
    EXPECT_TRUE(prompt_.shown.empty());
    ReadInACall();
    ExpectOneQuestion();
}

TEST_F(KeptConnectionTest, EndOfTheSessionEndsTheConnection) {
    location_->keepConnection = 3600;
    ReadInACall();
    EXPECT_TRUE(items_->IsConnected());
    server_.Mark();
    items_.reset();
    EXPECT_TRUE(server_.WaitForLog("UNBIND"));
}

TEST_F(KeptConnectionTest, ManySessionsKeepOneEach) {
    location_->keepConnection = 60;
    std::vector<std::unique_ptr<CLDAPItems>> sessions;
    for (int number = 0; number < 500; ++number) {
        sessions.push_back(std::make_unique<CLDAPItems>(location_.get()));
        const CallConnections call;
        const ConnectionScope scope(sessions.back()->Connection());
        ASSERT_TRUE(scope) << number;
    }
    for (const auto& session : sessions) EXPECT_TRUE(session->IsConnected());
    // In another order than they came.
    for (std::size_t number = 0; number < sessions.size(); number += 2) sessions[number].reset();
    for (std::size_t number = 1; number < sessions.size(); number += 2) {
        const CallConnections call;
        const ConnectionScope scope(sessions[number]->Connection());
        EXPECT_TRUE(scope);
    }
}

}  // namespace
}  // namespace depot
