#include "platform/digest.h"

#include <algorithm>
#include <bit>

namespace depot {
namespace {

constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kLengthBytes = 8;
constexpr std::size_t kRounds = 64;

constexpr std::array<std::uint32_t, 8> kStart = {
    0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19,
};

constexpr std::array<std::uint32_t, kRounds> kConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2,
};

std::uint32_t BigEndian(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
           std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[3]};
}

std::array<std::uint32_t, kRounds> Schedule(const std::uint8_t* block) {
    std::array<std::uint32_t, kRounds> words = {};
    for (std::size_t index = 0; index < 16; ++index) words[index] = BigEndian(block + 4 * index);
    for (std::size_t index = 16; index < kRounds; ++index) {
        const std::uint32_t early = words[index - 15];
        const std::uint32_t late = words[index - 2];
        words[index] = words[index - 16] + words[index - 7] +
                       (std::rotr(early, 7) ^ std::rotr(early, 18) ^ early >> 3) +
                       (std::rotr(late, 17) ^ std::rotr(late, 19) ^ late >> 10);
    }
    return words;
}

void AddBlock(std::array<std::uint32_t, 8>& state, const std::uint8_t* block) {
    const std::array<std::uint32_t, kRounds> words = Schedule(block);
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t round = 0; round < kRounds; ++round) {
        const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                    ((e & f) ^ (~e & g)) + kConstants[round] + words[round];
        const std::uint32_t second =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const std::array<std::uint32_t, 8> added = {a, b, c, d, e, f, g, h};
    for (std::size_t index = 0; index < state.size(); ++index) state[index] += added[index];
}

// The bytes behind the last whole block, then what ends every message: a set bit, as many zeros as
// it takes, and the number of bits.
void AddEnd(std::array<std::uint32_t, 8>& state, const std::uint8_t* rest, std::size_t length,
            std::uint64_t bits) {
    std::array<std::uint8_t, 2 * kBlockBytes> end = {};
    std::copy_n(rest, length, end.begin());
    end[length] = 0x80;
    const std::size_t size =
        length + 1 + kLengthBytes <= kBlockBytes ? kBlockBytes : 2 * kBlockBytes;
    for (std::size_t index = 0; index < kLengthBytes; ++index) {
        end[size - 1 - index] = static_cast<std::uint8_t>(bits >> (8 * index));
    }
    for (std::size_t at = 0; at < size; at += kBlockBytes) AddBlock(state, end.data() + at);
}

}  // namespace

Digest DigestOf(const void* bytes, std::size_t length) {
    static constexpr std::uint8_t kNothing = 0;
    const auto* const data = bytes ? static_cast<const std::uint8_t*>(bytes) : &kNothing;
    std::array<std::uint32_t, 8> state = kStart;
    const std::size_t whole = length - length % kBlockBytes;
    for (std::size_t at = 0; at < whole; at += kBlockBytes) AddBlock(state, data + at);
    AddEnd(state, data + whole, length - whole, std::uint64_t{length} * 8);
    Digest digest = {};
    for (std::size_t index = 0; index < digest.size(); ++index) {
        digest[index] = static_cast<std::uint8_t>(state[index / 4] >> (24 - 8 * (index % 4)));
    }
    return digest;
}

}  // namespace depot
