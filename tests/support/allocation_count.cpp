#include "support/allocation_count.h"

#include <malloc.h>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

std::atomic<std::size_t> calls{0};
std::atomic<std::size_t> allocatedBytes{0};
// How many allocations succeed before one fails; none does below 0.
std::atomic<int> left{-1};

std::atomic<const char*> wanted{nullptr};
std::atomic<std::size_t> found{0};
// So much of the text is enough.
constexpr std::size_t kShown = 8;

bool BeginsHere(const char* at, std::size_t bytes, std::size_t width, const char* text) {
    if (bytes < kShown * width) return false;
    for (std::size_t index = 0; index < kShown; ++index) {
        if (at[index * width] != text[index]) return false;
        if (width > 1 && at[index * width + 1] != 0) return false;
    }
    return true;
}

void Look(const void* memory) {
    const char* const text = wanted;
    if (text == nullptr || memory == nullptr) return;
    const auto* const bytes = static_cast<const char*>(memory);
    const std::size_t size = _msize(const_cast<void*>(memory));
    for (std::size_t at = 0; at < size; ++at) {
        if (!BeginsHere(bytes + at, size - at, 1, text) &&
            !BeginsHere(bytes + at, size - at, 2, text)) {
            continue;
        }
        ++found;
        return;
    }
}

}  // namespace

void* operator new(std::size_t bytes) {
    ++calls;
    allocatedBytes += bytes;
    if (left >= 0 && left-- == 0) throw std::bad_alloc();
    if (void* const memory = std::malloc(bytes == 0 ? 1 : bytes)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    Look(memory);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    Look(memory);
    std::free(memory);
}

namespace depot::test {

AllocationCount Allocated() {
    return {calls, allocatedBytes};
}

void FailAllocationAfter(int successes) {
    left = successes;
}

void LookInReleasedBlocks(const char* text) {
    found = 0;
    wanted = text;
}

std::size_t ReleasedBlocksWithText() {
    return found;
}

bool AnAllocationHasFailed() {
    return left < 0;
}

}  // namespace depot::test
