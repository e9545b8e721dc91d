// Where a path that came with a depot really leads.
#pragma once

#include <string>

#include "model/depot.h"
#include "model/depot_item.h"
#include "store/store.h"

namespace depot {

// Returns the store that holds a path, and the storage path there. A path of the file system is the
// file system's, also when it came with a directory depot because no other depot claimed it.
StorePath PlaceOf(CDepot& depot, const std::string& path);

// The same for an item; one of no depot is the file system's.
StorePath PlaceOf(const CDepotItem& item);

// Tells whether the path is the depot's root, or a folder that holds the root.
bool HoldsRoot(CDepot& depot, const std::string& path);

}  // namespace depot
