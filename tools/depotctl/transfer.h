// Copying files and trees between any two places.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "depotctl/places.h"

namespace depot::ctl {

struct TransferRules {
    ItemKind kind;  // the source's
    ExistingEntries existing;
    SourceFate fate = SourceFate::kStays;
};

// Copies a file, or a folder with all below it, to the place `to`, with a progress bar on a
// terminal. With kRefuse nothing is copied when a file is there already. Ends the command on a
// failure and when the user interrupts it; what was copied by then stays. Links to folders are left
// out of a tree: all else is copied before the command ends with their number. A source that is to
// be moved is removed after it was copied, and must be copied whole: with links nothing is copied.
// Returns the number of files.
std::uint32_t Transfer(const Program& program, const Place& from, const Place& to,
                       const TransferRules& rules);

// Refuses to copy or move a folder into itself.
void RequireApart(const Place& from, const Place& to);

// Makes a folder.
void MakeFolder(const Place& place, FoldersAbove above);

// Refuses a name that in a directory would turn a file into a folder or the other way round.
void RequireFittingName(const Place& place, ItemKind kind);

// Where something is to be, and what is there now.
struct Target {
    Place place;
    ItemKind there = ItemKind::kMissing;
};

// The place that `to` names for a copy of `from`: a folder that is there, or a path that ends in a
// separator, takes it under its own name. The folder above must be there.
Target TargetOf(Places& places, const Place& from, const std::string& to);

// The same for each of a selection; several need a folder that is there.
std::vector<Target> TargetsOf(Places& places, const Selection& from, const std::string& to);

// Refuses a target that is there: a file unless it may be replaced, and another kind in any case.
void RequireFree(const Target& to, ItemKind kind, bool force);

}  // namespace depot::ctl
