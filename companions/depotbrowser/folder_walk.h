// Looking through the folders of a depot for names.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "depotbrowser/depot_place.h"
#include "depotbrowser/entry_order.h"
#include "depotbrowser/name_search.h"
#include "manager/depot_session.h"

namespace depot {

// What is looked for and where.
struct WalkRequest {
    DepotRef depot;
    SearchWords words;  // in lower case
    std::string shown;  // the relative folder whose entries are known
    // Whether the result is still waited for; from any thread.
    std::function<bool()> isWanted;
};

// How far the walk is. At the beginning the depot's root is all that is open.
struct WalkState {
    bool succeeded = false;
    std::vector<std::string> open = {std::string()};  // relative folders that are to be looked at
    std::size_t examined = 0;
    std::size_t unreadable = 0;
    std::vector<BrowseEntry> found;  // by the step that led here
};

// Looks at the folders that are open, and at those found in them, for a moment. The walk is at its
// end when none is left open; folders too deep to be there on purpose are passed over, and after
// very many the rest is.
WalkState WalkOn(DepotSession& session, const WalkRequest& request, WalkState state);

}  // namespace depot
