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

std::string_view WithoutBackslash(std::string_view path) {
    return path.substr(0, path.size() - (EndsInAscii(path, '\\') ? 1 : 0));
}

// The folder is the path's beginning up to one of its backslashes or its end.
bool IsInside(std::string_view path, std::string_view folder, const SameText& same) {
    path = WithoutBackslash(path);
    folder = WithoutBackslash(folder);
    for (std::size_t at = 0;; ++at) {
        at = FindAscii(path, '\\', at);
        if (same(path.substr(0, at), folder)) return true;
        if (at == std::string_view::npos) return false;
    }
}

void CompareKeys(const DepotSummary& first, const DepotSummary& second, const SameText& same,
                 Findings& ofSecond) {
    if (!same(first.key, second.key)) return;
    ofSecond.push_back(Wrong("Key",
                             HiveOf(first) +
                                 " depot of the same key stands before it, and every path by that "
                                 "key goes there",
                             "remove one of them, or give it another key"));
}

// A path by a display name leads to the first depot of that name; by a key it leads to the key's.
void CompareNames(const DepotSummary& first, const DepotSummary& second, const SameText& same,
                  Findings& ofSecond) {
    if (same(first.key, second.key)) return;
    if (same(first.displayName, second.displayName)) {
        ofSecond.push_back(
            Wrong("DisplayName",
                  "users cannot tell it from " + Bracketed(first.key) + ", which has the same name",
                  "choose another name"));
        return;
    }
    const DepotSummary* const pairs[][2] = {{&first, &second}, {&second, &first}};
    for (const auto& [named, keyed] : pairs) {
        if (!same(named->displayName, keyed->key)) continue;
        ofSecond.push_back(Wrong("DisplayName",
                                 "the name of " + Bracketed(named->key) + " is the key of " +
                                     Bracketed(keyed->key) + "; paths by names go astray",
                                 "choose another name"));
    }
}

void CompareRoots(const DepotSummary& first, const DepotSummary& second, const SameText& same,
                  Findings& ofSecond) {
    for (const std::string& path : second.roots) {
        for (const std::string& other : first.roots) {
            if (path.empty() || other.empty()) continue;
            const bool inside = IsInside(path, other, same);
            if (!inside && !IsInside(other, path, same)) continue;
            const bool equal = inside && IsInside(other, path, same);
            ofSecond.push_back(Remark("Path",
                                      std::string(equal    ? "its folder is that of "
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

std::vector<Findings> CheckTogether(const std::vector<DepotSummary>& depots, const SameText& same) {
    std::vector<Findings> all(depots.size());
    for (std::size_t later = 1; later < depots.size(); ++later) {
        for (std::size_t earlier = 0; earlier < later; ++earlier) {
            CompareKeys(depots[earlier], depots[later], same, all[later]);
            CompareNames(depots[earlier], depots[later], same, all[later]);
            CompareRoots(depots[earlier], depots[later], same, all[later]);
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
