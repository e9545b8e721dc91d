// The folders that one holds, in the order in which the tree shows them.
#pragma once

#include <string>
#include <vector>

#include "depotbrowser/entry_order.h"

namespace depot {

struct TreeName {
    std::string name;
    std::wstring shown, folded;
};

TreeName TreeNameOf(const std::string& name);

// Returns the folders among the entries in the order of the list, and of the system's own trees:
// numbers by their value. Costs a moment with thousands of folders: for the workers.
std::vector<TreeName> TreeNames(const std::vector<BrowseEntry>& entries);

// Whether a folder stands before another one.
bool ComesBefore(const TreeName& left, const TreeName& right);

}  // namespace depot
