#include "support/allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> calls{0};
std::atomic<std::size_t> allocatedBytes{0};
// How many allocations succeed before one fails; none does below 0.
std::atomic<int> left{-1};

}  // namespace

void* operator new(std::size_t bytes) {
    ++calls;
    allocatedBytes += bytes;
    if (left >= 0 && left-- == 0) throw std::bad_alloc();
    if (void* const memory = std::malloc(bytes == 0 ? 1 : bytes)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace depot::test {

AllocationCount Allocated() {
    return {calls, allocatedBytes};
}

void FailAllocationAfter(int successes) {
    left = successes;
}

bool AnAllocationHasFailed() {
    return left < 0;
}

}  // namespace depot::test
