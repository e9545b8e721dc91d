#include "store/tree.h"

#include <chrono>

#include "platform/trace.h"

namespace depot {
namespace {

// Returns why an item is no part of a tree; null for one that is.
const char* ReasonToLeaveOut(const StoreItem& item) {
    if (item.isLink) return kFolderLink;
    return item.isHostile ? kHostileName : nullptr;
}

std::uint32_t CountAdded(const std::vector<TreeItem>& items, std::size_t first, TreeBudget& budget,
                         TreeBudget::Listing listing) {
    listing.entries = items.size() - first;
    for (std::size_t index = first; index < items.size(); ++index) {
        listing.nameBytes += items[index].path.size();
    }
    if (listing.entries > 0) listing.firstName = items[first].path.size();
    return budget.Add(listing);
}

}  // namespace

Result ListChildren(Store& store, const TreeItem& folder, std::size_t index,
                    std::vector<TreeItem>& items, LeftOut& left) {
    const auto take = [&](const StoreItem& item) {
        if (const char* const reason = ReasonToLeaveOut(item)) {
            ++(item.isLink ? left.links : left.unsafeNames);
            TraceLeftOut(folder.path, item.name, reason);
            return;
        }
        items.push_back({item.name, item.path, item.isFolder, index, folder.depth + 1});
    };
    return store.List(folder.path, take, left);
}

Result ListTree(Store& store, const std::string& top, Tree& tree, StoreSource* known) {
    TreeBudget budget(store.Bounds());
    tree = {};
    tree.items.push_back({{}, top, true});
    if (known != nullptr) {
        tree.left = known->left;
        for (TreeItem& child : known->children) tree.items.push_back(std::move(child));
    }
    // The list grows while it is walked: each folder's children come behind it.
    for (std::size_t next = 0; next < tree.items.size(); ++next) {
        // A copy: the items move when the list grows.
        const TreeItem folder = tree.items[next];
        if (!folder.isFolder) ++tree.files;
        if (!folder.isFolder || (next == 0 && known != nullptr)) continue;
        const std::size_t first = tree.items.size();
        const auto start = std::chrono::steady_clock::now();
        Result listed = ListChildren(store, folder, next, tree.items, tree.left);
        if (!listed) return listed;
        TreeBudget::Listing listing;
        listing.depth = folder.depth;
        listing.time = std::chrono::steady_clock::now() - start;
        const std::uint32_t code = CountAdded(tree.items, first, budget, listing);
        if (code != LDAP_SUCCESS) {
            return store.Keep({Reason::kRefused, CodeKind::kDirectory, code});
        }
    }
    return {};
}

}  // namespace depot
