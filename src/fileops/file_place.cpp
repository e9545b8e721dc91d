#include "fileops/file_place.h"

#include "manager/display_path.h"
#include "store/folder_store.h"

namespace depot {

StorePath PlaceOf(CDepot& depot, const std::string& path) {
    if (IsBesideDirectory(depot, path)) return {&FolderStore::Instance(), path};
    // The path first: it chooses the location.
    std::string storage = DisplayToStorage(depot, path);
    return {&depot.ActiveStore(), std::move(storage)};
}

StorePath PlaceOf(const CDepotItem& item) {
    if (item.depot) return PlaceOf(*item.depot, item.path);
    return {&FolderStore::Instance(), item.path};
}

bool HoldsRoot(CDepot& depot, const std::string& path) {
    if (IsBesideDirectory(depot, path)) return false;
    const std::string root = BuildDisplayPath(depot, {}, PathForm::kStorage, DepotName::kKey);
    if (root.empty()) return false;
    const StorePath place = PlaceOf(depot, path);
    return place.store->IsSame(place.path, root) || place.store->IsInside(root, place.path);
}

}  // namespace depot
