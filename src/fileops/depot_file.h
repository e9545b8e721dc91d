// Operations on single files of a depot, named by display paths. A path of the file system that is
// not absolute is refused wherever it would be written, moved or deleted.
//
// Those that are described return 1 for success and 0 for failure, and put what went wrong into the
// caller's error text where there is one; next to them stands what returns a Result.
#pragma once

#include <string>

#include "fileops/copy.h"
#include "fileops/transfer_progress.h"
#include "model/depot.h"

namespace depot {

// Returns 1 when the file or folder exists. A path of the file system is looked for there, also
// when it comes with a directory depot.
int FileExists(CDepot& depot, const std::string& path);

// Deletes a file, or an entry of a directory with everything below it. The root of a depot is
// refused.
int DeleteFile(CDepot& depot, const std::string& path);
Result DeleteDepotFile(CDepot& depot, const std::string& path);

// Moves a file into another depot, or, without a `destinationDepot`, renames it within this one.
// `window` owns what the shell shows; it may be null. The root of a depot is refused, and so is a
// way between a directory and the file system, which ItemOperation knows.
int MoveFile(CDepot& depot, const std::string& source, const std::string& destination, HWND window,
             CDepot* destinationDepot, std::string* errorText, const TransferWatcher& watcher = {});
struct FileMove {
    CDepot& depot;
    const std::string& source;
    const std::string& destination;
    CDepot* destinationDepot = nullptr;
    HWND window = nullptr;
    const TransferWatcher& watcher;
};
Result MoveDepotFile(const FileMove& move);

// Copies a file into a depot, or, without a `destinationDepot`, to a path of the file system. A
// destination that ends in a backslash is a folder, which takes the copy under its own name; a
// name that the folder cannot hold is refused. Between and into directories whole trees are copied,
// too, and out of them.
//
// `failIfExists` keeps existing local files; an entry that exists gets the new contents in every
// case. A path of the file system is what it says, also when it comes with a directory depot.
int CopyFile(CDepot& depot, const std::string& source, const std::string& destination,
             CDepot* destinationDepot, bool failIfExists, std::string* errorText,
             const TransferWatcher& watcher = {});

// The same, for a source that may go as well.
struct FileCopy {
    CDepot& depot;
    const std::string& source;
    const std::string& destination;
    CDepot* destinationDepot = nullptr;
    bool failIfExists = false;
    TransferWatcher watcher{};
    SourceFate fate = SourceFate::kStays;
    CopiedSource* copied = nullptr;     // receives what of the source has arrived
    const FileBuffer* known = nullptr;  // what was read of the source, see CopyRequest
};
Result CopyDepotFile(const FileCopy& copy);
// Finds out between which places the copy is, without making it.
Result PlanCopy(const FileCopy& copy, CopyRequest& request);

// Copies a file, or a tree of a directory, within its depot to a name that is free: what exists
// there, or is made there meanwhile, makes the copy fail and stays.
Result CopyToFreeName(CDepot& depot, const std::string& source, const std::string& destination);

// Returns the Windows error code of the last failed operation on the depot.
//
// Contract: nothing here calls it.
DWORD LastErrorCode(CDepot& depot);

}  // namespace depot
