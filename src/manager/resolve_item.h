// Finding out what a path that a client gave stands for.
#pragma once

#include <string>

#include "model/depot_item.h"
#include "model/depots.h"

namespace depot {

enum class LoosePaths { kKeep, kPlace };
enum class FriendlyNames { kIgnore, kTranslate };

// Fills `item` with the display path and the depot of `path`. A path that no depot claims, in its
// display form or in its storage form, belongs to the default depot; `kPlace` first puts it into
// that depot's "Profile" folder. `kTranslate` accepts depots by their display names.
void ResolveItem(CDepots& depots, const std::string& path, CDepotItem& item,
                 LoosePaths loosePaths = LoosePaths::kKeep,
                 FriendlyNames friendlyNames = FriendlyNames::kIgnore);

// Returns the display path that a bare profile name such as "office.kra" has in a depot's "Profile"
// folder: the file itself when it is there, else the name below the subfolder named after its
// extension when there is one, with the default extension appended to a name without a known one.
std::string PlaceLoosePath(CDepot& depot, const std::string& path);

}  // namespace depot
