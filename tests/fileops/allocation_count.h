// Counts what the program allocates. Every copied text and every grown list shows in it, so it
// tells how work grows without depending on the machine's speed.
#pragma once

#include <cstddef>

namespace depot::test {

struct AllocationCount {
    std::size_t calls = 0;
    std::size_t bytes = 0;
};

// All allocations of this program until now.
AllocationCount Allocated();

}  // namespace depot::test
