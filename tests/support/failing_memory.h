// Memory that runs out, for what must then still be true.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "support/import_patch.h"
#include "support/leak_counts.h"

namespace depot::test {

// While it lives, one of the allocations that its thread makes in a module fails, be it this
// program or a loaded library: the `number`-th, counted from 1, or none for 0. There is one object
// at a time.
class FailingMemory {
public:
    explicit FailingMemory(int number, HMODULE module = GetModuleHandleA(nullptr))
        : patch_("malloc", &Allocate, module) {
        genuine_ = patch_.Genuine();
        thread_ = GetCurrentThreadId();
        failing_ = number;
        asked_ = 0;
    }
    ~FailingMemory() {
        thread_ = 0;
        failing_ = 0;
    }
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    // How often memory was asked for until now.
    static int Asked() { return asked_; }
    // Whether the allocation that was to fail has failed.
    static bool RanOut() { return failing_ != 0 && asked_ >= failing_; }

private:
    using Allocator = void*(__cdecl*)(std::size_t bytes);

    static void* __cdecl Allocate(std::size_t bytes) {
        const bool fails = GetCurrentThreadId() == thread_ && ++asked_ == failing_;
        return fails ? nullptr : genuine_(bytes);
    }

    static inline Allocator genuine_ = nullptr;
    static inline DWORD thread_ = 0;
    static inline int failing_ = 0;
    static inline int asked_ = 0;

    const ImportPatch<Allocator> patch_;
};

// Runs `call` again and again, each time with another allocation of the module failing, until there
// is none left to fail; the call can ask FailingMemory whether one failed. Returns how many there
// were. Nothing is done before the first failing call.
template <class Call>
int FailEachAllocation(const Call& call, HMODULE module = GetModuleHandleA(nullptr)) {
    for (int number = 1;; ++number) {
        const FailingMemory memory(number, module);
        call();
        if (!FailingMemory::RanOut()) return number - 1;
    }
}

// What repeated calls did, each of which ran out of memory one allocation later than the one
// before, until one got all it asked for.
struct MemoryRun {
    int failures = 0;      // calls that ran out
    int exceptions = 0;    // those of them that std::bad_alloc ended
    std::size_t left = 0;  // heap blocks and handles that stayed behind all calls together
};

// Runs `call` in that way; it may let std::bad_alloc out. What is done before the first failing
// call fills what the call and the runtime keep for later on purpose.
template <class Call>
MemoryRun RunOutOfMemory(const Call& call) {
    for (int round = 0; round < 3; ++round) {
        call();
        try {
            throw std::bad_alloc();
        } catch (const std::bad_alloc&) {
        }
    }
    MemoryRun run;
    run.left = LeftBehindAgain([&] {
        run.exceptions = 0;
        run.failures = FailEachAllocation([&] {
            try {
                call();
            } catch (const std::bad_alloc&) {
                ++run.exceptions;
            }
        });
    });
    return run;
}

// Checks that every call that ran out of memory was ended by the exception, and left nothing.
template <class Call>
void ExpectEachFailureThrows(const Call& call) {
    const MemoryRun run = RunOutOfMemory(call);
    EXPECT_LT(0, run.failures);
    EXPECT_EQ(run.failures, run.exceptions);
    EXPECT_EQ(0u, run.left);
}

// Checks that the call never throws for want of memory, and leaves nothing.
template <class Call>
void ExpectNoFailureThrows(const Call& call) {
    const MemoryRun run = RunOutOfMemory(call);
    EXPECT_LT(0, run.failures);
    EXPECT_EQ(0, run.exceptions);
    EXPECT_EQ(0u, run.left);
}

}  // namespace depot::test
