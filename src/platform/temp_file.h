// Temporary files and the folders that hold them.
#pragma once

#include <string>

namespace depot {

// Creates an empty file with a unique name in the temporary-files folder, for the user alone, and
// returns its full path; empty when none can be created. The caller removes the file.
std::string MakeTempFileName();

// Creates an empty folder with a unique name in the temporary-files folder, for the user alone like
// all it will hold, and returns its path without a trailing backslash; empty when none can be
// created. The caller removes it.
std::string MakeTempFolder();

// Deletes the folder that holds `path`, with everything in it, for good. Returns 1 when all went,
// else 0; the shell shows what went wrong. Nothing is deleted when the folder's path is empty or
// does not fit the shell's list of paths.
//
// Contract: nothing here calls it.
int DeleteContainingFolder(const std::string& path);

}  // namespace depot
