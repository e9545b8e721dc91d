// How the window names depots, folders and files to its workers.
#pragma once

#include <string>
#include <vector>

#include "model/depots.h"
#include "platform/win32.h"

namespace depot {

// A depot in any list: its name and the hive that defines it.
struct DepotRef {
    std::string name;
    HKEY rootKey = HKEY_CURRENT_USER;

    bool operator==(const DepotRef& other) const = default;
};

// A folder of a depot. `relative` is empty for the root and ends in a backslash otherwise.
struct FolderRef {
    DepotRef depot;
    std::string relative;

    bool operator==(const FolderRef& other) const = default;
};

// A depot as the window shows it.
struct ShownDepot {
    DepotRef ref;
    std::wstring name;
    std::string icon;
    bool isDefault = false;
};

// Returns the depots in their order. Of depots that share their name the first alone is shown: a
// display path never leads to another one.
std::vector<ShownDepot> ShownDepots(const CDepots& depots);

// Returns the depot of that name and hive, or null.
CDepot* FindDepot(const CDepots& depots, const DepotRef& ref);

}  // namespace depot
