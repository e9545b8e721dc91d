// File names as a file system compares them: by their characters, letter case makes no difference.
#pragma once

#include <string>

namespace depot {

// Orders names and paths of the ANSI code page. Two of which neither comes first name one file.
struct FileNameLess {
    bool operator()(const std::string& left, const std::string& right) const;
};

// Tells whether both are one name to a file system.
bool IsSameFileName(const std::string& left, const std::string& right);

}  // namespace depot
