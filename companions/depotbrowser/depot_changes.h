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

// What a deletion takes along.
struct DeletionExtent {
    bool counted = false;  // whether all folders could be looked through
    std::size_t files = 0;
    std::size_t folders = 0;  // those that are inside of others
    bool recycled = false;    // the shell keeps what is deleted in the recycle bin
};

// Counts what the folders of these names hold, and finds out where deleted items go. More than a
// thousand folders are not looked through.
DeletionExtent ExamineDeletion(DepotSession& session, const FolderRef& folder,
                               const std::vector<std::string>& folderNames);

// Deletes files, and folders with all that they hold, up to the first failure. Files of a
// local disk go to its recycle bin.
ChangeResult DeleteItems(DepotSession& session, const FolderRef& folder,
                         const std::vector<std::string>& names);

// Copies files within their folder under the next free names, up to the first failure.
ChangeResult CopyItems(DepotSession& session, const FolderRef& folder,
                       const std::vector<std::string>& names);

// Makes a folder called `name`, or that name with a number when it is taken.
ChangeResult MakeFolder(DepotSession& session, const FolderRef& folder, const std::string& name);

}  // namespace depot
