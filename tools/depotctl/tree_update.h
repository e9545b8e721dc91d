// Making one tree as another one is, step by step.
#pragma once

#include <vector>

#include "depotctl/steps.h"
#include "depotctl/transfer.h"
#include "depotctl/tree_difference.h"

namespace depot::ctl {

// Refuses a copy of the left side that would replace files of the right one.
void RequireNothingReplaced(const TreeDifference& difference);

// What copying the left side of a difference onto the right one takes. Fails where a file stands in
// the way of a folder, or a folder in that of a file.
std::vector<Step> CopySteps(const TreeDifference& difference);

// Copies what is new or different, a new folder with all below it at once, and ends the command
// afterwards when something had to be left out of the left tree.
std::uint32_t CopyDifferent(const Program& program, const TreeDifference& difference);

// What deleting what only the right side has takes.
std::vector<Step> RemovalSteps(const TreeDifference& difference);

// Ends the command unless all that only the right side has is known to be missing on the left: with
// something that a listing left out, or that is there after all, nothing may be deleted.
void RequireSurplus(const TreeDifference& difference);

// Deletes what only the right side has: what was listed and nothing else, a folder only when it is
// empty by then. Returns how many files and folders were deleted.
std::size_t RemoveSurplus(const TreeDifference& difference);

}  // namespace depot::ctl
