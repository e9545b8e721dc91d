// Operations on single files, named by display paths.
#pragma once

#include <string>

#include "model/depot.h"

namespace depot {

// Returns 1 when the file or folder exists in the depot, else 0.
int FileExists(CDepot& depot, const std::string& path);

}  // namespace depot
