// The keys of depots as users give them.
#pragma once

#include <string>

namespace depot::ctl {

// Takes the angle brackets and a backslash off, as "<Work>\" has them.
std::string KeyArgument(std::string key);

// Tells whether two keys name the same subkey: letter case does not count.
bool SameKey(const std::string& left, const std::string& right);

}  // namespace depot::ctl
