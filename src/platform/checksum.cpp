#include "platform/checksum.h"

#include <algorithm>
#include <cstring>

namespace depot {
namespace {

// Odd, so that multiplying by it loses nothing, with about as many ones as zeros.
constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;

// Each step can be undone: bytes that differ in one word only never have the same checksum. A
// multiplication carries a bit to those above it, a shift to those below.
std::uint64_t Mix(std::uint64_t sum, std::uint64_t word) {
    sum = (sum ^ word) * kFactor;
    sum = (sum ^ sum >> 32) * kFactor;
    return sum ^ sum >> 29;
}

}  // namespace

std::uint64_t ChecksumOf(const void* bytes, std::size_t length) {
    const auto* data = static_cast<const std::uint8_t*>(bytes);
    std::uint64_t sum = Mix(kFactor, length);
    while (length > 0) {
        std::uint64_t word = 0;
        const std::size_t size = std::min(length, sizeof(word));
        std::memcpy(&word, data, size);
        sum = Mix(sum, word);
        data += size;
        length -= size;
    }
    return sum;
}

}  // namespace depot
