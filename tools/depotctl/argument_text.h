// The command line as its user meant it.
#pragma once

#include <string>
#include <string_view>

namespace depot::ctl {

// Returns the command line with one more backslash in every quoted path that ends in one, such as
// "<Work>\" or "C:\Backup\": the system's own rules take such a quote for a character of the path,
// and what follows for a part of it. No path holds a quote.
std::wstring WithClosedPaths(std::wstring_view commandLine);

}  // namespace depot::ctl
