#include "directory/assertion.h"

namespace depot {
namespace {

// Tags of the encoded filter.
constexpr std::uint8_t kOctetString = 0x04;
constexpr std::uint8_t kNot = 0xA2;
constexpr std::uint8_t kEqualityMatch = 0xA3;
constexpr std::uint8_t kPresent = 0x87;

void AppendLength(std::vector<std::uint8_t>& encoded, std::size_t length) {
    if (length < 0x80) {
        encoded.push_back(static_cast<std::uint8_t>(length));
        return;
    }
    std::size_t count = 1;
    while (count < sizeof(length) && length >> (8 * count) != 0) ++count;
    encoded.push_back(static_cast<std::uint8_t>(0x80 | count));
    while (count-- > 0) encoded.push_back(static_cast<std::uint8_t>(length >> (8 * count)));
}

template <class Bytes>
void Append(std::vector<std::uint8_t>& encoded, std::uint8_t tag, const Bytes& contents) {
    encoded.push_back(tag);
    AppendLength(encoded, contents.size());
    encoded.insert(encoded.end(), contents.begin(), contents.end());
}

}  // namespace

std::vector<std::uint8_t> AssertEquals(std::string_view attribute, std::string_view bytes) {
    std::vector<std::uint8_t> sides;
    Append(sides, kOctetString, attribute);
    Append(sides, kOctetString, bytes);
    std::vector<std::uint8_t> filter;
    Append(filter, kEqualityMatch, sides);
    return filter;
}

std::vector<std::uint8_t> AssertAbsent(std::string_view attribute) {
    std::vector<std::uint8_t> present;
    Append(present, kPresent, attribute);
    std::vector<std::uint8_t> filter;
    Append(filter, kNot, present);
    return filter;
}

}  // namespace depot
