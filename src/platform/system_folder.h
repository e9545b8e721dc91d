// The folder of the system's own libraries.
#pragma once

#include <string>

namespace depot {

// Returns the system folder with a trailing backslash; empty when its path is too long.
std::string SystemFolder();

}  // namespace depot
