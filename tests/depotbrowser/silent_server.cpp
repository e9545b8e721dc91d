#include "depotbrowser/silent_server.h"

#include <gtest/gtest.h>

namespace depot::test {

SilentServer::SilentServer() {
    WSAStartup(MAKEWORD(2, 2), &sockets_);
    listener_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof(address);
    EXPECT_EQ(0, bind(listener_, reinterpret_cast<const sockaddr*>(&address), size));
    EXPECT_EQ(0, listen(listener_, SOMAXCONN));
    EXPECT_EQ(0, getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size));
    port_ = ntohs(address.sin_port);
}

SilentServer::~SilentServer() {
    HangUp();
    WSACleanup();
}

bool SilentServer::Accept() {
    fd_set waiting;
    FD_ZERO(&waiting);
    FD_SET(listener_, &waiting);
    timeval patience = {5, 0};
    if (select(0, &waiting, nullptr, nullptr, &patience) != 1) return false;
    client_ = accept(listener_, nullptr, nullptr);
    return client_ != INVALID_SOCKET;
}

void SilentServer::HangUp() {
    for (SOCKET* const end : {&client_, &listener_}) {
        if (*end != INVALID_SOCKET) closesocket(*end);
        *end = INVALID_SOCKET;
    }
}

}  // namespace depot::test
