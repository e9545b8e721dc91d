// The relay that other tests count and disturb with.
#include "support/relay.h"

// The sockets come before the Windows headers.
#include <winsock2.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/directory_server.h"

namespace depot::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr int kBusy = 51;

// A client that says what it is told to, and sees each message that comes.
class BareClient {
public:
    explicit BareClient(unsigned port) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<u_short>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(0, connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
    }
    ~BareClient() { closesocket(socket_); }
    BareClient(const BareClient&) = delete;
    BareClient& operator=(const BareClient&) = delete;

    // Sends searches for the entry of the server itself, with these numbers, at once.
    void Search(const std::vector<char>& ids) const {
        std::string bytes;
        for (const char id : ids) {
            bytes += std::string{0x30, 0x25, 0x02, 0x01, id} +
                     std::string(
                         "\x63\x20\x04\0\x0A\x01\0\x0A\x01\0\x02\x01\0\x02\x01\0"
                         "\x01\x01\0\x87\x0BobjectClass\x30\0",
                         34);
        }
        send(socket_, bytes.data(), static_cast<int>(bytes.size()), 0);
    }
    void Unbind() const { send(socket_, "\x30\x05\x02\x01\x7F\x42\0", 7, 0); }

    // Waits for one message; one without an operation stands for the end of the connection.
    LdapMessage Next() {
        for (;;) {
            if (std::optional<LdapMessage> message = splitter_.Next()) return *message;
            char buffer[4096];
            const int bytes = recv(socket_, buffer, sizeof(buffer), 0);
            if (bytes <= 0) return {};
            received_ += static_cast<std::size_t>(bytes);
            splitter_.Add({buffer, static_cast<std::size_t>(bytes)});
        }
    }
    // Waits for so many whole answers, or the end of the connection; returns their numbers. The
    // server answers in whatever order it gets done.
    std::vector<int> Answers(std::size_t count) {
        std::vector<int> ids;
        while (ids.size() < count) {
            const LdapMessage message = Next();
            if (message.operation == LdapOperation::kNone) break;
            if (EndsAnswer(message.operation)) ids.push_back(message.id);
        }
        return ids;
    }
    std::size_t Received() const { return received_; }

private:
    SOCKET socket_;
    MessageSplitter splitter_;
    std::size_t received_ = 0;
};

// The code of a message that holds one of a single byte.
int CodeIn(const LdapMessage& result) {
    return static_cast<unsigned char>(result.bytes.at(9));
}

