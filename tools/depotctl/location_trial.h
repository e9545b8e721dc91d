// Trying one location of a depot, from its macros to its limits.
#pragma once

#include "config/depot_path.h"
#include "depotctl/definition.h"

namespace depot::ctl {

enum class Trial { kOffline, kOnline };

// Tries as much as the location allows; the last finding says why it ends, or that nothing is in
// the way. Asks at a terminal for credentials that a server wants. Nothing is left behind.
Findings TryStepByStep(CDepotPath& location, Trial trial);

}  // namespace depot::ctl
