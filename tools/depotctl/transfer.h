// Copying files and trees between any two places.
#pragma once

#include <cstdint>

#include "depotctl/places.h"

namespace depot::ctl {

struct TransferRules {
    ItemKind kind;  // the source's
    ExistingEntries existing;
    SourceFate fate = SourceFate::kStays;
};

struct TransferResult {
    std::uint32_t files = 0;
    std::uint64_t bytes = 0;
};

// Copies a file, or a folder with all below it, to the place `to`, with a progress bar on a
// terminal. With kRefuse nothing is copied when a file is there already. Ends the command on a
// failure and when the user interrupts it; what was copied by then stays. Links to folders are left
// out of a tree: all else is copied before the command ends with their number. A source that is to
// go is removed after it was copied, and must be copied whole: with links nothing is copied.
TransferResult Transfer(const Program& program, const Place& from, const Place& to,
                        const TransferRules& rules);

// Deletes a file or a whole folder for good.
void Remove(const Place& place, ItemKind kind);

// Refuses a name that in a directory would turn a file into a folder or the other way round.
void RequireFittingName(const Place& place, ItemKind kind);

}  // namespace depot::ctl