milliseconds Since(steady_clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

class RelayTest : public testing::Test {
protected:
    Relay relay_{SharedServer().Port()};
};

TEST_F(RelayTest, ConnectionAndEachAnswerThatIsWaitedForAreRoundTrips) {
    BareClient client(relay_.Port());
    for (char id = 1; id <= 3; ++id) {
        client.Search({id});
        EXPECT_THAT(client.Answers(1), ElementsAre(id));
    }
    const RelayCounts counts = relay_.Counts();
    EXPECT_EQ(1, counts.connections);
    EXPECT_EQ(4, counts.roundTrips);
    EXPECT_EQ(3, counts.requests);
    EXPECT_EQ(1u, counts.mostUnderWay);
    EXPECT_EQ(3u * 39u, counts.bytesToServer);
    EXPECT_EQ(client.Received(), counts.bytesToClient);
}

TEST_F(RelayTest, RequestsThatDoNotWaitForOneAnotherShareARoundTrip) {
    BareClient client(relay_.Port());
    client.Search({1, 2, 3, 4, 5});
    EXPECT_THAT(client.Answers(5), UnorderedElementsAre(1, 2, 3, 4, 5));
    EXPECT_EQ(2, relay_.Counts().roundTrips);
    EXPECT_EQ(5u, relay_.Counts().mostUnderWay);
    client.Search({6, 7});
    client.Answers(2);
    EXPECT_EQ(3, relay_.Counts().roundTrips);
}

TEST_F(RelayTest, RequestThatFollowsTheFirstOfManyAnswersCostsOneRoundTrip) {
    relay_.HoldBack(milliseconds(20));
    BareClient client(relay_.Port());
    client.Search({1, 2});
    client.Answers(1);
    client.Search({3});
    client.Answers(1);
    client.Search({4});
    client.Answers(2);
    EXPECT_EQ(3, relay_.Counts().roundTrips);
}

TEST_F(RelayTest, SecondConnectionWaitsForWhatTheFirstWasAnswered) {
    for (int round = 1; round <= 2; ++round) {
        BareClient client(relay_.Port());
        client.Search({1});
        client.Answers(1);
        client.Unbind();
        EXPECT_EQ(2 * round, relay_.Counts().roundTrips);
    }
    EXPECT_EQ(2, relay_.Counts().connections);
    EXPECT_EQ(2, relay_.Counts().requests);
}

TEST_F(RelayTest, MarkBeginsTheCountsAnew) {
    BareClient client(relay_.Port());
    client.Search({1});
    client.Answers(1);
    relay_.Mark();
    client.Search({2});
    client.Answers(1);
    EXPECT_EQ(0, relay_.Counts().connections);
    EXPECT_EQ(1, relay_.Counts().roundTrips);
    EXPECT_EQ(1, relay_.Counts().requests);
}

TEST_F(RelayTest, HoldingBackDelaysEachRoundTripButNotWhatIsUnderWayTogether) {
    relay_.HoldBack(milliseconds(50));
    const auto start = steady_clock::now();
    BareClient client(relay_.Port());
    client.Search({1, 2, 3, 4, 5, 6, 7, 8});
    client.Answers(8);
    EXPECT_GE(Since(start), milliseconds(200));
    EXPECT_EQ(2, relay_.Counts().roundTrips);
    const auto second = steady_clock::now();
    client.Search({9});
    client.Answers(1);
    EXPECT_GE(Since(second), milliseconds(100));
}

TEST_F(RelayTest, DropBeforeARequestLosesItAndLeavesLaterConnectionsAlone) {
    relay_.Disturb({.dropBeforeRequest = 3});
    SharedServer().Mark();
    BareClient client(relay_.Port());
    client.Search({1, 2});
    client.Answers(2);
    client.Search({3});
    EXPECT_THAT(client.Answers(1), IsEmpty());
    BareClient other(relay_.Port());
    other.Search({4});
    EXPECT_THAT(other.Answers(1), ElementsAre(4));
    EXPECT_EQ(3, SharedServer().Counts().searches);
}

TEST_F(RelayTest, DropAfterARequestLosesItsAnswerOnly) {
    relay_.Disturb({.dropAfterRequest = 2});
    SharedServer().Mark();
    BareClient client(relay_.Port());
    client.Search({1});
    client.Answers(1);
    client.Search({2});
    EXPECT_THAT(client.Answers(1), IsEmpty());
    EXPECT_EQ(2, SharedServer().Counts().searches);
}

TEST_F(RelayTest, DropAfterBytesLetsExactlySoManyThrough) {
    for (const std::size_t bytes : {1u, 40u, 41u}) {
        relay_.Disturb({.dropAfterBytesToClient = bytes});
        BareClient client(relay_.Port());
        client.Search({1, 2, 3, 4});
        client.Answers(4);
        EXPECT_EQ(bytes, client.Received());
    }
}

TEST_F(RelayTest, DropAfterBytesToTheServerCutsARequest) {
    relay_.Disturb({.dropAfterBytesToServer = 39 + 5});
    SharedServer().Mark();
    BareClient client(relay_.Port());
    client.Search({1, 2});
    client.Answers(2);
    // The first one may be answered before the connection ends.
    EXPECT_LE(SharedServer().Counts().searches, 1);
}

TEST_F(RelayTest, DropAllEndsWhatIsOpen) {
    BareClient client(relay_.Port());
    client.Search({1});
    client.Answers(1);
    relay_.DropAll();
    EXPECT_EQ(LdapOperation::kNone, client.Next().operation);
    BareClient other(relay_.Port());
    other.Search({1});
    EXPECT_THAT(other.Answers(1), ElementsAre(1));
}

TEST_F(RelayTest, LateAnswerIsOvertakenByTheOthers) {
    relay_.Disturb({.lateAnswer = 1, .lateness = milliseconds(200)});
    const auto start = steady_clock::now();
    BareClient client(relay_.Port());
    client.Search({1, 2, 3});
    EXPECT_THAT(client.Answers(2), UnorderedElementsAre(2, 3));
    EXPECT_THAT(client.Answers(1), ElementsAre(1));
    EXPECT_GE(Since(start), milliseconds(200));
}

TEST_F(RelayTest, AnswersComeInTheReverseOrderOfTheirRequests) {
    relay_.HoldBack(milliseconds(10));
    relay_.Disturb({.reversedAnswers = 4});
    BareClient client(relay_.Port());
    client.Search({1, 2, 3, 4});
    EXPECT_THAT(client.Answers(4), ElementsAre(4, 3, 2, 1));
    client.Search({5, 6});
    EXPECT_THAT(client.Answers(2), ElementsAre(6, 5));
}

TEST_F(RelayTest, RefusedRequestsAreNotSeenByTheServer) {
    relay_.Disturb({.refusal = [](const RelayedRequest& request) {
        return request.number == 2 && request.operation == LdapOperation::kSearch ? kBusy : 0;
    }});
    SharedServer().Mark();
    BareClient client(relay_.Port());
    client.Search({1});
    client.Answers(1);
    client.Search({2});
    const LdapMessage refused = client.Next();
    EXPECT_EQ(LdapOperation::kSearchResult, refused.operation);
    EXPECT_EQ(2, refused.id);
    EXPECT_EQ(kBusy, CodeIn(refused));
    client.Search({3});
    EXPECT_THAT(client.Answers(1), ElementsAre(3));
    EXPECT_EQ(2, SharedServer().Counts().searches);
    EXPECT_EQ(4, relay_.Counts().roundTrips);
}

TEST_F(RelayTest, RequestsOverTheLimitAreRefusedUntilTheFirstIsAnswered) {
    relay_.HoldBack(milliseconds(10));
    relay_.Disturb({.limitUnderWay = 1, .codeOverLimit = kBusy});
    BareClient client(relay_.Port());
    client.Search({1, 2});
    EXPECT_EQ(2u, client.Answers(2).size());
    client.Search({3});
    EXPECT_EQ(LdapOperation::kSearchEntry, client.Next().operation);
    EXPECT_EQ(3, client.Answers(1).at(0));
}

TEST_F(RelayTest, SomethingElseHappensBeforeARequest) {
    std::vector<int> seen;
    relay_.Disturb(
        {.beforeRequest = [&](const RelayedRequest& request) { seen.push_back(request.number); }});
    {
        BareClient client(relay_.Port());
        client.Search({1});
        client.Answers(1);
        client.Search({2});
        client.Answers(1);
    }
    relay_.Disturb({});
    EXPECT_THAT(seen, ElementsAre(1, 2));
}

TEST_F(RelayTest, BytesThatAreNoMessagePassAsTheyAre) {
    MessageSplitter splitter;
    splitter.Add("\x16\x03\x01 encrypted");
    const std::optional<LdapMessage> bytes = splitter.Next();
    ASSERT_TRUE(bytes);
    EXPECT_EQ("\x16\x03\x01 encrypted", bytes->bytes);
    EXPECT_EQ(LdapOperation::kNone, bytes->operation);
    EXPECT_FALSE(splitter.Next());
}

TEST_F(RelayTest, MessageComesWhenItsLastByteIsThere) {
    const std::string whole = ResultMessage({"", 300, LdapOperation::kDelete}, 200).bytes;
    MessageSplitter splitter;
    for (const char byte : whole.substr(0, whole.size() - 1)) {
        splitter.Add({&byte, 1});
        EXPECT_FALSE(splitter.Next());
    }
    splitter.Add({&whole.back(), 1});
    const std::optional<LdapMessage> message = splitter.Next();
    ASSERT_TRUE(message);
    EXPECT_EQ(300, message->id);
    EXPECT_EQ(whole, message->bytes);
}

TEST_F(RelayTest, ManyConnectionsAreServedAtATime) {
    std::vector<std::unique_ptr<BareClient>> clients;
    for (int count = 0; count < 100; ++count) {
        clients.push_back(std::make_unique<BareClient>(relay_.Port()));
        clients.back()->Search({1});
    }
    for (const auto& client : clients) EXPECT_THAT(client->Answers(1), ElementsAre(1));
    EXPECT_EQ(100, relay_.Counts().connections);
}

}  // namespace
}  // namespace depot::test
