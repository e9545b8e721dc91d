// What publishing a Skein profile would copy, and from where.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "manager/depot_session.h"
#include "store/store.h"

namespace depot {

struct PlannedClient {
    std::string from;  // a display path where a depot holds it
    std::string to;    // empty for a client of the resource folder, which is not copied
    // What there is; nothing where its depot cannot be reached. Only a file is copied.
    std::optional<ItemKind> kind;
    // It would be copied from outside of every depot, "." and ".." resolved. A link below a depot's
    // root is not followed.
    bool isOutside = false;
};

// Looks at what publishing the session's current file would copy, in the order of its list, and
// changes nothing.
std::vector<PlannedClient> PlanPublishing(DepotSession& session);

}  // namespace depot
