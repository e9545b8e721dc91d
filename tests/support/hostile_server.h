// A directory server that answers with whatever it likes.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "support/ldap_messages.h"

namespace depot::test {

// Listens on a port of this machine. Each connection has a thread of its own, which sends what
// `answer` makes of a request; it is called by one thread at a time. An answer that is not whole
// would be waited for, so `ends` says whether the connection is closed behind it.
class HostileServer {
public:
    struct Answer {
        std::string bytes;
        bool ends = true;
    };
    using Answerer = std::function<Answer(const LdapMessage& request)>;

    explicit HostileServer(Answerer answer);
    // Ends all connections.
    ~HostileServer();
    HostileServer(const HostileServer&) = delete;
    HostileServer& operator=(const HostileServer&) = delete;

    unsigned Port() const;
    // The requests that were answered so far.
    int Requests() const;

private:
    class Works;
    std::unique_ptr<Works> works_;
};

}  // namespace depot::test
