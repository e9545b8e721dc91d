#include <algorithm>

#include "depotctl/definition_checks.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

std::string Bracketed(const std::string& name) {
    return "<" + name + ">";
}

std::string HiveOf(const DepotSummary& depot) {
    return depot.isForUser ? "the user's" : "the machine's";
}

std::string WithBackslash(const std::string& path) {
    return EndsInAscii(path, '\\') ? path : path + "\\";
}

bool IsInside(const std::string& path, const std::string& folder) {
    const std::string inner = WithBackslash(path), outer = WithBackslash(folder);
    return inner.size() >= outer.size() && SameName(inner.substr(0, outer.size()), outer);
}

void CompareKeys(const DepotSummary& first, const DepotSummary& second, Findings& ofSecond) {
    if (!SameName(first.key, second.key)) return;
    ofSecond.push_back(Wrong("Key",
                             HiveOf(first) +
                                 " depot of the same key stands before it, and every path by that "
                                 "key goes there",
                             "remove one of them, or give it another key"));
}

// A path by a display name goes to the first depot that bears it; by a key it goes to the key's.
void CompareNames(const DepotSummary& first, const DepotSummary& second, Findings& ofSecond) {
    if (SameName(first.key, second.key)) return;
    if (SameName(first.displayName, second.displayName)) {
        ofSecond.push_back(
            Wrong("DisplayName",
                  "users cannot tell it from " + Bracketed(first.key) + ", which has the same name",
                  "choose another name"));
        return;
    }
    const DepotSummary* const pairs[][2] = {{&first, &second}, {&second, &first}};
    for (const auto& [named, keyed] : pairs) {
        if (!SameName(named->displayName, keyed->key)) continue;
        ofSecond.push_back(Wrong("DisplayName",
                                 "the name of " + Bracketed(named->key) + " is the key of " +
                                     Bracketed(keyed->key) + "; paths by names go astray",
                                 "choose another name"));
    }
}

void CompareRoots(const DepotSummary& first, const DepotSummary& second, Findings& ofSecond) {
    for (const std::string& path : second.roots) {
        for (const std::string& other : first.roots) {
            if (path.empty() || other.empty()) continue;
            const bool inside = IsInside(path, other);
            if (!inside && !IsInside(other, path)) continue;
            const bool same = inside && IsInside(other, path);
            ofSecond.push_back(Remark("Path",
                                      std::string(same     ? "its folder is that of "
                                                  : inside ? "its folder lies in that of "
                                                           : "its folder holds that of ") +
                                          Bracketed(first.key) +
                                          ", so that plain paths of files in both count as " +
                                          Bracketed(first.key) + "'s",
                                      "use folders beside each other"));
            return;
        }
    }
}

void CompareDefaults(const DepotSummary& first, const DepotSummary& second, Findings& ofSecond) {
    if (!first.isDefault || !second.isDefault) return;
    ofSecond.push_back(Wrong("DefaultDepot",
                             Bracketed(first.key) + " stands before it and is the default",
                             "set DefaultDepot for one depot only"));
}

}  // namespace

std::vector<Findings> CheckTogether(const std::vector<DepotSummary>& depots) {
    std::vector<Findings> all(depots.size());
    for (std::size_t later = 1; later < depots.size(); ++later) {
        for (std::size_t earlier = 0; earlier < later; ++earlier) {
            CompareKeys(depots[earlier], depots[later], all[later]);
            CompareNames(depots[earlier], depots[later], all[later]);
            CompareRoots(depots[earlier], depots[later], all[later]);
        }
        const auto first =
            std::find_if(depots.begin(), depots.begin() + static_cast<std::ptrdiff_t>(later),
                         [](const DepotSummary& depot) { return depot.isDefault; });
        if (first != depots.begin() + static_cast<std::ptrdiff_t>(later)) {
            CompareDefaults(*first, depots[later], all[later]);
        }
    }
    return all;
}

}  // namespace depot::ctl
