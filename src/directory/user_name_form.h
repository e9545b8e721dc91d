// In which form a server wants the names of users, as the entry without a name shows it.
#pragma once

#include <string>
#include <vector>

namespace depot {

// Returns a user name as the server takes it for a log-on with name and password: an account of a
// domain where its capabilities, object identifiers, say that it serves one, else the name of an
// entry. The contexts are the entries at the top, that of the users first. Empty where the server
// does not say enough, or what cannot be shown in a line.
std::string UserNameExample(const std::vector<std::string>& capabilities,
                            const std::vector<std::string>& contexts);

}  // namespace depot
