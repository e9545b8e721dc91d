// Other names of files.
#pragma once

#include <string>

namespace depot::test {

// Returns the path as the system below Wine knows it; empty on Windows itself.
std::string UnixPath(const std::string& path);

// Returns a name of the file that begins with two backslashes and holds no drive: that of the share
// of its drive, or what Wine has in its place. The path begins with a drive.
std::string NetworkPath(const std::string& path);

}  // namespace depot::test
