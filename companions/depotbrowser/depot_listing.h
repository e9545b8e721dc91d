// What the workers find out about folders and files.
#pragma once

#include <string>
#include <vector>

#include "depotbrowser/depot_place.h"
#include "depotbrowser/entry_order.h"
#include "depotbrowser/tree_names.h"
#include "manager/depot_session.h"
#include "platform/result.h"

namespace depot {

// The system's words for its code; why the last request to a depot's directory failed, empty for
// the file system; and why an operation did, without the path that it was about.
std::string SystemText(DWORD error);
std::string DirectoryReason(CDepot& depot);
std::string ReasonOf(const Result& result);

// A name in the letters in which searches compare.
std::wstring FoldedName(std::wstring name);

// What a folder holds.
struct Listing {
    bool succeeded = false;
    std::string reason;      // why not, where one is known
    std::string folderPath;  // the display path of the folder, to which names are appended
    std::vector<BrowseEntry> entries;
    std::vector<TreeName> folders;  // only for the tree
    bool complete = false;          // no entry is left out because of its name
};
Listing ListFolder(DepotSession& session, const FolderRef& folder);
// The same with the folders in the order of the tree.
Listing ListForTree(DepotSession& session, const FolderRef& folder);

// What a name in a folder stands for.
enum class NameKind { kUnknown, kAbsent, kFile, kFolder };
struct ExaminedName {
    NameKind kind = NameKind::kUnknown;  // unknown when the folder cannot be listed
    std::string path;                    // the display path
    bool writable = false;               // only when it was asked for
    std::string reason;                  // why it is unknown or not writable, where one is known
};
ExaminedName ExamineName(DepotSession& session, const FolderRef& folder, const std::string& name);

// The same, and whether a file of that name can be written.
ExaminedName ExamineForWriting(DepotSession& session, const FolderRef& folder,
                               const std::string& name);

// Where a path lies among the depots.
struct LocatedPath {
    bool found = false;
    FolderRef folder;
    std::string name;
};

// Finds the folder of a display path, with the depot's key name or its localized name, or of a path
// of the file system. Nothing is looked for in the folder.
LocatedPath LocatePath(DepotSession& session, const std::string& path);

// The same for the path of a folder. One of the file system that is gone is not found; whether a
// directory has it still is left to whoever opens it.
LocatedPath LocateExistingFolder(DepotSession& session, const std::string& path);

}  // namespace depot
