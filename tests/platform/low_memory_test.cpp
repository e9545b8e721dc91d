#include "platform/low_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

#include "support/failing_memory.h"
#include "support/mapped_memory.h"

namespace depot {
namespace {

constexpr std::uintptr_t kTwoGigabytes = 0x80000000;

std::uintptr_t Address(const void* block) {
    return reinterpret_cast<std::uintptr_t>(block);
}

TEST(AllocateLowTest, BlockIsZeroedAndLiesBelowTwoGigabytes) {
    for (const std::size_t bytes : {std::size_t{1}, std::size_t{0x10000}, std::size_t{0x123456}}) {
        SCOPED_TRACE(bytes);
        const UniqueVirtualBlock block = AllocateLow(bytes);
        ASSERT_TRUE(block);
        EXPECT_LE(Address(block.get()) + bytes, kTwoGigabytes);
        char* const start = static_cast<char*>(block.get());
        EXPECT_TRUE(std::all_of(start, start + bytes, [](char c) { return c == '\0'; }));
        std::fill(start, start + bytes, 'x');
    }
}

TEST(AllocateLowTest, BlocksDoNotOverlap) {
    std::set<std::uintptr_t> addresses;
    std::vector<UniqueVirtualBlock> blocks;
    for (int count = 0; count < 50; ++count) {
        blocks.push_back(AllocateLow(0x10000));
        ASSERT_TRUE(blocks.back());
        EXPECT_TRUE(addresses.insert(Address(blocks.back().get())).second);
    }
}

TEST(AllocateLowTest, BlockThatDoesNotFitBelowTwoGigabytesLiesAnywhere) {
    const UniqueVirtualBlock block = AllocateLow(kTwoGigabytes);
    ASSERT_TRUE(block);
    char* const start = static_cast<char*>(block.get());
    start[0] = 'x';
    start[kTwoGigabytes - 1] = 'x';
    EXPECT_GT(Address(block.get()) + kTwoGigabytes, kTwoGigabytes);
}

TEST(AllocateLowTest, MoreThanTheSystemHasGivesNull) {
    EXPECT_FALSE(AllocateLow(std::size_t{1} << 50));
}

TEST(AllocateLowTest, BlockIsReleasedWithItsOwner) {
    UniqueVirtualBlock block = AllocateLow(0x10000);
    const void* const address = block.get();
    ASSERT_TRUE(test::IsMapped(address));
    block.reset();
    EXPECT_FALSE(test::IsMapped(address));
}

TEST(LowMemoryPoolTest, SlotsAreLowAlignedAndApart) {
    constexpr std::size_t kSlot = 100;
    LowMemoryPool pool(kSlot);
    std::set<std::uintptr_t> addresses;
    for (int count = 0; count < 3000; ++count) {
        void* const slot = pool.Allocate();
        ASSERT_NE(nullptr, slot);
        EXPECT_LT(Address(slot) + kSlot, kTwoGigabytes);
        EXPECT_EQ(0u, Address(slot) % alignof(std::max_align_t));
        std::fill_n(static_cast<char*>(slot), kSlot, 'x');
        addresses.insert(Address(slot));
    }
    ASSERT_EQ(3000u, addresses.size());
    std::uintptr_t previous = 0;
    for (const std::uintptr_t address : addresses) {
        EXPECT_GE(address - previous, kSlot);
        previous = address;
    }
}

TEST(LowMemoryPoolTest, SlotMayFillAWholeBlock) {
    LowMemoryPool pool(LowMemoryPool::kBlockBytes);
    void* const first = pool.Allocate();
    void* const second = pool.Allocate();
    ASSERT_NE(nullptr, first);
    ASSERT_NE(nullptr, second);
    EXPECT_NE(first, second);
    std::fill_n(static_cast<char*>(second), LowMemoryPool::kBlockBytes, 'x');
}

TEST(LowMemoryPoolTest, FreedSlotIsUsedAgainAsLateAsPossible) {
    LowMemoryPool pool(64);
    void* const stale = pool.Allocate();
    pool.Free(stale);
    for (int count = 0; count < 200; ++count) {
        void* const slot = pool.Allocate();
        ASSERT_NE(stale, slot);
        pool.Free(slot);
    }
}

TEST(LowMemoryPoolTest, EndlessAllocatingAndFreeingUsesTheSameSlotsAgain) {
    LowMemoryPool pool(64);
    std::set<void*> slots;
    for (int count = 0; count < 20000; ++count) {
        void* const slot = pool.Allocate();
        slots.insert(slot);
        pool.Free(slot);
    }
    EXPECT_LE(slots.size(), LowMemoryPool::kBlockBytes / 64);
}

TEST(LowMemoryPoolTest, FreeingASlotNeedsNoMemory) {
    LowMemoryPool pool(64);
    std::vector<void*> slots;
    for (int count = 0; count < 5000; ++count) slots.push_back(pool.Allocate());
    const test::FailingMemory memory(1);
    for (void* const slot : slots) pool.Free(slot);
    EXPECT_EQ(0, memory.Asked());
}

TEST(LowMemoryPoolTest, FreedSlotsAreUsedAgainInTheOrderOfTheirFreeing) {
    constexpr std::size_t kSlot = 0x1000;
    LowMemoryPool pool(kSlot);
    std::vector<void*> slots;
    for (int count = 0; count < 1000; ++count) slots.push_back(pool.Allocate());
    for (void* const slot : slots) {
        std::fill_n(static_cast<char*>(slot), kSlot, 'x');
        pool.Free(slot);
    }
    std::vector<void*> again;
    for (int count = 0; count < 1000; ++count) again.push_back(pool.Allocate());
    // Slots that were free already come first.
    const auto first = std::find(again.begin(), again.end(), slots.front());
    EXPECT_LE(first - again.begin(), 300);
    EXPECT_TRUE(std::equal(first, again.end(), slots.begin()));
}

TEST(LowMemoryPoolTest, BlockThatCannotBeKeptIsNeitherHandedOutNorLeft) {
    // The list of blocks grows with the first, the second and the third block.
    for (int failing = 1; failing <= 3; ++failing) {
        SCOPED_TRACE(failing);
        LowMemoryPool pool(LowMemoryPool::kBlockBytes);
        std::set<void*> slots;
        for (int count = 1; count < failing; ++count) slots.insert(pool.Allocate());
        {
            const test::FailingMemory memory(1);
            EXPECT_EQ(nullptr, pool.Allocate());
            EXPECT_TRUE(memory.RanOut());
        }
        void* const next = pool.Allocate();
        ASSERT_NE(nullptr, next);
        EXPECT_FALSE(slots.contains(next));
        std::fill_n(static_cast<char*>(next), LowMemoryPool::kBlockBytes, 'x');
    }
}

TEST(LowMemoryPoolTest, WithoutMemoryForAnotherBlockTheSlotsAtRestServe) {
    LowMemoryPool pool(LowMemoryPool::kBlockBytes);
    void* const only = pool.Allocate();
    pool.Free(only);
    // The second block makes the list of blocks grow.
    const test::FailingMemory memory(1);
    EXPECT_EQ(only, pool.Allocate());
    EXPECT_TRUE(memory.RanOut());
}

}  // namespace
}  // namespace depot
