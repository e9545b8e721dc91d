// An allocation that fails while a test runs.
#pragma once

#include <cstddef>

#include "support/import_patch.h"

namespace depot::test {

// Lets the `number`-th allocation that a module makes on this thread fail, once, while this lives:
// the program's, or that of a loaded library.
class FailingAllocation {
public:
    explicit FailingAllocation(int number, HMODULE module = GetModuleHandleA(nullptr))
        : malloc_("malloc", &Allocate, module) {
        genuine_ = malloc_.Genuine();
        thread_ = GetCurrentThreadId();
        left_ = number;
    }

    // Whether it was asked for.
    static bool WasMade() { return left_ <= 0; }

private:
    using Malloc = void* (*)(std::size_t);

    static void* Allocate(std::size_t size) {
        const bool fails = GetCurrentThreadId() == thread_ && --left_ == 0;
        return fails ? nullptr : genuine_(size);
    }

    static inline Malloc genuine_ = nullptr;
    static inline DWORD thread_ = 0;
    static inline int left_ = 0;
    ImportPatch<Malloc> malloc_;
};

// Runs `operate` again and again, each time with another allocation of the module failing, and
// `verify` after each time, until there is no such allocation any more. `verify` is told whether
// one failed. Returns how many there were.
template <class Operate, class Verify>
int FailEachAllocation(HMODULE module, const Operate& operate, const Verify& verify) {
    for (int number = 1;; ++number) {
        bool failed = false;
        {
            const FailingAllocation failing(number, module);
            operate();
            failed = FailingAllocation::WasMade();
        }
        verify(failed);
        if (!failed) return number - 1;
    }
}

}  // namespace depot::test
