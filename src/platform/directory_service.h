// The in-house directory-service library, which knows where the product's folders are.
#pragma once

#include <string>

namespace depot {

// Asks `qdirsvc.dll` for the folder of a (category, item) pair. Returns the path as the library
// gives it, or an empty text when the library, its entry point or the folder is missing.
//
// The library is bound at first use, from the folder of this component, else from the system
// directory, and never from the current directory or the search path; what it needs itself is taken
// from its own folder and the system directory only.
std::string GetStandardFolder(int category, int item);

// Gives back the one reference to the library that this module keeps from the first question on.
// REQUIRES: no thread asks for a folder.
void FreeDirectoryService();

}  // namespace depot
