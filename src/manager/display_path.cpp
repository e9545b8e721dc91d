#include "manager/display_path.h"

#include <algorithm>

#include "manager/display_path_text.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "store/folder_store.h"

namespace depot {
namespace {

std::string NamePrefix(const CDepot& depot, DepotName name) {
    return DisplayPrefix(name == DepotName::kDisplay ? depot.displayName : depot.name);
}

std::string StorageRoot(CDepot& depot) {
    return depot.paths->GetActivePath();
}

// Returns the path with the prefix replaced by the depot's root, as the depot's store names it.
std::string PutUnderRoot(CDepot& depot, const std::string& path, const std::string& prefix) {
    // The root first: it chooses the location.
    const std::string placed = ReplaceAllNoCase(path, prefix, StorageRoot(depot));
    return depot.ActiveStore().PathOf(placed);
}

}  // namespace

std::string BuildDisplayPath(CDepot& depot, const std::string& relative, PathForm form,
                             DepotName name) {
    const std::string prefix = NamePrefix(depot, name);
    std::string path = prefix + relative;
    if (form == PathForm::kDisplay && !depot.name.empty()) return path;
    return PutUnderRoot(depot, path, prefix);
}

bool MatchesPath(CDepot& depot, const std::string& path, PathForm form, DepotName name) {
    return MatchesPrefix(path, BuildDisplayPath(depot, {}, form, name));
}

std::string DisplayToStorage(CDepot& depot, const std::string& displayPath) {
    const std::string prefix = BuildDisplayPath(depot, {}, PathForm::kDisplay, DepotName::kKey);
    return PutUnderRoot(depot, CompleteBareName(displayPath, prefix), prefix);
}

std::string StorageToDisplay(CDepot& depot, const std::string& storagePath) {
    // A path that cannot lie under any root stays as it is: no server is asked for the root.
    if (!depot.paths->MayHold(storagePath)) return storagePath;
    const std::string prefix = BuildDisplayPath(depot, {}, PathForm::kDisplay, DepotName::kKey);
    return ReplaceAllNoCase(storagePath, StorageRoot(depot), prefix);
}

std::string ProfileFolder(CDepot& depot, PathForm form) {
    if (form == PathForm::kStorage) {
        return BuildDisplayPath(depot, "Profile", form, DepotName::kKey);
    }
    if (depot.profileFolder.empty()) {
        depot.profileFolder = BuildDisplayPath(depot, "Profile", form, DepotName::kKey);
    }
    return depot.profileFolder;
}

std::optional<StorePath> OwnPlaceOf(CDepot& depot, const std::string& path) {
    const bool isBeside = IsFileSystemPath(path) &&
                          (depot.paths->ChoiceProbesDirectory() || !depot.ActiveStore().IsLocal());
    if (isBeside) return std::nullopt;
    // The path first: it chooses the location.
    std::string storage = DisplayToStorage(depot, path);
    return StorePath{&depot.ActiveStore(), std::move(storage)};
}

StorePath PlaceOf(CDepot& depot, const std::string& path) {
    std::optional<StorePath> own = OwnPlaceOf(depot, path);
    return own ? *std::move(own) : StorePath{&FolderStore::Instance(), path};
}

StorePath PlaceOf(const CDepotItem& item) {
    if (item.depot) return PlaceOf(*item.depot, item.path);
    return {&FolderStore::Instance(), item.path};
}

bool HoldsRoot(CDepot& depot, const std::string& path) {
    const std::optional<StorePath> place = OwnPlaceOf(depot, path);
    if (!place) return false;
    const std::string root = BuildDisplayPath(depot, {}, PathForm::kStorage, DepotName::kKey);
    return !root.empty() &&
           (place->store->IsSame(place->path, root) || place->store->IsInside(root, place->path));
}

CDepot* FindDepotForPath(const CDepots& depots, const std::string& path, PathForm form,
                         DepotName name) {
    for (std::size_t index = 0; index < depots.Count(); ++index) {
        const CDepot& definition = depots.DefinitionAt(index);
        // What the names alone decide takes no copies of the depots before the one that is meant.
        const bool isNamed = form == PathForm::kDisplay && !definition.name.empty();
        const bool matches = isNamed ? MatchesPrefix(path, NamePrefix(definition, name))
                                     : MatchesPath(*depots.At(index), path, form, name);
        if (matches) return depots.At(index);
    }
    return nullptr;
}

CDepot* FindDepotHolding(const CDepots& depots, const std::string& path) {
    CDepot* const named = FindDepotForPath(depots, path, PathForm::kDisplay, DepotName::kKey);
    if (named != nullptr) return named;
    const auto found = std::find_if(depots.begin(), depots.end(), [&](CDepot* depot) {
        return depot->paths->MayHold(path) &&
               MatchesPath(*depot, path, PathForm::kStorage, DepotName::kKey);
    });
    return found == depots.end() ? nullptr : *found;
}

std::string FriendlyToCanonical(const CDepots& depots, const std::string& path, CDepot* depot) {
    if (depot == nullptr) {
        depot = FindDepotForPath(depots, path, PathForm::kDisplay, DepotName::kDisplay);
    }
    if (depot == nullptr) return path;
    return ReplaceAllNoCase(path, DisplayPrefix(depot->displayName), DisplayPrefix(depot->name));
}

}  // namespace depot
