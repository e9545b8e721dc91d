// Listing one folder of a depot.
#pragma once

#include <cstdint>
#include <string>

#include "model/depot_items.h"

namespace depot {

// What marks a folder among an item's kind flags.
inline constexpr std::uint32_t kFolderKind = 64;

// Appends an item for each entry of the folder that `folderItem` names to the list: every folder,
// and the files that pass `filter` unless `foldersOnly` is set. An empty filter is taken from the
// last part of the item's path. `subPath` is joined to the folder. Nothing is sorted, no subfolder
// is entered, and what cannot be listed is simply missing. What is left out because of its name is
// counted in the list and in the trace.
//
// Returns the number of items appended for a folder of the file system.
// Kept: for a folder of a directory it returns the count of the whole list.
int Enumerate(CDepotItems& list, const CDepotItem* folderItem, const std::string& filter,
              const std::string& subPath, bool foldersOnly);

// Takes the items out of the list that are not of the wanted file type, as SurvivorsOfTypeFilter
// decides.
void KeepFileType(CDepotItems& list, std::int32_t wantedType);

}  // namespace depot
