// The list of depots that a client goes through.
#pragma once

#include "DepotIntr.h"
#include "com/automation.h"
#include "model/depots.h"

namespace depot {

// Makes the list of what the depots are now. `handle` is that of the session by which the client
// has them, and by which it asks later whether one can be reached. Throws without memory.
UniqueCom<IDepotInfos> NewDepotInfos(const CDepots& depots, LONG_PTR handle);

}  // namespace depot
