// A relay between a client and a directory server: it counts what passes, holds it back as a long
// line does, and disturbs it.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "support/ldap_messages.h"

namespace depot::test {

// What passed a relay.
struct RelayCounts {
    int connections = 0;
    // The longest chain in which each step waits for the one before: a connection is one step, and
    // an answer is one more than its request, which waits for all answers that the client had been
    // given before. That is the elapsed time in round trips, however slow client and server are;
    // requests that are sent without waiting for one another share a round trip.
    int roundTrips = 0;
    // Those that a server answers.
    int requests = 0;
    // The most requests of one connection at a time whose answers the client had not been given.
    std::size_t mostUnderWay = 0;
    std::size_t bytesToServer = 0;
    std::size_t bytesToClient = 0;
};

// A request that passes a relay.
struct RelayedRequest {
    int number = 0;  // the first one after Disturb is 1; 0 for one that no server answers
    LdapOperation operation = LdapOperation::kNone;
};

// How a relay disturbs what passes. Requests that servers answer and bytes count from the call of
// Disturb on, over all connections; 0 or an empty function is no disturbance.
struct Disturbance {
    // The connection ends when this request comes, and the server does not get it.
    int dropBeforeRequest = 0;
    // The connection ends when the server has answered this request; the answer is lost.
    int dropAfterRequest = 0;
    // The connection ends once so many bytes went to one side.
    std::size_t dropAfterBytesToServer = 0;
    std::size_t dropAfterBytesToClient = 0;

    // The answer to this request comes late; other answers overtake it.
    int lateAnswer = 0;
    std::chrono::milliseconds lateness{0};

    // So many answers at a time, or all that are under way, come in the reverse order of their
    // requests.
    std::size_t reversedAnswers = 0;

    // Requests for which this returns a code other than 0 are answered with it, unseen by the
    // server.
    std::function<int(const RelayedRequest&)> refusal = {};
    // A request that comes while so many others of its connection wait for their answers is refused
    // with this code.
    std::size_t limitUnderWay = 0;
    int codeOverLimit = 51;

    // Runs on the relay's thread before a request is passed on. It must not use the relay.
    std::function<void(const RelayedRequest&)> beforeRequest = {};
};

// Listens on a port of this machine and relays each connection to a server of this machine, on a
// thread of its own. Everything comes in the order in which it was sent unless it is disturbed.
// Encrypted connections are relayed and held back as well; their round trips are counted by the
// changes of direction, and their requests are not seen.
class Relay {
public:
    explicit Relay(unsigned serverPort);
    // Ends all connections.
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    unsigned Port() const;

    // Holds everything back for so long on its way, in each direction, and a new connection for
    // twice as long.
    void HoldBack(std::chrono::microseconds eachWay);

    // Replaces all former disturbances.
    void Disturb(const Disturbance& disturbance);

    // Ends all connections that are open.
    void DropAll();

    // Counts anew.
    void Mark();
    // What passed since the last mark.
    RelayCounts Counts() const;

private:
    class Works;
    std::unique_ptr<Works> works_;
};

}  // namespace depot::test
