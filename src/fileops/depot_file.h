// Operations on single files of a depot, named by display paths. All return 1 for success and 0 for
// failure; what went wrong is put into the caller's error text where there is one. A path of the
// file system that is not absolute is refused wherever it would be written, moved or deleted.
#pragma once

#include <string>

#include "fileops/copied_source.h"
#include "fileops/transfer_progress.h"
#include "model/depot.h"

namespace depot {

// Tells whether the depot is used through a directory.
bool IsDirectoryDepot(CDepot& depot);

// Tells whether the file or folder exists. A path of the file system is looked for there, also when
// it comes with a directory depot.
int FileExists(CDepot& depot, const std::string& path);

// Deletes a file, or an entry of a directory with everything below it. The root of a depot is
// refused.
int DeleteFile(CDepot& depot, const std::string& path);

// Moves a file into another depot, or, without a `destinationDepot`, renames it within this one.
// `window` owns what the shell shows; it may be null. The root of a depot is refused, and so is a
// way between a directory and the file system, which ItemOperation knows.
int MoveFile(CDepot& depot, const std::string& source, const std::string& destination, HWND window,
             CDepot* destinationDepot, std::string* errorText, const TransferWatcher& watcher = {});

// Copies a file into a depot, or, without a `destinationDepot`, to a path of the file system. A
// destination that ends in a backslash is a folder, which the copy goes into under its own name; a
// name that the folder cannot hold is refused. Between and into directories whole trees are copied,
// too, and out of them.
//
// `failIfExists` keeps existing local files; an entry that exists gets the new contents in every
// case. A path of the file system is what it says, also when it comes with a directory depot.
int CopyFile(CDepot& depot, const std::string& source, const std::string& destination,
             CDepot* destinationDepot, bool failIfExists, std::string* errorText,
             const TransferWatcher& watcher = {});

// What CopyFile does, with all that it can be told.
struct FileCopy {
    CDepot& depot;
    const std::string& source;
    const std::string& destination;
    CDepot* destinationDepot = nullptr;
    bool failIfExists = false;
    TransferWatcher watcher{};
    SourceFate fate = SourceFate::kStays;
    CopiedSource* copied = nullptr;  // receives what of the source has arrived
};
Result CopyDepotFile(const FileCopy& copy);

// Copies a file, or a tree of a directory, within its depot to a name that is free: what exists
// there, or is made there meanwhile, makes the copy fail and stays.
Result CopyToFreeName(CDepot& depot, const std::string& source, const std::string& destination);

// Returns the Windows error code of the last failed operation on the depot.
DWORD LastErrorCode(CDepot& depot);

}  // namespace depot
