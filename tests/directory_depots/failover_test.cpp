// Which location of a depot is used while servers are out of reach or ask for credentials.
#include <gmock/gmock.h>

#include "directory/call_connections.h"
#include "directory/connection_scope.h"
#include "model/depots.h"
#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::ClosedPort;
using test::DirectoryServer;
using test::ForgetServer;
using testing::IsEmpty;

// A depot with two locations whose users are asked for their credentials.
class FailoverTest : public test::DirectoryFixture {
protected:
    FailoverTest() { InstallCredentialsPrompt(&prompt_); }
    ~FailoverTest() override { InstallCredentialsPrompt(nullptr); }

    CDepotPath& Add(unsigned port, const std::string& base = test::kSuffix) {
        CDepotPath location = server_.Location(base);
        location.port = port;
        location.username.clear();
        location.password.clear();
        ForgetServer(port);
        depot_.paths->Append(location.Clone());
        CDepotPath& added = *depot_.paths->At(depot_.paths->Count() - 1);
        added.owner = depot_.paths.get();
        return added;
    }

    // One call of a session that uses the depot.
    static bool Use(CDepot& depot) {
        const CallConnections call;
        const ConnectionScope scope(depot.DirectoryConnection()->Connection());
        return static_cast<bool>(scope);
    }
    // Another session's list.
    std::unique_ptr<CDepot> NewList() const {
        auto renewed = std::make_unique<CDepot>(nullptr);
        renewed->paths->Copy(depot_.paths.get());
        return renewed;
    }

    CDepot depot_{nullptr};
};

TEST_F(FailoverTest, ServerThatRefusesTheLookIsChosenBeforeADeadOne) {
    const DirectoryServer strict("global disallow bind_anon");
    Add(ClosedPort());
    CDepotPath& second = Add(strict.Port());
    EXPECT_EQ(&second, depot_.paths->ActiveLocation());
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    prompt_.Type(test::kEditor, test::kEditorPassword);
    EXPECT_TRUE(Use(depot_));
    EXPECT_EQ(1u, prompt_.shown.size());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(FailoverTest, ServerThatHidesTheBaseFromUnknownUsersIsChosenBeforeADeadOne) {
    Add(ClosedPort());
    CDepotPath& second = Add(server_.Port(), "cn=unseen," + base_);
    EXPECT_EQ(&second, depot_.paths->ActiveLocation());
}

TEST_F(FailoverTest, BaseThatAKnownUserDoesNotFindIsMissing) {
    CDepotPath& first = Add(ClosedPort());
    CDepotPath& second = Add(server_.Port(), "cn=unseen," + base_);
    second.username = test::kEditor;
    second.password = test::kEditorPassword;
    EXPECT_EQ(&first, depot_.paths->ActiveLocation());
}

TEST_F(FailoverTest, WrongStoredPasswordIsBetterThanNoServer) {
    Add(ClosedPort());
    CDepotPath& second = Add(server_.Port());
    second.username = test::kEditor;
    second.password = "wrong";
    EXPECT_EQ(&second, depot_.paths->ActiveLocation());
}

TEST_F(FailoverTest, LocationThatIsReachedIsChosenBeforeAnEarlierOneThatRefuses) {
    const DirectoryServer strict("global disallow bind_anon");
    Add(strict.Port());
    CDepotPath& second = Add(server_.Port());
    EXPECT_EQ(&second, depot_.paths->ActiveLocation());
}

TEST_F(FailoverTest, OfTwoThatRefuseTheFirstIsChosen) {
    const DirectoryServer strict("global disallow bind_anon");
    const DirectoryServer other("global disallow bind_anon");
    CDepotPath& first = Add(strict.Port());
    Add(other.Port());
    EXPECT_EQ(&first, depot_.paths->ActiveLocation());
}

// What was typed for the first server, whose session goes on, is what the second one is offered.
TEST_F(FailoverTest, CredentialsOfTheFirstServerServeTheSecondOneOfANewSession) {
    DirectoryServer first;
    const DirectoryServer strict("global disallow bind_anon");
    Add(first.Port());
    Add(strict.Port());
    prompt_.Type(test::kEditor, test::kEditorPassword);
    ASSERT_TRUE(Use(depot_));
    first.Stop();
    const std::unique_ptr<CDepot> renewed = NewList();
    EXPECT_TRUE(Use(*renewed));
    EXPECT_EQ(renewed->paths->At(1), renewed->paths->ChosenLocation());
    EXPECT_EQ(1u, prompt_.shown.size());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(FailoverTest, CredentialsOfAnOpenServerAreNotOfferedToASecuredOneNorTheOtherWayRound) {
    CDepotPath& open = Add(server_.Port());
    CDepotPath& secured = Add(server_.TlsPort());
    secured.security = 2;
    EXPECT_THAT(depot_.paths->ServersBeside(open), IsEmpty());
    EXPECT_THAT(depot_.paths->ServersBeside(secured), IsEmpty());
    secured.security = 0;
    EXPECT_THAT(depot_.paths->ServersBeside(open),
                testing::ElementsAre(ServerKey("127.0.0.1", server_.TlsPort())));
}

TEST_F(FailoverTest, SessionWhoseServerComesBackGoesOn) {
    DirectoryServer first;
    Add(first.Port());
    CDepotPath& second = Add(server_.Port());
    prompt_.Type(test::kEditor, test::kEditorPassword);
    ASSERT_TRUE(Use(depot_));
    first.Stop();
    // The choice stays for the life of the list.
    EXPECT_FALSE(Use(depot_));
    EXPECT_NE(&second, depot_.paths->ActiveLocation());
    EXPECT_EQ(2u, prompt_.shown.size());
    first.Continue();
    EXPECT_TRUE(Use(depot_));
    EXPECT_EQ(2u, prompt_.shown.size());
}

TEST_F(FailoverTest, NewSessionUsesTheFirstServerAgainOnceItIsBack) {
    DirectoryServer first;
    Add(first.Port());
    Add(server_.Port());
    first.Stop();
    EXPECT_EQ(depot_.paths->At(1), depot_.paths->ActiveLocation());
    first.Continue();
    const std::unique_ptr<CDepot> renewed = NewList();
    EXPECT_EQ(renewed->paths->At(0), renewed->paths->ActiveLocation());
    EXPECT_EQ(depot_.paths->At(1), depot_.paths->ActiveLocation());
}

}  // namespace
}  // namespace depot
