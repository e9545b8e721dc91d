#include "fileops/publish_plan.h"

#include "fileops/open_stores.h"
#include "fileops/profile_clients.h"
#include "manager/display_path.h"
#include "manager/resolve_item.h"
#include "platform/full_path.h"
#include "platform/paths.h"

namespace depot {
namespace {

// A display path can lead out of its depot by "..".
bool IsOutside(const CDepots& depots, const std::string& source, const StorePath& place) {
    if (FindDepotHolding(depots, source) == nullptr) return true;
    const std::optional<std::string> local = place.store->LocalPath(place.path);
    return local && FindDepotHolding(depots, FullPath(*local)) == nullptr;
}

std::optional<ItemKind> KindAt(OpenStores& stores, const StorePath& place) {
    ItemKind kind = ItemKind::kMissing;
    if (!stores.Hold(place) || !place.store->Look(place.path, kind)) return std::nullopt;
    return kind;
}

}  // namespace

std::vector<PlannedClient> PlanPublishing(DepotSession& session) {
    std::vector<PlannedClient> plan;
    if (!session.currentFile) return plan;
    const std::string folder = FolderOfProfile(session.currentFile->depotPath);
    OpenStores stores;
    const std::int32_t count = ClientCount(*session.currentFile);
    for (std::int32_t number = 1; number <= count; ++number) {
        const ProfileClient client = ClientOf(session, number);
        PlannedClient& planned = plan.emplace_back();
        planned.from = client.source;
        planned.kind = ItemKind::kMissing;
        if (!client.isResource) planned.to = folder + NamePart(client.entry);
        if (client.source.empty()) continue;
        CDepotItem item;
        ResolveItem(session.Depots(), client.source, item);
        const StorePath place = PlaceOf(item);
        planned.from = item.path;
        planned.isOutside = !client.isResource && IsOutside(session.Depots(), client.source, place);
        planned.kind = KindAt(stores, place);
    }
    return plan;
}

}  // namespace depot
