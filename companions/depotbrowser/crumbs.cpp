#include "depotbrowser/crumbs.h"

#include "depotbrowser/name_rules.h"

namespace depot {

std::size_t FirstShownCrumb(const std::vector<int>& widths, int room, int moreWidth) {
    if (widths.empty()) return 0;
    std::size_t first = widths.size() - 1;
    int used = widths[first];
    while (first > 0) {
        used += widths[first - 1];
        // Nothing is left out before the first one.
        if (used + (first > 1 ? moreWidth : 0) > room) break;
        --first;
    }
    return first;
}

std::string LeadingFolder(std::string_view relative, std::size_t count) {
    std::string folder;
    for (const std::string& name : FolderNames(relative)) {
        if (count-- == 0) break;
        folder += name + "\\";
    }
    return folder;
}

}  // namespace depot
