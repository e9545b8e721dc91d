#include "support/relay.h"

#include <algorithm>
#include <condition_variable>
#include <thread>

#include "support/relay_link.h"

namespace depot::test {
namespace {

struct SocketLibrary {
    SocketLibrary() {
        WSADATA data = {};
        WSAStartup(MAKEWORD(2, 2), &data);
    }
};

SOCKET NewSocket(int type = SOCK_STREAM) {
    static const SocketLibrary library;
    return socket(AF_INET, type, 0);
}

sockaddr_in LoopbackAddress(unsigned port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<u_short>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// Returns the port.
unsigned BindSomewhere(const RelaySocket& socket) {
    sockaddr_in address = LoopbackAddress(0);
    int size = sizeof(address);
    bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), size);
    getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

bool Connect(const RelaySocket& socket, unsigned port) {
    const sockaddr_in address = LoopbackAddress(port);
    return connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

void SendWithoutWaiting(SOCKET socket) {
    u_long on = 1;
    ioctlsocket(socket, static_cast<long>(FIONBIO), &on);
    const BOOL noDelay = TRUE;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay),
               sizeof(noDelay));
}

// Ends the wait of another thread for this socket.
class Waker {
public:
    Waker() { Connect(socket_, BindSomewhere(socket_)); }
    SOCKET Get() const { return socket_.Get(); }
    void Wake() const { send(Get(), "", 1, 0); }
    void Rest() const {
        char byte = 0;
        recv(Get(), &byte, 1, 0);
    }

private:
    const RelaySocket socket_{NewSocket(SOCK_DGRAM)};
};

}  // namespace

class Relay::Works {
public:
    explicit Works(unsigned serverPort);
    ~Works();
    Works(const Works&) = delete;
    Works& operator=(const Works&) = delete;

    unsigned Port() const { return port_; }

    // What the relay is to do, under its lock.
    template <class Action>
    auto WithState(Action action) {
        const std::lock_guard guard(state_.lock);
        return action(state_);
    }
    void DropAll();

private:
    void Run();
    // Waits until there is something to do. Returns what was found about the sockets: the waker's
    // first, then the listener's.
    std::vector<WSAPOLLFD> Wait();
    int Patience() const;
    void Accept();

    RelayState state_;
    const Waker waker_;
    const RelaySocket listener_{NewSocket()};
    const unsigned serverPort_;
    const unsigned port_ = BindSomewhere(listener_);
    std::vector<std::unique_ptr<RelayLink>> links_;
    bool dropping_ = false;
    std::condition_variable dropped_;
    bool ending_ = false;
    std::thread thread_;
};

Relay::Works::Works(unsigned serverPort) : serverPort_(serverPort) {
    listen(listener_.Get(), SOMAXCONN);
    thread_ = std::thread([this] { Run(); });
}

Relay::Works::~Works() {
    {
        const std::lock_guard guard(state_.lock);
        ending_ = true;
    }
    waker_.Wake();
    thread_.join();
}

void Relay::Works::DropAll() {
    std::unique_lock guard(state_.lock);
    dropping_ = true;
    waker_.Wake();
    dropped_.wait(guard, [this] { return !dropping_; });
}

void Relay::Works::Run() {
    for (;;) {
        const std::vector<WSAPOLLFD> sockets = Wait();
        const std::lock_guard guard(state_.lock);
        if (ending_) return;
        if (sockets[0].revents != 0) waker_.Rest();
        if (dropping_) {
            links_.clear();
            dropping_ = false;
            dropped_.notify_all();
        }
        std::erase_if(links_, [&](const auto& link) { return !link->Work(sockets); });
        if (sockets[1].revents != 0) Accept();
    }
}

std::vector<WSAPOLLFD> Relay::Works::Wait() {
    std::vector<WSAPOLLFD> sockets = {{waker_.Get(), POLLIN, 0}, {listener_.Get(), POLLIN, 0}};
    int patience = -1;
    {
        const std::lock_guard guard(state_.lock);
        for (const auto& link : links_) link->AddAwaited(sockets);
        patience = Patience();
    }
    // Less than a millisecond is waited for in a loop: the system would make one or more of it.
    if (WSAPoll(sockets.data(), static_cast<ULONG>(sockets.size()), patience) <= 0) {
        for (WSAPOLLFD& socket : sockets) socket.revents = 0;
        if (patience == 0) std::this_thread::yield();
    }
    return sockets;
}

// Returns the milliseconds until something is due; -1 when nothing is.
int Relay::Works::Patience() const {
    std::optional<RelayClock::time_point> next;
    for (const auto& link : links_) {
        const auto due = link->NextDue();
        if (due && (!next || *due < *next)) next = due;
    }
    if (!next) return -1;
    const auto left = *next - RelayClock::now();
    return std::max(0,
                    static_cast<int>(std::chrono::floor<std::chrono::milliseconds>(left).count()));
}

void Relay::Works::Accept() {
    RelaySocket client(accept(listener_.Get(), nullptr, nullptr));
    if (client.Get() == INVALID_SOCKET) return;
    RelaySocket server(NewSocket());
    if (!Connect(server, serverPort_)) return;
    SendWithoutWaiting(client.Get());
    SendWithoutWaiting(server.Get());
    links_.push_back(std::make_unique<RelayLink>(std::move(client), std::move(server), state_));
}

Relay::Relay(unsigned serverPort) : works_(std::make_unique<Works>(serverPort)) {}

Relay::~Relay() = default;

unsigned Relay::Port() const {
    return works_->Port();
}

void Relay::HoldBack(std::chrono::microseconds eachWay) {
    works_->WithState([&](RelayState& state) { state.eachWay = eachWay; });
}

void Relay::Disturb(const Disturbance& disturbance) {
    works_->WithState([&](RelayState& state) {
        state.disturbance = disturbance;
        state.requests = 0;
        state.bytesToServer = state.bytesToClient = 0;
    });
}

void Relay::DropAll() {
    works_->DropAll();
}

void Relay::Mark() {
    works_->WithState([](RelayState& state) {
        state.counts = {};
        state.tripsAtMark = state.trips;
    });
}

RelayCounts Relay::Counts() const {
    return works_->WithState([](RelayState& state) {
        RelayCounts counts = state.counts;
        counts.roundTrips = state.trips - state.tripsAtMark;
        return counts;
    });
}

}  // namespace depot::test
