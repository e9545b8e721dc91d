// Requests that are under way together on one connection.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "directory/ldap_connection.h"
#include "directory/ldap_handles.h"
#include "platform/not_copied.h"

namespace depot {

// Sends requests without awaiting the answers to those before. The server may work on them in any
// order: what has to be there before something else is sent in an earlier batch. Answers are handed
// out in the order of sending; what is not awaited is abandoned with the object. Borrows the
// connection.
class RequestBatch : NotCopied {
public:
    explicit RequestBatch(LdapConnection& connection) : connection_(connection) {}
    ~RequestBatch();

    // Whether the client can do this at all.
    static bool IsPossible(const DirectoryClient& client);

    // What a request is given is the caller's, and is not needed once it is sent.
    void Search(const std::string& base, ULONG scope, const std::vector<std::string>& attributes);
    void Add(const std::string& dn, LDAPModA** attributes);
    void Modify(const std::string& dn, LDAPModA** changes, LDAPControlA** conditions = nullptr);
    void Delete(const std::string& dn, LDAPControlA** conditions = nullptr);

    // Awaits the answer to the next request. Returns the directory's code of the request; `answer`
    // is what a search has found.
    std::uint32_t Await(UniqueLdapMessage& answer);

private:
    struct Request {
        std::uint32_t refused = 0;  // why it could not be sent
        ULONG id = 0;
    };

    // Sends a request by `call`, which stores its number.
    template <class Call>
    void Send(const char* operation, const std::string& dn, const Call& call);
    std::uint32_t Failure() const;

    LdapConnection& connection_;
    std::deque<Request> requests_;  // those not yet awaited
    bool isBroken_ = false;         // whether nothing more is to be awaited
};

}  // namespace depot
