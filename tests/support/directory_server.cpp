#include <winsock2.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <sstream>

#include "support/directory_kind.h"
#include "support/directory_server.h"
#include "support/kept_seconds.h"

namespace depot::test {
namespace {

struct SocketLibrary {
    SocketLibrary() {
        WSADATA data = {};
        WSAStartup(MAKEWORD(2, 2), &data);
    }
};

class Connection {
public:
    explicit Connection(unsigned port) {
        static const SocketLibrary library;
        socket_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<u_short>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(0, connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)))
            << "this program runs under tools/with-slapd";
    }
    ~Connection() { closesocket(socket_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    std::string Ask(const std::string& request) const {
        for (std::size_t sent = 0; sent < request.size();) {
            const int bytes =
                send(socket_, request.data() + sent, static_cast<int>(request.size() - sent), 0);
            if (bytes <= 0) return "failed\nconnection lost";
            sent += static_cast<std::size_t>(bytes);
        }
        shutdown(socket_, SD_SEND);
        std::string reply;
        char buffer[65536];
        for (int bytes; (bytes = recv(socket_, buffer, sizeof(buffer), 0)) > 0;) {
            reply.append(buffer, static_cast<std::size_t>(bytes));
        }
        return reply;
    }

private:
    SOCKET socket_;
};

std::string Control(const std::string& request) {
    const char* const port = std::getenv("DEPOTINTR_DIRECTORY_CONTROL");
    const std::string reply =
        Connection(port ? static_cast<unsigned>(std::atoi(port)) : 0).Ask(request);
    const std::string text = reply.substr(std::min(reply.find('\n'), reply.size() - 1) + 1);
    EXPECT_TRUE(reply.starts_with("ok")) << request << "\n" << text;
    return text;
}

unsigned Number(const std::string& text) {
    return static_cast<unsigned>(std::strtoul(text.c_str(), nullptr, 10));
}

std::string Base64(const std::string& bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        unsigned group = 0;
        for (std::size_t index = 0; index < 3; ++index) {
            const bool there = at + index < bytes.size();
            group = group << 8 | (there ? static_cast<unsigned char>(bytes[at + index]) : 0u);
        }
        for (std::size_t index = 0; index < 4; ++index) {
            const bool there = at + index <= bytes.size();
            text.push_back(there ? kDigits[group >> (18 - 6 * index) & 63] : '=');
        }
    }
    return text;
}

// Some servers show names in other letters than they were given in.
std::string InCapitals(std::string text) {
    for (char& letter : text) {
        if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    }
    return text;
}

// A program that names its server wants secured ports, and slapd to page whole folders, which
// the others do as they come.
std::string SharedSettings() {
    const std::string named = "tls\ndatabase limits users size=500 size.prtotal=unlimited\n";
    switch (SharedKind()) {
        case DirectoryKind::kPair:
            return "kind pair\n" + named;
        case DirectoryKind::k389:
            return "kind 389\n";
        case DirectoryKind::kSamba:
            return "kind samba\n";
        default:
            return std::getenv("DEPOTINTR_DIRECTORY") != nullptr ? named : std::string();
    }
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const OperationCounts& counts) {
    return stream << "BIND " << counts.binds << " SRCH " << counts.searches << " ADD "
                  << counts.adds << " MOD " << counts.modifications << " DEL " << counts.deletions
                  << " MODRDN " << counts.renames;
}

DirectoryServer::DirectoryServer(const std::string& settings) {
    static int count = 0;
    name_ = "server" + std::to_string(++count);
    std::istringstream ports(Request("start", settings));
    ports >> port_ >> tlsPort_;
}

DirectoryServer::~DirectoryServer() {
    Stop();
}

std::string DirectoryServer::Request(const std::string& word, const std::string& text,
                                     const std::string& arguments) {
    return Control(word + "\t" + name_ + (arguments.empty() ? "" : "\t" + arguments) + "\n" + text);
}

void DirectoryServer::AddFolder(const std::string& name, const std::string& parent) {
    Apply("dn: cn=" + name + "," + parent + "\nobjectClass: quillonFolder\ncn: " + name + "\n");
}

void DirectoryServer::AddFile(const std::string& name, const std::string& parent,
                              const std::string& contents) {
    Apply("dn: cn=" + name + "," + parent + "\nobjectClass: quillonFileBinary\ncn: " + name +
          "\nquillonFileContentsBinary:: " + Base64(contents) + "\n");
}

std::string DirectoryServer::Show(const std::string& base, const std::string& scope,
                                  const std::string& attributes) {
    return Request("show", {}, base + "\t" + scope + "\t(objectClass=*)\t" + attributes);
}

bool DirectoryServer::Holds(const std::string& dn) {
    std::string all = "\n" + Show(kSuffix, "sub", "1.1"), wanted = "\ndn: " + dn + "\n";
    if (IsOtherProduct()) all = InCapitals(all), wanted = InCapitals(wanted);
    return all.find(wanted) != std::string::npos;
}

bool DirectoryServer::WaitForLog(const std::string& part) {
    for (int attempt = 0; attempt < 100; ++attempt, Sleep(20)) {
        if (Log().find(part) != std::string::npos) return true;
    }
    return false;
}

OperationCounts DirectoryServer::Counts() {
    OperationCounts counts;
    std::istringstream log(Log());
    for (std::string line; std::getline(log, line);) {
        const auto holds = [&](const char* text) { return line.find(text) != std::string::npos; };
        // A bind that succeeds is logged twice.
        if (holds(" BIND dn=") && holds(" method=")) ++counts.binds;
        if (holds(" SRCH base=")) ++counts.searches;
        if (holds(" ADD dn=")) ++counts.adds;
        if (holds(" MOD dn=")) ++counts.modifications;
        if (holds(" DEL dn=")) ++counts.deletions;
        if (holds(" MODRDN dn=")) ++counts.renames;
    }
    return counts;
}

unsigned DirectoryServer::CutAfter(unsigned bytes) {
    return Number(Request("cut", {}, std::to_string(bytes)));
}

unsigned DirectoryServer::Relay() {
    return Number(Request("relay"));
}

unsigned DirectoryServer::Disturb(unsigned relay, const std::string& how, unsigned bytes) {
    return Number(
        Request("disturb", {}, std::to_string(relay) + "\t" + how + "\t" + std::to_string(bytes)));
}

std::string DirectoryServer::CrowdedFolder(const std::string& prefix) {
    std::string path = "Z:" + Request("crowd", {}, prefix);
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

std::string DirectoryServer::SmallVolume() {
    std::string path = Request("volume");
    if (path.empty()) return path;
    std::replace(path.begin(), path.end(), '/', '\\');
    return "Z:" + path;
}

CDepotPath DirectoryServer::Location(const std::string& base) const {
    CDepotPath location(nullptr);
    location.type = kDirectoryLocation;
    location.path = base;
    location.host = "127.0.0.1";
    location.port = port_;
    location.username = kEditor;
    location.password = kEditorPassword;
    location.keepConnection = KeptSeconds();
    return location;
}

DirectoryServer& SharedServer() {
    static DirectoryServer server(SharedSettings());
    return server;
}

std::string NewFolder() {
    static int count = 0;
    const std::string name = "t" + std::to_string(++count);
    SharedServer().AddFolder(name, kSuffix);
    return "cn=" + name + "," + kSuffix;
}

unsigned ClosedPort() {
    const DirectoryServer server;
    return server.Port();
}

void ForgetServer(unsigned port, const std::string& host) {
    for (const std::string& key : {ServerKey(host, port), SecuredServerKey(host, port)}) {
        DirectoryInfoBlock block(key);
        if (DirectoryInfo* const info = block.Access()) *info = {};
    }
}

void MakeUnixLink(const std::string& target, const std::string& link) {
    Control("link\t" + target + "\t" + link + "\n");
}

void RemoveUnixLink(const std::string& link) {
    Control("unlink\t" + link + "\n");
}

}  // namespace depot::test
