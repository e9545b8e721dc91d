// Where a path that came with a depot really leads.
#pragma once

#include <string>

#include "model/depot.h"
#include "store/store.h"

namespace depot {

// Returns the store that holds a path, and the storage path there. A path of the file system is the
// file system's, also when it came with a directory depot because no other depot claimed it.
StorePath PlaceOf(CDepot& depot, const std::string& path);

// Returns the connection object of the directory that holds the path; null for a path of the file
// system. Such a path may come with a directory depot, when no other depot claimed it.
CLDAPItems* DirectoryOf(CDepot& depot, const std::string& path);

// Returns the path's storage path: a path of the file system, or the name of an entry.
std::string StorageOf(CDepot& depot, const std::string& path);

// Tells whether the path is the depot's root, or a folder that holds the root.
bool HoldsRoot(CDepot& depot, const std::string& path);

}  // namespace depot
