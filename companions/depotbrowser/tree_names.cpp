#include "depotbrowser/tree_names.h"

#include <algorithm>
#include <utility>

#include "depotbrowser/depot_listing.h"
#include "platform/wide_text.h"
// After the Windows headers.
#include <shlwapi.h>

namespace depot {

TreeName TreeNameOf(const std::string& name) {
    std::wstring shown = WideFromAnsi(name);
    std::wstring folded = FoldedName(shown);
    return {name, std::move(shown), std::move(folded)};
}

std::vector<TreeName> TreeNames(const std::vector<BrowseEntry>& entries) {
    std::vector<TreeName> names;
    for (const BrowseEntry& entry : entries) {
        if (entry.isFolder) names.push_back({entry.name, entry.shownName, entry.foldedName});
    }
    std::sort(names.begin(), names.end(), ComesBefore);
    return names;
}

bool ComesBefore(const TreeName& left, const TreeName& right) {
    const int order = StrCmpLogicalW(left.shown.c_str(), right.shown.c_str());
    return order != 0 ? order < 0 : left.folded < right.folded;
}

}  // namespace depot
