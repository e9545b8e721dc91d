// Counts what the program allocates, and lets an allocation fail. Every copied text and every grown
// list shows in the count, so it tells how work grows without depending on the machine's speed.
#pragma once

#include <cstddef>
#include <new>
#include <set>

namespace depot::test {

struct AllocationCount {
    std::size_t calls = 0;
    std::size_t bytes = 0;
};

// All allocations of this program until now.
AllocationCount Allocated();

// Lets one allocation fail, after so many that succeed; a negative number lets none fail.
void FailAllocationAfter(int successes);

// Whether the allocation that was to fail has failed. REQUIRES: one was to.
bool AnAllocationHasFailed();

// Looks from now on for a text in each block that the program gives back, and counts the blocks
// that hold it, or the beginning of it, in narrow or wide characters; null looks for nothing. The
// text stays the caller's.
void LookInReleasedBlocks(const char* text);
std::size_t ReleasedBlocksWithText();

// Runs `list` again and again, letting each of its allocations fail in turn, until none is left to
// fail. `list` returns how many items it appended; a failure outside of the items ends it. Returns
// every number that came back.
template <class List>
std::set<int> CountsWithoutMemory(const List& list) {
    std::set<int> counts;
    for (int successes = 0;; ++successes) {
        FailAllocationAfter(successes);
        try {
            const int count = list();
            const bool failed = AnAllocationHasFailed();
            FailAllocationAfter(-1);
            if (!failed) return counts;
            counts.insert(count);
        } catch (const std::bad_alloc&) {
            FailAllocationAfter(-1);
        }
    }
}

}  // namespace depot::test
