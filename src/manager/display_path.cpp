#include "manager/display_path.h"

#include <algorithm>

#include "manager/display_path_text.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

std::string StorageRoot(CDepot& depot) {
    return depot.paths->GetActivePath();
}

// Turns the path of an entry of a directory depot into the entry's name; a folder depot's path
// stays as it is.
std::string MapToEntry(CDepot& depot, std::string path) {
    const CLDAPItems* const directory = depot.DirectoryConnection();
    return directory ? directory->PathToDN(path) : std::move(path);
}

}  // namespace

std::string BuildDisplayPath(CDepot& depot, const std::string& relative, PathForm form,
                             DepotName name) {
    const std::string prefix =
        DisplayPrefix(name == DepotName::kDisplay ? depot.displayName : depot.name);
    std::string path = prefix + relative;
    if (form == PathForm::kDisplay && !depot.name.empty()) return path;
    return MapToEntry(depot, ReplaceAllNoCase(path, prefix, StorageRoot(depot)));
}

bool MatchesPath(CDepot& depot, const std::string& path, PathForm form, DepotName name) {
    return MatchesPrefix(path, BuildDisplayPath(depot, {}, form, name));
}

std::string DisplayToStorage(CDepot& depot, const std::string& displayPath) {
    const std::string prefix = BuildDisplayPath(depot, {}, PathForm::kDisplay, DepotName::kKey);
    const std::string path = CompleteBareName(displayPath, prefix);
    return MapToEntry(depot, ReplaceAllNoCase(path, prefix, StorageRoot(depot)));
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

bool IsBesideDirectory(CDepot& depot, const std::string& path) {
    if (!IsFileSystemPath(path)) return false;
    if (depot.paths->ChoiceProbesDirectory()) return true;
    const CDepotPath* const location = depot.paths->ActiveLocation();
    return location != nullptr && location->type == kDirectoryLocation;
}

CDepot* FindDepotForPath(const CDepots& depots, const std::string& path, PathForm form,
                         DepotName name) {
    CDepot** const found = std::find_if(depots.begin(), depots.end(), [&](CDepot* depot) {
        return MatchesPath(*depot, path, form, name);
    });
    return found == depots.end() ? nullptr : *found;
}

CDepot* FindDepotHolding(const CDepots& depots, const std::string& path) {
    CDepot* const named = FindDepotForPath(depots, path, PathForm::kDisplay, DepotName::kKey);
    if (named != nullptr) return named;
    CDepot** const found = std::find_if(depots.begin(), depots.end(), [&](CDepot* depot) {
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
