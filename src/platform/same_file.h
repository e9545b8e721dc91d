// Whether two paths name the same place, whatever they are spelled like: other letters,
// other drives, links and relative parts make no difference. On volumes that show no identity of
// their files the paths are compared, made absolute and in any letters.
#pragma once

#include <string>

namespace depot {

// Whether both paths name the same file or folder; false when either does not exist.
bool IsSameFile(const std::string& left, const std::string& right);

// Whether `path`, which need not exist, lies at any depth inside an existing folder. The
// folder is not inside itself.
bool IsInsideFolder(const std::string& path, const std::string& folder);

}  // namespace depot
