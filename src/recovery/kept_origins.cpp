#include "recovery/kept_origins.h"

#include <algorithm>
#include <new>
#include <vector>

#include "directory/comparable_dn.h"
#include "directory/shared_credentials.h"
#include "offline/offline_location.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

// No file lies deeper below a base, or has a longer name; what a record says may be of any length.
constexpr std::size_t kMostLevels = 256;
constexpr std::size_t kLongestDN = 8192;

std::string Utf8Of(const std::string& text) {
    return Utf8FromWide(WideFromAnsi(text));
}

// The names from the base down to the entry; nothing for an entry that is not below it.
std::optional<std::vector<std::string>> NamesBelow(const LocationSchema& schema,
                                                   const std::string& base, const std::string& dn) {
    const std::string wanted = ComparableDN(base);
    std::vector<std::string> names;
    std::string rest = dn;
    while (!rest.empty() && names.size() < kMostLevels) {
        if (ComparableDN(rest) == wanted && !names.empty()) {
            std::reverse(names.begin(), names.end());
            return names;
        }
        const auto entry = schema.SplitEntryName(rest);
        names.push_back(entry ? entry->name : std::string());
        rest = std::string(ParentDN(rest));
    }
    return std::nullopt;
}

// Where an entry lies in a location of a directory; nothing for one outside of it.
std::optional<std::string> DisplayPathOf(CDepot& depot, CDepotPath& location,
                                         const std::string& dn) {
    const std::string base = RemoveTrailingBackslash(ExpandedPath(location));
    if (base.empty() || dn.empty() || dn.size() > kLongestDN) return std::nullopt;
    const CLDAPItems directory(&location);
    const LocationSchema& schema = directory.Schema();
    const auto names = NamesBelow(schema, schema.PathToDN(base), dn);
    if (!names) return std::nullopt;
    std::string below;
    for (const std::string& name : *names) below += (below.empty() ? "" : "\\") + name;
    // Some entries have no path: their names, or attributes, are none that a depot makes.
    if (ComparableDN(schema.PathToDN(base + "\\" + below)) != ComparableDN(dn)) return dn;
    return "<" + depot.name + ">\\" + below;
}

// How well a location fits: 0 is not at all.
int FitOf(const OriginRecord& origin, CDepot& depot, CDepotPath& location) {
    if (!BelongsTo(origin, depot, location)) return 0;
    const bool samePlace = Utf8Of(OfflinePlaceOf(location)) == origin.place;
    const auto key = ExactAnsiFromUtf8(origin.depot);
    const bool sameDepot = key && EqualsNoCase(depot.name, *key);
    return 1 + (sameDepot ? 1 : 0) + (samePlace ? 2 : 0);
}

}  // namespace

bool BelongsTo(const OriginRecord& origin, CDepot& depot, CDepotPath& location) {
    if (!location.IsDirectory()) return false;
    const auto dn = ExactAnsiFromUtf8(origin.dn);
    // The place has the location's path, which the first call expands.
    if (!dn || !DisplayPathOf(depot, location, *dn)) return false;
    if (Utf8Of(OfflinePlaceOf(location)) == origin.place) return true;
    // What waits belongs to the place alone, and names no server beside it.
    return !origin.server.empty() && Utf8Of(ServerKeyOf(location)) == origin.server;
}

std::optional<KeptEntry> FindKeptEntry(CDepots& depots, const OriginRecord& origin) {
    std::optional<KeptEntry> found;
    int best = 0;
    for (std::size_t at = 0; at < depots.Count(); ++at) {
        CDepot& depot = *depots.At(at);
        for (std::size_t index = 0; index < depot.paths->Count(); ++index) {
            CDepotPath& location = *depot.paths->At(index);
            const int fit = FitOf(origin, depot, location);
            if (fit <= best) continue;
            best = fit;
            const std::string dn = ExactAnsiFromUtf8(origin.dn).value();
            found = {at, index, dn, DisplayPathOf(depot, location, dn).value()};
        }
    }
    return found;
}

std::unique_ptr<CDepot> DepotOf(CDepots& depots, const KeptEntry& entry) {
    std::unique_ptr<CDepot> depot = depots.At(entry.depot)->Clone();
    if (!depot) throw std::bad_alloc();
    depot->paths->RemoveAllBut(depot->paths->At(entry.location));
    return depot;
}

}  // namespace depot
