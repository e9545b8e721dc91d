// Log-ons that fail for reasons which no credentials mend, and the uses that follow.
#include "directory/call_connections.h"
#include "directory/connection_scope.h"
#include "support/directory_fixture.h"
#include "support/relay.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::ForgetServer;
using test::IsCode;
using test::IsDone;
using test::MessageFor;
using testing::ElementsAre;
using testing::IsEmpty;

// The server of a depot, which goes away and comes back.
class OutageTest : public test::DirectoryFixture {
protected:
    OutageTest() { ForgetServer(own_.Port()); }

    bool Use() { return static_cast<bool>(ConnectionScope(items_->Connection())); }
    bool UseInACall(int times = 1) {
        const CallConnections call;
        bool isDone = true;
        for (int time = 0; time < times; ++time) isDone = Use() && isDone;
        return isDone;
    }

    test::DirectoryServer own_;
};

TEST_F(OutageTest, AfterACancelTheNextUseFindsTheServerThatIsBack) {
    Make(own_.Location());
    own_.Stop();
    EXPECT_FALSE(UseInACall());
    EXPECT_THAT(boxes_.Texts(),
                ElementsAre(MessageFor(LDAP_SERVER_DOWN), MessageFor(LDAP_USER_CANCELLED)));
    ASSERT_EQ(1u, prompt_.shown.size());
    EXPECT_THAT(prompt_.shown[0].failure, IsCode(LDAP_SERVER_DOWN));
    EXPECT_EQ(test::kEditorPassword, items_->GetPassword());
    EXPECT_EQ(0u, Info().noPrompt);
    own_.Continue();
    EXPECT_TRUE(UseInACall());
    EXPECT_EQ(1u, prompt_.shown.size());
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
}

TEST_F(OutageTest, WhatWasTypedDuringTheOutageServesTheNextUse) {
    CDepotPath location = own_.Location();
    location.username.clear();
    location.password.clear();
    Make(location);
    prompt_.Type(test::kEditor, test::kEditorPassword);
    own_.Stop();
    EXPECT_FALSE(UseInACall());
    EXPECT_EQ(2u, prompt_.shown.size());
    own_.Continue();
    EXPECT_TRUE(UseInACall());
    EXPECT_EQ(2u, prompt_.shown.size());
}

TEST_F(OutageTest, CancelHoldsForTheRestOfItsCall) {
    Make(own_.Location());
    own_.Stop();
    EXPECT_FALSE(UseInACall(5));
    EXPECT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ(2u, boxes_.Boxes().size());
    EXPECT_FALSE(UseInACall());
    EXPECT_EQ(2u, prompt_.shown.size());
}

TEST_F(OutageTest, FailureWithoutAPromptEndsWithItsCall) {
    CDepotPath location = own_.Location();
    location.authentication = kAnonymousAuthentication;
    Make(location);
    own_.Stop();
    EXPECT_FALSE(UseInACall(3));
    EXPECT_FALSE(items_->IsUsable());
    own_.Continue();
    EXPECT_TRUE(UseInACall());
}

TEST_F(OutageTest, OneCallConnectsToADeadServerOnce) {
    test::Relay relay(own_.Port());
    CDepotPath location = own_.Location();
    location.port = relay.Port();
    location.authentication = kAnonymousAuthentication;
    ForgetServer(relay.Port());
    Make(location);
    relay.Disturb({.dropBeforeRequest = 1});
    EXPECT_FALSE(UseInACall(4));
    EXPECT_EQ(1, relay.Counts().connections);
}

TEST_F(OutageTest, ConnectionThatWasGivenUpStaysSo) {
    Make(own_.Location());
    items_->Disconnect();
    EXPECT_FALSE(UseInACall());
    EXPECT_THAT(items_->Connect("127.0.0.1", "", "", nullptr), Fails());
}

TEST_F(OutageTest, CancelAfterAWrongPasswordStaysFinal) {
    CDepotPath location = own_.Location();
    location.password = "wrong";
    Make(location);
    EXPECT_FALSE(UseInACall());
    EXPECT_THAT(prompt_.shown[0].failure, IsCode(LDAP_INVALID_CREDENTIALS));
    EXPECT_EQ("", items_->GetPassword());
    EXPECT_EQ(1u, Info().noPrompt);
}

TEST_F(OutageTest, ServerThatWantsASecuredConnectionIsNoReasonToStopAsking) {
    const test::DirectoryServer secured("global security simple_bind=128");
    ForgetServer(secured.Port());
    Make(secured.Location());
    EXPECT_FALSE(UseInACall());
    ASSERT_EQ(1u, prompt_.shown.size());
    EXPECT_THAT(prompt_.shown[0].failure, IsCode(LDAP_CONFIDENTIALITY_REQUIRED));
    EXPECT_EQ(test::kEditorPassword, items_->GetPassword());
    EXPECT_EQ(0u, Info().noPrompt);
}

