#include "faults/fault_series.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace depot::test {
namespace {

// A queue of the component may or may not need a block more than before; the pool of sessions grows
// by some at a time when it lost places while there was no memory at all.
constexpr std::ptrdiff_t kSpareBlocks = 2;
constexpr std::ptrdiff_t kSpareBlocksWithoutMemory = 8;

constexpr int kFew = 3;
constexpr int kAll = 1 << 20;

const char* Following(int count) {
    if (count == 1) return "";
    return count == kAll ? " and all that follow" : " and some that follow";
}

int Run(const FaultyOperation& operation, FaultKind kind, int number, int count) {
    const Holdings before = FaultLayer::Held();
    operation.prepare();
    FaultLayer::TakeBoxes();
    FaultLayer::Fail(kind, number, count);
    operation.operate();
    const int calls = FaultLayer::Stop();
    const bool noMemory = kind == FaultKind::kMemory && count > 1;
    EXPECT_EQ(
        "", FaultLayer::Held().Since(before, noMemory ? kSpareBlocksWithoutMemory : kSpareBlocks));
    operation.verify(number == 0 ? std::nullopt : std::optional(Fault{kind, count > 1}));
    return calls;
}

bool IsThorough() {
    return std::getenv("DEPOTINTR_THOROUGH") != nullptr;
}

// Fills the caches, and lets an exception be thrown without memory once: before it can use what it
// keeps for that, the C++ runtime makes itself a lock, for which it needs memory.
void WarmUp(const FaultyOperation& operation) {
    for (int number = 0; number < 12; ++number) {
        operation.prepare();
        FaultLayer::Fail(FaultKind::kMemory, number, 2);
        operation.operate();
        FaultLayer::Stop();
    }
}

}  // namespace

void RunWithFaults(const FaultyOperation& operation, int runs) {
    WarmUp(operation);
    const std::vector<int> counts =
        IsThorough() ? std::vector<int>{1, kFew, kAll} : std::vector<int>{1, kAll};
    for (const FaultKind kind : kFaultKinds) {
        const int calls = Run(operation, kind, 0, 0);
        std::printf("  %s: %d calls\n", NameOf(kind), calls);
        const int fine = IsThorough() ? calls : runs / 2;
        const int coarse = 1 + std::max(0, calls - fine) / (runs / 2);
        for (const int count : counts) {
            for (int number = 1; number <= calls; number += number < fine ? 1 : coarse) {
                SCOPED_TRACE(std::string(NameOf(kind)) + " call " + std::to_string(number) +
                             Following(count));
                Run(operation, kind, number, count);
                if (testing::Test::HasFatalFailure()) return;
            }
        }
    }
    Run(operation, FaultKind::kMemory, 0, 0);
}

}  // namespace depot::test
