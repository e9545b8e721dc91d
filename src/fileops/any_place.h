// Files and folders anywhere: in a depot, by its key or its display name, or in the file system.
#pragma once

#include <string>
#include <vector>

#include "fileops/transfer_progress.h"
#include "model/depots.h"
#include "store/store.h"

namespace depot {

// One place, by its path: a display path or an absolute path of the file system.
struct AnyPlace {
    CDepot* depot = nullptr;  // that holds it, never owned; null for none
    std::string path;         // by the depot's key

    StorePath Stored() const;
    // Whether it is the root of its depot or of a drive, or a folder that holds the former.
    bool IsRoot() const;
};

// Finds the place of a path. Fails for a depot that there is not, for a path that is not absolute,
// which would depend on the process's current folder, and for "." and ".." below a depot's root.
Result FindPlace(CDepots& depots, const std::string& path, AnyPlace& place);

// What there is at the place. What is missing is no failure.
Result LookAt(const AnyPlace& place, ItemKind& kind);

// Whether a name of this kind can be made at the place: in directories that name files and folders
// alike the dot distinguishes them.
bool FitsKind(const AnyPlace& place, ItemKind kind);

// Returns the kind of what is neither a file nor a folder by its class: what its name says.
ItemKind KindBy(const AnyPlace& place, ItemKind kind);

// Tests whether the place can be written, each time anew.
Result TestWritableAt(const AnyPlace& place);

// Reads a whole file; fails with kMissing when there is nothing, and for a folder.
Result ReadFileAt(const AnyPlace& place, FileBuffer& contents);

// Replaces or makes a file; one that cannot be written is as it was. A folder is refused.
Result WriteFileAt(const AnyPlace& place, const FileBuffer& contents);

// What of a folder is listed.
struct ListingWish {
    std::string extensions;  // of files, in lower case; see PassesFilter
    bool files = true;
    bool folders = false;
};

// Appends the paths of what the folder holds, without its subfolders' contents, in the order of the
// store. What no name can be given to is left out. A listing that fails may have appended some.
Result ListAt(const AnyPlace& folder, const ListingWish& wish, std::vector<std::string>& paths);

}  // namespace depot
