// Folders that the shell and the user's settings name.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot {

// Returns the path of the shell folder with that identifier (a CSIDL value); empty when the shell
// does not know it or when it is no folder of the file system.
std::string GetSpecialFolderPath(int folder);

// Returns the folder of the sound that the user's sound scheme plays for a warning, else of the one
// it plays at the start; empty when neither names a path with a folder.
std::string GetSystemSoundFolder();

}  // namespace depot
