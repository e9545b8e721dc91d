// Deleting whole trees.
#pragma once

#include "depotctl/places.h"

namespace depot::ctl {

// Deletes a folder with all below it for good, file by file and with a progress bar on a terminal.
// Ends the command on a failure, and between two files when the user interrupts it: what was
// deleted by then is gone, the rest stays.
void RemoveTree(const Program& program, const Place& folder);

}  // namespace depot::ctl
