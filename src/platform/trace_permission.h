// Where the trace may be written: the decisions, without a look at the system.
#pragma once

#include <cstdint>

namespace depot {

// What a process may do.
struct ProcessRights {
    bool isKnown = false;
    bool isElevated = false;
    std::uint32_t level = 0;  // the integrity level
};

// Whether the environment may name the file to write: anyone who is the user can set a variable,
// which would then write with rights that the user does not have. Unknown rights count as such.
bool MayFollowTheEnvironment(const ProcessRights& rights);

// What a path led to.
struct OpenedTarget {
    bool isOnDisk = false;  // neither a pipe nor a device
    bool isLink = false;
    std::uint32_t names = 1;
};

// Whether it is a file under one name. A link may lead to a file of somebody else's choice.
bool IsPlainFile(const OpenedTarget& target);

}  // namespace depot
