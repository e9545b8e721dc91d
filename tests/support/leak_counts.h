// Counting what the process holds, to see that a call leaves nothing behind.
#pragma once

#include <cstddef>

namespace depot::test {

// Returns the number of allocated blocks in all heaps of the process.
std::size_t CountHeapBlocks();

// Returns the number of kernel handles that the process has open.
std::size_t CountOpenHandles();

// Counts the heap blocks and handles that repeated calls leave behind. The first rounds fill caches
// of the system and do not count.
template <class Call>
std::size_t CountLeftovers(const Call& call, int rounds = 50) {
    for (int round = 0; round < 5; ++round) call();
    const std::size_t blocks = CountHeapBlocks();
    const std::size_t handles = CountOpenHandles();
    for (int round = 0; round < rounds; ++round) call();
    const std::size_t blocksNow = CountHeapBlocks();
    const std::size_t handlesNow = CountOpenHandles();
    return (blocksNow > blocks ? blocksNow - blocks : 0) +
           (handlesNow > handles ? handlesNow - handles : 0);
}

}  // namespace depot::test
