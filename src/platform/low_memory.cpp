#include "platform/low_memory.h"

#include <cstdint>
#include <new>

namespace depot {
namespace {

constexpr std::uintptr_t kFirstAddress = 0x10000000;
constexpr std::uintptr_t kTwoGigabytes = 0x80000000;
// Reservations start at multiples of this on every Windows system.
constexpr std::uintptr_t kGranularity = 0x10000;

}  // namespace

UniqueVirtualBlock AllocateLow(std::size_t bytes) {
    const DWORD kind = MEM_RESERVE | MEM_COMMIT;
    for (std::uintptr_t address = kFirstAddress; address + bytes <= kTwoGigabytes;) {
        void* const wanted = reinterpret_cast<void*>(address);
        if (void* block = VirtualAlloc(wanted, bytes, kind, PAGE_READWRITE)) {
            return UniqueVirtualBlock(block);
        }
        // Whatever occupies the address is skipped whole: modules and heaps are many blocks long.
        MEMORY_BASIC_INFORMATION region = {};
        std::uintptr_t next = address + kGranularity;
        if (VirtualQuery(wanted, &region, sizeof(region)) != 0 && region.State != MEM_FREE) {
            const auto end =
                reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
            next = (end + kGranularity - 1) & ~(kGranularity - 1);
        }
        address = next > address ? next : address + kGranularity;
    }
    return UniqueVirtualBlock(VirtualAlloc(nullptr, bytes, kind, PAGE_READWRITE));
}

LowMemoryPool::LowMemoryPool(std::size_t slotBytes)
    : slotBytes_((slotBytes + alignof(std::max_align_t) - 1) & ~(alignof(std::max_align_t) - 1)) {}

void* LowMemoryPool::Allocate() {
    if (freeCount_ < kSlotsAtRest && !AddBlock() && freeCount_ == 0) return nullptr;
    FreeSlot* const slot = first_;
    first_ = slot->next;
    if (first_ == nullptr) last_ = nullptr;
    --freeCount_;
    return slot;
}

void LowMemoryPool::Free(void* slot) {
    PutLast(slot);
}

bool LowMemoryPool::AddBlock() try {
    UniqueVirtualBlock block = AllocateLow(kBlockBytes);
    if (!block) return false;
    char* const start = static_cast<char*>(block.get());
    // Before its slots are free to be taken: a block that cannot be kept is freed again.
    blocks_.push_back(std::move(block));
    const bool low = reinterpret_cast<std::uintptr_t>(start) < kTwoGigabytes;
    for (std::size_t offset = 0; offset + slotBytes_ <= kBlockBytes; offset += slotBytes_) {
        // Low slots that were used before are still better than slots out of a handle's reach.
        low ? PutFirst(start + offset) : PutLast(start + offset);
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

void LowMemoryPool::PutFirst(void* slot) {
    first_ = std::construct_at(static_cast<FreeSlot*>(slot), FreeSlot{first_});
    if (last_ == nullptr) last_ = first_;
    ++freeCount_;
}

void LowMemoryPool::PutLast(void* slot) {
    FreeSlot* const added = std::construct_at(static_cast<FreeSlot*>(slot), FreeSlot{nullptr});
    (last_ == nullptr ? first_ : last_->next) = added;
    last_ = added;
    ++freeCount_;
}

}  // namespace depot
