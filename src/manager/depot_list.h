// The list of depots that a session works with, and its default depot.
#pragma once

#include <cstdint>
#include <string>

#include "model/depots.h"

namespace depot {

// The registry key, in both hives, below which the depots are defined.
inline constexpr char kDepotsKey[] = "Software\\Quillon\\Farrow\\Depots";

// Empties the list and reads the depots below `keyPath` into it.
void LoadDepotList(CDepots& depots, const std::string& keyPath);

// Returns the depots none of whose content bits is in `excludeMask`, in list order; a mask of 0
// takes every depot. The view belongs to the list and is rebuilt only when asked or when new.
CDepots& GetFilteredView(CDepots& depots, std::uint32_t excludeMask, bool rebuild);

// Returns the list's default depot, or the first depot of the rebuilt view when the mask leaves the
// default one out; null when the mask leaves out every depot.
CDepot* GetDefaultDepot(CDepots& depots, std::uint32_t excludeMask);

}  // namespace depot
