// Copies of a file next to it, under the first free copy name.
#pragma once

#include <optional>
#include <string>

#include "manager/depot_session.h"

namespace depot {

// Copies `source`, a display path, to the first copy name that does not exist yet in its folder.
// Only the first depot whose display prefix begins the folder is tried. Returns the display path of
// the copy, or nothing when no depot matches, no name is free within 10,000 attempts, or the copy
// fails.
std::optional<std::string> MakeNumberedCopy(DepotSession& session, const std::string& source);

}  // namespace depot
