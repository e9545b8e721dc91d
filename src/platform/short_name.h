// The short names that a file system gives files and folders besides their own.
#pragma once

#include <string>

namespace depot {

// Whether the path leads to a file or folder of another name, of which it uses the short one, such
// as "LONGFI~1.KRA": who writes there, meaning a file of this name, replaces that other one. False
// where the path leads to nothing, and where the system does not say.
bool IsShortNameOfAnother(const std::string& path);

}  // namespace depot
