// What the workers change in depots for the user.
#pragma once

#include <string>
#include <vector>

#include "depotbrowser/depot_place.h"
#include "manager/depot_session.h"

namespace depot {

// What became of a change.
struct ChangeResult {
    bool succeeded = false;
    std::string name;        // the name that the changed or new item has; of a failure, the old one
    std::string reason;      // why it failed, where one is known
    bool nameTaken = false;  // it failed because the new name is another item's
};

// Renames a file or folder. A name that differs in letter case only is a new one, too.
ChangeResult RenameItem(DepotSession& session, const FolderRef& folder, const std::string& oldName,
                        const std::string& newName);

// Deletes files, and folders with all that they hold, up to the first failure.
ChangeResult DeleteItems(DepotSession& session, const FolderRef& folder,
                         const std::vector<std::string>& names);

// Copies files within their folder under the next free names, up to the first failure.
ChangeResult CopyItems(DepotSession& session, const FolderRef& folder,
                       const std::vector<std::string>& names);

// Makes a folder called `name`, or that name with a number when it is taken.
ChangeResult MakeFolder(DepotSession& session, const FolderRef& folder, const std::string& name);

}  // namespace depot
