#include <winsock2.h>
#include <ws2tcpip.h>

#include "depotctl/network.h"

#include <algorithm>
#include <memory>
#include <sstream>

#include "depotctl/encoding.h"
#include "platform/not_copied.h"

namespace depot::ctl {
namespace {

constexpr std::uint32_t kLongestWait = 10;

struct SocketLibrary {
    SocketLibrary() {
        WSADATA data = {};
        WSAStartup(MAKEWORD(2, 2), &data);
    }
};

class Socket : NotCopied {
public:
    explicit Socket(const addrinfo& address)
        : socket_(socket(address.ai_family, SOCK_STREAM, IPPROTO_TCP)) {}
    ~Socket() { closesocket(socket_); }

    // Returns the code of the failure; nothing when there is a connection.
    std::optional<int> Connect(const addrinfo& address, std::uint32_t seconds) const {
        u_long nonBlocking = 1;
        ioctlsocket(socket_, static_cast<long>(FIONBIO), &nonBlocking);
        if (connect(socket_, address.ai_addr, static_cast<int>(address.ai_addrlen)) == 0) return {};
        if (WSAGetLastError() != WSAEWOULDBLOCK) return WSAGetLastError();
        fd_set writable = {1, {socket_}}, failed = writable;
        timeval limit = {static_cast<long>(seconds), 0};
        if (select(0, nullptr, &writable, &failed, &limit) == 0) return WSAETIMEDOUT;
        int error = 0;
        int size = sizeof(error);
        getsockopt(socket_, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
        return error == 0 ? std::nullopt : std::optional(error);
    }

private:
    SOCKET socket_;
};

struct AddressFreer {
    void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};
using Addresses = std::unique_ptr<addrinfo, AddressFreer>;

std::string Words(int error, const std::string& place, std::uint32_t seconds) {
    switch (error) {
        case WSAECONNREFUSED:
            return "nobody answers at " + place;
        case WSAETIMEDOUT:
            return "no answer from " + place + " within " + std::to_string(seconds) + " s";
        default:
            return place + " cannot be reached (network error " + std::to_string(error) + ")";
    }
}

std::optional<std::string> TryHost(const std::string& host, const std::string& port,
                                   std::uint32_t seconds) {
    const std::string place = Utf8FromAnsi(host) + ", port " + port;
    addrinfo wanted = {};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), port.c_str(), &wanted, &found) != 0) {
        return "the name \"" + Utf8FromAnsi(host) + "\" cannot be resolved";
    }
    const Addresses addresses(found);
    std::optional<int> error = WSAHOST_NOT_FOUND;
    for (const addrinfo* address = found; error && address != nullptr; address = address->ai_next) {
        error = Socket(*address).Connect(*address, seconds);
    }
    return error ? std::optional(Words(*error, place, seconds)) : std::nullopt;
}

}  // namespace

std::uint32_t ConnectLimit(std::uint32_t seconds) {
    return seconds == 0 ? kLongestWait : std::min(seconds, kLongestWait);
}

std::optional<std::string> WhyNobodyAnswers(const std::string& hosts, std::uint32_t port,
                                            std::uint32_t seconds) {
    static const SocketLibrary library;
    const std::uint32_t wait = ConnectLimit(seconds);
    std::optional<std::string> reason = "no server is named";
    std::istringstream list(hosts);
    for (std::string host; list >> host;) {
        std::string number = std::to_string(port);
        const std::size_t colon = host.find(':');
        if (colon != std::string::npos && host.find(':', colon + 1) == std::string::npos) {
            number = host.substr(colon + 1);
            host.resize(colon);
        }
        reason = TryHost(host, number, wait);
        if (!reason) return std::nullopt;
    }
    return reason;
}

}  // namespace depot::ctl
