// Counting what the process holds, to see that a call leaves nothing behind.
#pragma once

#include <algorithm>
#include <cstddef>

namespace depot::test {

// Returns the number of allocated blocks in all heaps of the process.
std::size_t CountHeapBlocks();

// Returns the number of kernel handles that the process has open.
std::size_t CountOpenHandles();

// Counts the heap blocks and handles that a call leaves behind.
template <class Call>
std::size_t LeftBehind(const Call& call) {
    const std::size_t blocks = CountHeapBlocks();
    const std::size_t handles = CountOpenHandles();
    call();
    const std::size_t blocksNow = CountHeapBlocks();
    const std::size_t handlesNow = CountOpenHandles();
    return (blocksNow > blocks ? blocksNow - blocks : 0) +
           (handlesNow > handles ? handlesNow - handles : 0);
}

// The same for a call that stands for many. What it leaves behind it leaves each time; the few
// blocks that the system's heap takes now and then in order to keep small ones in them do not
// count.
template <class Call>
std::size_t LeftBehindAgain(const Call& call) {
    constexpr std::size_t kFew = 8;
    constexpr int kAttempts = 5;
    std::size_t left = LeftBehind(call);
    for (int attempt = 1; attempt < kAttempts && left != 0 && left <= kFew; ++attempt) {
        left = std::min(left, LeftBehind(call));
    }
    return left;
}

// The same for repeated calls. The first rounds fill caches of the system and do not count.
template <class Call>
std::size_t CountLeftovers(const Call& call, int rounds = 50) {
    const auto repeat = [&call](int times) {
        for (int round = 0; round < times; ++round) call();
    };
    repeat(5);
    return LeftBehindAgain([&] { repeat(rounds); });
}

}  // namespace depot::test
