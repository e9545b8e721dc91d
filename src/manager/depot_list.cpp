#include "manager/depot_list.h"

#include <algorithm>

namespace depot {

void LoadDepotList(CDepots& depots, const std::string& keyPath) {
    if (keyPath.empty()) return;
    depots.ownsItems = true;
    depots.Load(keyPath);
}

CDepots& GetFilteredView(CDepots& depots, std::uint32_t excludeMask, bool rebuild) {
    if (!depots.filteredView) {
        depots.filteredView = std::make_unique<CDepots>();
        rebuild = true;
    }
    CDepots& view = *depots.filteredView;
    if (!rebuild) return view;
    view.RemoveAll(false);
    for (CDepot* depot : depots) {
        if ((depot->contains & excludeMask) == 0) view.Add(depot, false);
    }
    return view;
}

CDepot* GetDefaultDepot(CDepots& depots, std::uint32_t excludeMask) {
    const CDepots& view = GetFilteredView(depots, excludeMask, true);
    if (view.Count() == 0) return nullptr;
    const bool holdsDefault =
        std::find(view.begin(), view.end(), depots.defaultDepot) != view.end();
    return holdsDefault ? depots.defaultDepot : view.At(0);
}

}  // namespace depot
