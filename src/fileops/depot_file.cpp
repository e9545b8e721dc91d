#include "fileops/depot_file.h"

#include "manager/display_path.h"

namespace depot {

int FileExists(CDepot& depot, const std::string& path) {
    const CDepotPath* const location = depot.paths->ActiveLocation();
    if (location == nullptr || location->type == kDirectoryLocation) return 0;
    return PathExists(DisplayToStorage(depot, path)) ? 1 : 0;
}

}  // namespace depot
