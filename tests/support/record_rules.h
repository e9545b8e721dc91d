// What holds for all records of the model: their copies without memory, the order of their members
// and of their virtual operations.
#pragma once

#include <algorithm>
#include <cstring>
#include <vector>

#include "support/failing_memory.h"

namespace depot::test {

// Checks that a clone for which memory does not suffice is null, and leaves nothing behind.
template <class Record>
void ExpectNullCloneWithoutMemory(const Record& record) {
    ExpectNoFailureThrows([&] {
        const auto clone = record.Clone();
        EXPECT_EQ(FailingMemory::RanOut(), clone == nullptr);
    });
}

// Checks that the members lie one behind the other.
template <class Record, class... Members>
void ExpectMembersInOrder(const Record& record, Members... members) {
    const std::vector<const void*> places = {&(record.*members)...};
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
}

// The place of a virtual operation in its class's table. A virtual destructor before it takes two.
template <class Operation>
std::size_t VirtualSlot(Operation operation) {
    // A pointer to a virtual operation holds one more than its distance from the table's start.
    std::size_t distance = 0;
    std::memcpy(&distance, &operation, sizeof(distance));
    return (distance - 1) / sizeof(void*);
}

}  // namespace depot::test
