// The entry without a name, in which a server says what it is and what it can do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "directory/ldap_handles.h"

namespace depot {

// Reads it over a connection, which need not be bound. Borrows all that it is given.
class RootEntry {
public:
    RootEntry(const DirectoryClient& client, LDAP* connection)
        : client_(client), connection_(connection), result_(nullptr, {&client}) {}

    // Asks for these attributes, and waits that many seconds at most, or as long as for any other
    // answer. Returns the directory's code.
    std::uint32_t Read(std::vector<std::string> attributes, std::optional<LONG> seconds = {});

    // The values of an attribute; none where the server does not show it.
    std::vector<std::string> Values(const std::string& attribute) const;

private:
    const DirectoryClient& client_;
    LDAP* connection_;
    UniqueLdapMessage result_;
};

}  // namespace depot
