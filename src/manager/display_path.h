// Display paths of depots: finding a path's depot, and converting to and from storage paths.
//
// A display path is a depot's name in angle brackets, a backslash and a relative path. It is never
// parsed into name and rest: it is only compared, without regard to case, with each depot's prefix.
// A storage path is what becomes of it when the prefix is replaced by the depot's root.
#pragma once

#include <optional>
#include <string>

#include "model/depot_item.h"
#include "model/depots.h"
#include "store/store.h"

namespace depot {

enum class PathForm { kDisplay, kStorage };
enum class DepotName { kKey, kDisplay };

// Returns the depot's prefix followed by `relative`; in storage form the prefix is replaced by the
// depot's root. A depot without a key name has no display form: it always gives the storage form.
std::string BuildDisplayPath(CDepot& depot, const std::string& relative, PathForm form,
                             DepotName name);

// Whether the path begins with the depot's prefix in the given form.
bool MatchesPath(CDepot& depot, const std::string& path, PathForm form, DepotName name);

// Returns the storage path of a display path. A bare bracketed name stands for the root.
//
// Kept: every occurrence of the prefix is replaced, also later in the path.
std::string DisplayToStorage(CDepot& depot, const std::string& displayPath);

// Returns the display path of a storage path; a path that is not under the depot's root comes back
// unchanged. Every occurrence of the root is replaced.
std::string StorageToDisplay(CDepot& depot, const std::string& storagePath);

// Returns the depot's own store, and the storage path there, of a path that came with the depot;
// nothing for a path of the file system that no depot claimed, where the depot keeps its files
// elsewhere. A depot that would have to ask a server for its place is not asked.
std::optional<StorePath> OwnPlaceOf(CDepot& depot, const std::string& path);

// Returns the store that holds a path, and the storage path there: the depot's own, else the file
// system.
StorePath PlaceOf(CDepot& depot, const std::string& path);

// The same for an item; one of no depot is the file system's.
StorePath PlaceOf(const CDepotItem& item);

// Whether the path is the depot's root, or a folder that holds the root.
bool HoldsRoot(CDepot& depot, const std::string& path);

// Returns the depot's "Profile" folder in the given form.
std::string ProfileFolder(CDepot& depot, PathForm form);

// Returns the first depot, in list order, whose prefix in the given form begins the path, or null.
CDepot* FindDepotForPath(const CDepots& depots, const std::string& path, PathForm form,
                         DepotName name);

// Returns the depot that holds the path: the first that matches its display form, else the first
// that matches its storage form, else null. A file-system path never makes a depot connect to a
// directory.
CDepot* FindDepotHolding(const CDepots& depots, const std::string& path);

// Replaces the prefix made of a depot's display name by the one made of its key name. Without a
// `depot` the first one that matches serves; when none does, the path comes back unchanged.
std::string FriendlyToCanonical(const CDepots& depots, const std::string& path,
                                CDepot* depot = nullptr);

}  // namespace depot