// What was typed for one server of a depot, offered to the next one.
class ServersBesideTest : public test::DirectoryFixture {
protected:
    ServersBesideTest() { ForgetServer(replica_.Port()); }

    void TypeForTheOther(const std::string& userName, const std::string& password) {
        typed_ = replica_.Location().Clone();
        other_ = std::make_unique<CLDAPItems>(typed_.get());
        other_->SetUserName(userName);
        other_->SetPassword(password);
    }
    bool Use(const std::string& userName = {}) {
        Make(userName, "");
        items_->Connection().SetServersBeside({ServerKey("127.0.0.1", replica_.Port())});
        return static_cast<bool>(ConnectionScope(items_->Connection()));
    }

    test::DirectoryServer replica_;
    std::unique_ptr<CDepotPath> typed_;
    std::unique_ptr<CLDAPItems> other_;
};

TEST_F(ServersBesideTest, WhatWasTypedThereServesHere) {
    TypeForTheOther(test::kEditor, test::kEditorPassword);
    EXPECT_TRUE(Use());
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    EXPECT_EQ(test::kEditorPassword, items_->GetSharedPassword());
}

TEST_F(ServersBesideTest, WhatIsRefusedHereIsTriedOnceAndAskedFor) {
    TypeForTheOther(test::kEditor, "of the other");
    server_.Mark();
    prompt_.Type(test::kReader, test::kReaderPassword);
    EXPECT_TRUE(Use());
    EXPECT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ(0u, prompt_.shown[0].failure);
    EXPECT_EQ("", prompt_.shown[0].password);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    EXPECT_EQ(2, server_.Counts().binds);
}

TEST_F(ServersBesideTest, WhatWasTypedForSomebodyElseIsNotTried) {
    TypeForTheOther(test::kEditor, test::kEditorPassword);
    server_.Mark();
    EXPECT_FALSE(Use(test::kReader));
    EXPECT_EQ(0, server_.Counts().binds);
    EXPECT_EQ(1u, prompt_.shown.size());
}

TEST_F(ServersBesideTest, WhilePromptingIsOffNothingIsTried) {
    TypeForTheOther(test::kEditor, "of the other");
    Make("", "");
    Info().noPrompt = 1;
    server_.Mark();
    EXPECT_FALSE(Use());
    EXPECT_EQ(0, server_.Counts().binds);
}

TEST_F(ServersBesideTest, RefusedOnesAreNotTriedAgainByTheSameSession) {
    TypeForTheOther(test::kEditor, "of the other");
    EXPECT_FALSE(Use());
    Info().noPrompt = 0;
    server_.Mark();
    EXPECT_FALSE(static_cast<bool>(ConnectionScope(items_->Connection())));
    EXPECT_EQ(0, server_.Counts().binds);
    EXPECT_EQ(2u, prompt_.shown.size());
}

TEST_F(ServersBesideTest, UsesThatNoServerAnswersLeaveNoHandles) {
    static DirectoryClient genuine;
    static int open;
    open = 0;
    TypeForTheOther(test::kEditor, test::kEditorPassword);
    Make("", "");
    items_->Connection().SetServersBeside({ServerKey("127.0.0.1", replica_.Port())});
    items_->Connection().SetPrompt(nullptr);
    DirectoryClient& client = items_->Client();
    genuine = client;
    client.ldap_init = [](PCHAR host, ULONG port) {
        ++open;
        return genuine.ldap_init(host, port);
    };
    client.ldap_unbind_s = [](LDAP* connection) -> ULONG {
        --open;
        return genuine.ldap_unbind_s(connection);
    };
    client.ldap_bind_s = [](LDAP* /*connection*/, PCHAR /*dn*/, PCHAR /*password*/,
                            ULONG /*method*/) -> ULONG { return LDAP_SERVER_DOWN; };
    for (int use = 0; use < 3; ++use) {
        EXPECT_FALSE(static_cast<bool>(ConnectionScope(items_->Connection())));
        EXPECT_EQ(0, open);
    }
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST(SecuredAlikeTest, ServersAreAlikeWhereBothAreSecuredOrNeitherIs) {
    LocationSettings open, startTls, fromTheStart;
    startTls.security = 1;
    fromTheStart.security = 2;
    EXPECT_TRUE(AreSecuredAlike(open, open));
    EXPECT_TRUE(AreSecuredAlike(startTls, fromTheStart));
    EXPECT_FALSE(AreSecuredAlike(startTls, open));
    EXPECT_FALSE(AreSecuredAlike(open, fromTheStart));
}

}  // namespace
}  // namespace depot
