// Paths as the system completes them.
#pragma once

#include <string>

namespace depot {

// Returns the path made absolute against the current folder, with "." and ".." resolved; the path
// itself when the system cannot complete it.
std::string FullPath(const std::string& path);

}  // namespace depot
