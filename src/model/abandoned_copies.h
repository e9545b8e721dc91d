// Working copies of processes that ended without a chance to store or to delete them.
#pragma once

#include <string>

namespace depot {

// Looks for journals in the folder that no running process holds, and does away with the working
// copies that they name: one whose bytes are not those that were fetched is kept among the
// recovered files first, under its entry's name. The trace notes each; nothing is shown.
//
// Only what this user's journals say is touched, and only files that no process has open. What
// cannot be kept or deleted now stays, with its record, for the next time. Several processes may do
// this at once: each copy is dealt with once.
void SweepAbandonedCopies(const std::string& folder);

}  // namespace depot
