// One connection through a relay.
#pragma once

// The sockets come before the Windows headers.
#include <winsock2.h>

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/ldap_messages.h"
#include "support/relay.h"

namespace depot::test {

using RelayClock = std::chrono::steady_clock;

// Owns a socket; moved only.
class RelaySocket {
public:
    explicit RelaySocket(SOCKET socket = INVALID_SOCKET) : socket_(socket) {}
    RelaySocket(RelaySocket&& other) noexcept
        : socket_(std::exchange(other.socket_, INVALID_SOCKET)) {}
    RelaySocket& operator=(RelaySocket&&) = delete;
    ~RelaySocket() {
        if (socket_ != INVALID_SOCKET) closesocket(socket_);
    }
    SOCKET Get() const { return socket_; }

private:
    SOCKET socket_;
};

// What all connections of a relay share. Its lock is held while the relay works.
struct RelayState {
    std::mutex lock;
    std::chrono::microseconds eachWay{0};
    Disturbance disturbance;
    RelayCounts counts;
    int trips = 0;                                     // of the client since the relay began
    int tripsAtMark = 0;                               // and at the last mark
    int requests = 0;                                  // since Disturb
    std::size_t bytesToServer = 0, bytesToClient = 0;  // since Disturb
};

// What one side said and the other has not been given yet.
class RelayStream {
public:
    struct Held {
        RelayClock::time_point due;
        LdapMessage message;
        int trips = 0;      // the client's once it has this
        bool ends = false;  // whether an answer ends with it
    };

    RelayStream(SOCKET from, SOCKET to) : from_(from), to_(to) {}

    // Reads what there is, if anything is there. Returns whether the source goes on.
    bool Read(bool isThere, MessageSplitter& splitter);
    // Writes as much as the target takes. Returns false when it takes nothing any more.
    bool Write();

    // Holds this until it is due, but no shorter than what came before, and then for so long.
    void Hold(Held held, std::chrono::microseconds lateness = {});
    // Takes out what is due, in order.
    std::vector<Held> TakeDue(RelayClock::time_point now);
    void Pass(std::string_view bytes) { unwritten_.append(bytes); }

    SOCKET From() const { return from_; }
    bool HasEnded() const { return ended_; }
    bool IsWriting() const { return !unwritten_.empty(); }
    bool IsEmpty() const { return held_.empty() && unwritten_.empty(); }
    std::optional<RelayClock::time_point> NextDue() const;

private:
    SOCKET from_, to_;
    bool ended_ = false;
    RelayClock::time_point lastDue_;
    std::deque<Held> held_;
    std::string unwritten_;
};

class RelayLink {
public:
    RelayLink(RelaySocket client, RelaySocket server, RelayState& state);

    // Adds the sockets that the connection waits for.
    void AddAwaited(std::vector<WSAPOLLFD>& sockets);

    // Does what can be done without waiting, with what was found about those sockets. Returns
    // whether the connection goes on.
    bool Work(const std::vector<WSAPOLLFD>& sockets);

    std::optional<RelayClock::time_point> NextDue() const;

private:
    struct Asked {
        int number = 0;
        int trips = 0;
        bool answered = false;  // by the server; the client may not have the answer yet
    };

    // Where one of the streams stands among the awaited sockets.
    struct Place {
        static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
        std::size_t index = kNowhere;
    };

    static Place AddAwaited(std::vector<WSAPOLLFD>& sockets, const RelayStream& incoming,
                            const RelayStream& outgoing);
    static bool IsReady(const std::vector<WSAPOLLFD>& sockets, Place place);
    void TakeRequests();
    void TakeAnswers();
    void TakeRequest(LdapMessage message);
    int RefusalOf(const RelayedRequest& request) const;
    void Refuse(const LdapMessage& request, int code);
    void TakeAnswer(LdapMessage message);
    RelayStream::Held AnswerOf(LdapMessage message, const Asked* asked);
    void KeepForReversal(RelayStream::Held held, int number);
    void ReleaseReversed();
    void DeliverToServer();
    void DeliverToClient();
    void Pass(RelayStream& stream, const std::string& bytes, std::size_t& passed,
              std::size_t limit);

    RelayState& state_;
    RelaySocket client_, server_;
    RelayStream toServer_, toClient_;
    Place clientPlace_, serverPlace_;
    MessageSplitter requests_, answers_;
    std::map<int, Asked> underWay_;
    // Answers to be reversed, by the numbers of their requests.
    std::map<int, std::vector<RelayStream::Held>, std::greater<>> kept_;
    std::size_t finished_ = 0;  // those of them that are whole
    RelayClock::time_point now_, usable_;
    int tripsToConnect_;
    int lastTrips_;  // of the last request
    bool dropped_ = false;
};

}  // namespace depot::test
