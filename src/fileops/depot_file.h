// Operations on single files of a depot, named by display paths. All return 1 for success and 0 for
// failure; what went wrong is put into the caller's error text where there is one.
#pragma once

#include <string>

#include "model/depot.h"

namespace depot {

// Tells whether the depot is used through a directory.
bool IsDirectoryDepot(CDepot& depot);

// Tells whether the file or folder exists.
int FileExists(CDepot& depot, const std::string& path);

int DeleteFile(CDepot& depot, const std::string& path);

// Moves a file into another depot, or, without a `destinationDepot`, renames it within this one.
// `window` owns what the shell shows; it may be null.
int MoveFile(CDepot& depot, const std::string& source, const std::string& destination, HWND window,
             CDepot* destinationDepot, std::string* errorText);

// Copies a file into a depot, or, without a `destinationDepot`, to a path of the file system. A
// destination that ends in a backslash is a folder, which the copy goes into under its own name.
int CopyFile(CDepot& depot, const std::string& source, const std::string& destination,
             CDepot* destinationDepot, bool failIfExists, std::string* errorText);

// Returns the Windows error code of the last failed operation on the depot.
DWORD LastErrorCode(CDepot& depot);

}  // namespace depot
