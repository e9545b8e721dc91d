// Parts that other parts trust to stay whole, used directly while memory runs out.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <new>

#include "faults/fault_series.h"
#include "platform/low_memory.h"
#include "platform/temp_file.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PlatformFaultsTest : public testing::Test {
protected:
    FaultLayer layer_{GetModuleHandleA(nullptr)};
};

TEST_F(PlatformFaultsTest, TemporaryFileIsThereOnlyWhereItsNameIsReturned) {
    std::string name;
    RunWithFaults({
        [&] {
            name = {};
            CleanWorkingFiles();
        },
        [&] {
            try {
                name = MakeTempFileName();
            } catch (const std::bad_alloc&) {
                name = {};
            }
        },
        [&](std::optional<Fault> failing) {
            EXPECT_TRUE(failing || !name.empty());
            if (name.empty()) {
                EXPECT_THAT(WorkingCopies(), IsEmpty());
            } else {
                EXPECT_THAT(WorkingCopies(), ElementsAre(name));
            }
        },
    });
}

TEST_F(PlatformFaultsTest, SlotsOfAPoolAreItsOwnAndApart) {
    // So many that the pool takes a second block.
    constexpr std::size_t kSlotBytes = 64;
    static std::array<std::size_t*, 800> slots;
    std::size_t count = 0;
    bool apart = true;
    const auto take = [](LowMemoryPool& pool) -> std::size_t* {
        try {
            return static_cast<std::size_t*>(pool.Allocate());
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    };
    RunWithFaults({
        [&] { count = 0; },
        [&] {
            LowMemoryPool pool(kSlotBytes);
            for (std::size_t& used = count; used < slots.size();) {
                slots[used] = take(pool);
                if (slots[used] == nullptr && (slots[used] = take(pool)) == nullptr) break;
                *slots[used] = used;
                ++used;
            }
            for (std::size_t number = 0; number < count; ++number) {
                apart = apart && *slots[number] == number;
                pool.Free(slots[number]);
            }
        },
        [&](std::optional<Fault> failing) {
            EXPECT_TRUE(apart);
            // One failed call costs nothing but itself.
            if (!failing || !failing->onwards) {
                EXPECT_EQ(slots.size(), count);
            }
        },
    });
}

}  // namespace
}  // namespace depot::test
