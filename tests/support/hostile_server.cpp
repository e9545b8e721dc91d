#include "support/hostile_server.h"

#include <atomic>
#include <list>
#include <mutex>
#include <thread>

#include "support/relay_link.h"

namespace depot::test {
namespace {

SOCKET NewSocket() {
    static const int started = [] {
        WSADATA data = {};
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    static_cast<void>(started);
    return socket(AF_INET, SOCK_STREAM, 0);
}

bool Send(SOCKET socket, const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
        const int count =
            send(socket, bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
        if (count <= 0) return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

class HostileServer::Works {
public:
    explicit Works(Answerer answer) : answer_(std::move(answer)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        int size = sizeof(address);
        bind(listener_.Get(), reinterpret_cast<const sockaddr*>(&address), size);
        getsockname(listener_.Get(), reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        listen(listener_.Get(), SOMAXCONN);
        acceptor_ = std::thread([this] { Accept(); });
    }

    ~Works() {
        ending_ = true;
        // Ends the wait for the next connection.
        const RelaySocket last(NewSocket());
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<u_short>(port_));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connect(last.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
        acceptor_.join();
        for (Link& link : links_) {
            shutdown(link.socket.Get(), SD_BOTH);
            link.thread.join();
        }
    }
    Works(const Works&) = delete;
    Works& operator=(const Works&) = delete;

    unsigned Port() const { return port_; }
    int Requests() const { return requests_; }

private:
    struct Link {
        explicit Link(SOCKET accepted) : socket(accepted) {}
        RelaySocket socket;
        std::thread thread;
        std::atomic<bool> isDone = false;
    };

    void Accept() {
        for (;;) {
            const SOCKET accepted = accept(listener_.Get(), nullptr, nullptr);
            if (accepted == INVALID_SOCKET) return;
            Link& link = links_.emplace_back(accepted);
            if (ending_) link.isDone = true;
            link.thread = std::thread([this, &link] {
                if (!ending_) Serve(link.socket.Get());
                shutdown(link.socket.Get(), SD_BOTH);
                link.isDone = true;
            });
            if (ending_) return;
            links_.remove_if([&](Link& old) {
                const bool isOver = &old != &link && old.isDone;
                if (isOver) old.thread.join();
                return isOver;
            });
        }
    }

    void Serve(SOCKET socket) {
        MessageSplitter splitter;
        char bytes[4096];
        for (;;) {
            const int count = recv(socket, bytes, sizeof(bytes), 0);
            if (count <= 0) return;
            splitter.Add({bytes, static_cast<std::size_t>(count)});
            while (const auto request = splitter.Next()) {
                if (!IsAnswered(request->operation)) continue;
                Answer answer;
                {
                    const std::lock_guard guard(lock_);
                    answer = answer_(*request);
                    ++requests_;
                }
                if (!Send(socket, answer.bytes) || answer.ends) return;
            }
        }
    }

    const Answerer answer_;
    const RelaySocket listener_{NewSocket()};
    unsigned port_ = 0;
    std::atomic<int> requests_ = 0;
    std::atomic<bool> ending_ = false;
    std::mutex lock_;
    std::list<Link> links_;
    std::thread acceptor_;
};

HostileServer::HostileServer(Answerer answer)
    : works_(std::make_unique<Works>(std::move(answer))) {}

HostileServer::~HostileServer() = default;

unsigned HostileServer::Port() const {
    return works_->Port();
}

int HostileServer::Requests() const {
    return works_->Requests();
}

}  // namespace depot::test
