#include "fileops/file_place.h"

#include "fileops/depot_file.h"
#include "fileops/transfer_source.h"
#include "manager/display_path.h"
#include "platform/paths.h"
#include "platform/same_file.h"
#include "store/folder_store.h"

namespace depot {

StorePath PlaceOf(CDepot& depot, const std::string& path) {
    if (IsBesideDirectory(depot, path)) return {&FolderStore::Instance(), path};
    // The path first: it chooses the location.
    std::string storage = DisplayToStorage(depot, path);
    return {&depot.ActiveStore(), std::move(storage)};
}

CLDAPItems* DirectoryOf(CDepot& depot, const std::string& path) {
    return IsBesideDirectory(depot, path) ? nullptr : depot.DirectoryConnection();
}

std::string StorageOf(CDepot& depot, const std::string& path) {
    return IsBesideDirectory(depot, path) ? path : DisplayToStorage(depot, path);
}

bool HoldsRoot(CDepot& depot, const std::string& path) {
    if (IsBesideDirectory(depot, path)) return false;
    const std::string storage = DisplayToStorage(depot, path);
    const std::string root = BuildDisplayPath(depot, {}, PathForm::kStorage, DepotName::kKey);
    if (root.empty()) return false;
    if (const CLDAPItems* const directory = depot.DirectoryConnection()) {
        return IsSameEntry(*directory, storage, root) || IsBelowEntry(*directory, root, storage);
    }
    return IsSameFile(storage, root) || IsInsideFolder(root, storage);
}

}  // namespace depot
