// Deleting files and trees.
#pragma once

#include "depotctl/places.h"

namespace depot::ctl {

// Deletes a file, or a folder with all below it, for good: a folder file by file, and with a
// progress bar on a terminal. Ends the command on a failure, and between two files when the user
// interrupts it: what was not deleted by then stays.
void Remove(const Program& program, const Place& place, ItemKind kind);

}  // namespace depot::ctl
