// A server that accepts connections and never answers.
#pragma once

// The sockets come before the Windows headers.
#include <winsock2.h>

#include <string>

namespace depot::test {

// Listens on a free port of this machine. When it ends, its clients' connections are closed.
class SilentServer {
public:
    SilentServer();
    ~SilentServer();
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    unsigned short Port() const { return port_; }

    // Waits for a client. Returns whether one came.
    bool Accept();
    // Ends all connections.
    void HangUp();

private:
    WSADATA sockets_ = {};
    SOCKET listener_ = INVALID_SOCKET;
    SOCKET client_ = INVALID_SOCKET;
    unsigned short port_ = 0;
};

}  // namespace depot::test
