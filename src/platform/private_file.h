// Files that are nobody else's business.
#pragma once

#include <string>

namespace depot {

// Takes the file from everyone but the user of the calling thread, whatever its folder allows. A
// file system that keeps no rights leaves it as it is.
void MakePrivate(const std::string& path) noexcept;

}  // namespace depot
