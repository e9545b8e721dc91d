#include "manager/display_path.h"

#include <algorithm>

#include "manager/display_path_text.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

std::string NamePrefix(const CDepot& depot, DepotName name) {
    return DisplayPrefix(name == DepotName::kDisplay ? depot.displayName : depot.name);
}

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
    const std::string prefix = NamePrefix(depot, name);
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
