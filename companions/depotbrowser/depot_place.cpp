#include "depotbrowser/depot_place.h"

#include <algorithm>

#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {

std::vector<ShownDepot> ShownDepots(const CDepots& depots) {
    std::vector<ShownDepot> shown;
    for (const CDepot* depot : depots) {
        const bool hidden = std::any_of(shown.begin(), shown.end(), [&](const ShownDepot& other) {
            return EqualsNoCase(other.ref.name, depot->name);
        });
        if (hidden) continue;
        shown.push_back({{depot->name, depot->rootKey},
                         WideFromAnsi(depot->displayName),
                         depot->icon,
                         depot == depots.defaultDepot});
    }
    return shown;
}

CDepot* FindDepot(const CDepots& depots, const DepotRef& ref) {
    const auto found = std::find_if(depots.begin(), depots.end(), [&](const CDepot* depot) {
        return depot->rootKey == ref.rootKey && EqualsNoCase(depot->name, ref.name);
    });
    return found == depots.end() ? nullptr : *found;
}

}  // namespace depot
