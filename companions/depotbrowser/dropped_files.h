// The list of files that a desktop hands over when they are dropped.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace depot {

// The paths, in the letters in which the desktop has them: one of the two lists is empty.
struct DroppedPaths {
    std::vector<std::u16string> wide;
    std::vector<std::string> narrow;  // in the ANSI code page

    bool IsEmpty() const { return wide.empty() && narrow.empty(); }
};

// Reads the block of the clipboard format CF_HDROP. Any program can have made it: a list that
// begins outside the block is empty, and a path that the block cuts off is left out, because the
// rest of it may name another file.
DroppedPaths ParseDroppedPaths(std::span<const std::byte> block);

}  // namespace depot
