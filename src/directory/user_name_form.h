// In which form a server wants the names of users, as the entry without a name shows it.
#pragma once

#include <string>
#include <vector>

namespace depot {

// What a server says of itself in that entry.
struct RootEntry {
    std::vector<std::string> capabilities;  // object identifiers
    std::vector<std::string> contexts;      // the entries at the top, that of the users first
};

// Returns a user name as the server takes it for a log-on with name and password: an account of a
// domain where the server serves one, else the name of an entry. Empty where the server does not
// say enough, or what cannot be shown in a line.
std::string UserNameExample(const RootEntry& root);

}  // namespace depot
