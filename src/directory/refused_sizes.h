// What users are told of names and files that are larger than a server takes.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/result.h"

namespace depot {

// Some servers take no longer names, and a request of this size may be more than a server takes.
inline constexpr std::size_t kLongestCommonName = 64;
inline constexpr std::uint32_t kLargeContents = 1024 * 1024;

// Returns the failure where a server has answered with this code and the name, by its characters,
// may be what it refuses; nothing for another code and for a name that every server takes.
std::optional<Error> RefusedName(std::uint32_t code, std::string_view name, std::size_t characters);

// The failure where a server ended the connection over a file, and answers again.
Error RefusedContents(std::string_view name, std::uint32_t bytes);

}  // namespace depot
