// A process that uses a file of the depot "Work" and is killed at one of its system calls.
#pragma once

#include <string>
#include <vector>

#include "faults/fault_layer.h"

namespace depot::test {

struct ProfileValue {
    std::string section, key, value;
};

struct KilledUse {
    FaultKind kind;
    int number;  // of the call that is its last; 0 for none
    std::string file = "a.kra";
    std::vector<ProfileValue> values{};  // that it writes; it only reads without any
};

// The kinds of calls that matter to what is on the disk and in the directory.
inline constexpr FaultKind kKillingKinds[] = {FaultKind::kFile, FaultKind::kObject,
                                              FaultKind::kDirectory};

// What became of the process.
struct KilledEnd {
    int exitCode;

    bool WasKilled() const;
    // Whether it came to its end and everything was stored, or waits.
    bool IsAcknowledged() const;
    // How many calls of the kind one made that was acknowledged.
    int Calls() const;
};

// Uses the file in a process of its own, with the definition that is in the registry now.
KilledEnd UseUntilKilled(const KilledUse& use);

}  // namespace depot::test
