// Digests by which bytes are recognised again without keeping them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace depot {

using Digest = std::array<std::uint8_t, 32>;

// Returns the SHA-256 digest of the bytes; `bytes` may be null when there are none.
Digest DigestOf(const void* bytes, std::size_t length);

}  // namespace depot
