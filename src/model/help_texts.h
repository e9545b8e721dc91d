// What a directory's refusal means to its user, and what helps.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace depot {

// Returns the words for a directory's result code, in the language of the user's texts; nothing for
// codes that have none, and where the texts cannot be had. The dialog for credentials shows the
// same.
std::optional<std::string> HelpForDirectoryCode(std::uint32_t code);

}  // namespace depot
