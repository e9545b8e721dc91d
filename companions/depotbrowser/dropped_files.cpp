#include "depotbrowser/dropped_files.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace depot {
namespace {

// What stands before the paths: where they begin, the point of the drop, and two switches.
struct Header {
    std::uint32_t firstPath;
    std::int32_t x, y;
    std::int32_t outsideClient;
    std::int32_t isWide;
};

// Returns the texts up to the first empty one. They may begin at any byte.
template <class Character>
std::vector<std::basic_string<Character>> Texts(std::span<const std::byte> bytes) {
    std::vector<Character> all(bytes.size() / sizeof(Character));
    if (!all.empty()) std::memcpy(all.data(), bytes.data(), all.size() * sizeof(Character));
    std::vector<std::basic_string<Character>> texts;
    auto start = all.begin();
    for (;;) {
        const auto end = std::find(start, all.end(), Character());
        if (end == all.end() || end == start) return texts;
        texts.emplace_back(start, end);
        start = end + 1;
    }
}

}  // namespace

DroppedPaths ParseDroppedPaths(std::span<const std::byte> block) {
    Header header = {};
    if (block.size() < sizeof(header)) return {};
    std::memcpy(&header, block.data(), sizeof(header));
    if (header.firstPath < sizeof(header) || header.firstPath > block.size()) return {};
    const auto paths = block.subspan(header.firstPath);
    if (header.isWide == 0) return {{}, Texts<char>(paths)};
    return {Texts<char16_t>(paths), {}};
}

}  // namespace depot
