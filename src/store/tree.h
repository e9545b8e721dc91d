// Walking the trees of a store.
#pragma once

#include "store/store.h"

namespace depot {

// Why the trace says that something is left out.
inline constexpr char kHostileName[] = "a name that no local file can have";
inline constexpr char kFolderLink[] = "a link to a folder";

// All levels of a tree.
inline constexpr std::uint32_t kWholeTree = 0xFFFFFFFF;

// Appends what a folder holds to `children`, without their places in a tree. Links and hostile
// names are left out: counted, and named in the trace.
Result ListChildren(Store& store, const std::string& folder, std::vector<TreeItem>& children,
                    LeftOut& left);

// Returns what takes the children of a listing so.
TakeItem TakeChildren(const std::string& folder, std::vector<TreeItem>& children, LeftOut& left);

struct TreeWish {
    // Where it is given, the children of the top are taken of it, and not listed again.
    StoreSource* known = nullptr;
    // Folders of this level are not looked into; the top is level 0.
    std::uint32_t depth = kWholeTree;
};

// Lists a folder with all below it. Fails when a folder cannot be listed, and when the tree passes
// the store's bounds, with LDAP_SIZELIMIT_EXCEEDED or LDAP_TIMELIMIT_EXCEEDED as the code.
// REQUIRES: the store is open.
Result ListTree(Store& store, const std::string& top, Tree& tree, const TreeWish& wish = {});

}  // namespace depot
