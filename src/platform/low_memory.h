// Memory below 2 GB for objects whose address a client holds as a 32-bit handle.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "platform/win32.h"

namespace depot {

struct VirtualFreer {
    void operator()(void* block) const { VirtualFree(block, 0, MEM_RELEASE); }
};
using UniqueVirtualBlock = std::unique_ptr<void, VirtualFreer>;

// Reserves and commits `bytes` of zeroed memory below 2 GB, or anywhere when nothing is free there.
// Null when the system has no memory left.
UniqueVirtualBlock AllocateLow(std::size_t bytes);

// Hands out slots of one fixed size, taken from blocks below 2 GB while there are any. A freed slot
// is used again as late as possible, so that a stale address stays recognisably stale for long.
// Not locked: the owner serialises the calls.
class LowMemoryPool {
public:
    // REQUIRES: slotBytes is at most kBlockBytes.
    explicit LowMemoryPool(std::size_t slotBytes);

    // Returns a free slot, aligned for any object; null when there is no memory.
    void* Allocate();

    // Takes back a slot that Allocate returned. Needs no memory of its own.
    void Free(void* slot) noexcept;

    static constexpr std::size_t kBlockBytes = 0x10000;

private:
    // What stands in a slot that is free.
    struct Slot {
        Slot* next = nullptr;
    };

    bool AddBlock();
    // Frees a slot that is to be the next one handed out.
    void UseFirst(void* slot);

    // Freed slots wait until this many are free before the first of them is used again.
    static constexpr std::size_t kSlotsAtRest = 256;

    std::size_t slotBytes_;
    std::vector<UniqueVirtualBlock> blocks_;
    Slot* first_ = nullptr;
    Slot* last_ = nullptr;  // of use only while there is a first one
    std::size_t freeSlots_ = 0;
};

}  // namespace depot
