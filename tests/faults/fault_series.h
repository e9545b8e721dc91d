// Runs an operation again and again, each time with another system call failing.
#pragma once

#include <functional>
#include <optional>

#include "faults/fault_layer.h"

namespace depot::test {

// Which calls of a run fail.
struct Fault {
    FaultKind kind;
    bool onwards;  // not one alone, but some or all that follow it as well

    friend bool operator==(const Fault& fault, FaultKind kind) { return fault.kind == kind; }
};

// One operation in a world that is made anew for each run.
struct FaultyOperation {
    std::function<void()> prepare;
    std::function<void()> operate;
    // Looks at what a run left; `failing` is nothing for the run without a failing call.
    std::function<void(std::optional<Fault> failing)> verify;
};

// How many runs there are of each kind: the first half of them takes the first calls one by one,
// and the rest are spread over the calls that remain. With DEPOTINTR_THOROUGH set each call fails,
// also with a few that follow.
inline constexpr int kFewRuns = 12;
inline constexpr int kManyRuns = 24;

// Counts the calls of each kind that the operation makes, and then lets the n-th of them fail, once
// alone and once with all that follow. After each run nothing may be held that was not held before.
// The last run is one without a failing call.
void RunWithFaults(const FaultyOperation& operation, int runs = kFewRuns);

}  // namespace depot::test
