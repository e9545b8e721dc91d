// Checksums by which a file's bytes are recognised again at little cost. They find accidents, not
// forgeries: platform/digest.h is for those.
#pragma once

#include <cstddef>
#include <cstdint>

namespace depot {

// Returns a checksum of the bytes and of their number; `bytes` may be null when there are none. It
// is the same in every process of this system.
std::uint64_t ChecksumOf(const void* bytes, std::size_t length);

}  // namespace depot
