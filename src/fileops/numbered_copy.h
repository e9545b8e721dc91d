// Copies of a file next to it, under the first free copy name.
#pragma once

#include <optional>
#include <string>

#include "manager/depot_session.h"
#include "model/copy_name.h"

namespace depot {

// Copies `source`, a display path, to the first copy name that does not exist yet in its folder.
// Only the first depot whose display prefix begins the folder is tried. Returns the display path of
// the copy, or nothing when no depot matches, no name is free within kMaxCopyNames attempts, or the
// copy fails, as it does when somebody else makes a file of that name meanwhile: nothing is
// replaced.
std::optional<std::string> MakeNumberedCopy(CDepots& depots, const std::string& source,
                                            CopyNameStyle style);

// The same among the session's depots, in the session's style.
std::optional<std::string> MakeNumberedCopy(DepotSession& session, const std::string& source);

// Returns the display path that the copy would have, or nothing as above, and copies nothing.
std::optional<std::string> FindNumberedCopy(DepotSession& session, const std::string& source);

}  // namespace depot
