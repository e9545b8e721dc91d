// The folders that the shell records in the registry, for the user and for all users.
#pragma once

#include <string>

#include "macros/macro_system.h"

namespace depot {

// Returns the folder recorded under that name, the user's own or, on systems of the NT family, that
// of all users; empty when there is none.
std::string GetShellFolder(MacroSystem& system, const std::string& name, bool allUsers);

// Returns the folder for application data, the user's own or, on systems of the NT family, that of
// all users. Where the latter is not recorded, it is created beside the common start menu.
//
// Kept: a value that cannot be read gives the drive of Windows, for all users also when the folder
// beside the start menu exists already.
std::string GetAppDataFolder(MacroSystem& system, bool allUsers);

}  // namespace depot
