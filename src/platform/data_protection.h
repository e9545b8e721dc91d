// Encryption of what is kept on disk for the current user, with the keys that the system has for
// the user. Another user cannot read it, nor can this one on another machine unless the profile
// roams.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace depot {

// Both return nothing where the system cannot do it; nothing is shown. Bytes that were not made by
// the first, or changed since, are not read by the second.
std::optional<std::vector<std::uint8_t>> ProtectForUser(std::span<const std::uint8_t> bytes);
std::optional<std::vector<std::uint8_t>> UnprotectForUser(std::span<const std::uint8_t> bytes);

}  // namespace depot
