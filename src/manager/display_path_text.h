// Display paths as text: nothing here asks a depot or the system.
#pragma once

#include <string>
#include <string_view>

namespace depot {

// Returns "<name>\", the prefix of every display path of a depot of that name.
std::string DisplayPrefix(std::string_view name);

// Whether the path begins with the prefix, in any letter case. A path without any backslash
// counts as if it ended in one, so that a bare bracketed name matches. An empty prefix matches
// nothing.
bool MatchesPrefix(std::string_view path, std::string_view prefix);

// Returns the prefix for a path that is the prefix without its backslash, in any letter case, so
// that a bare bracketed name stands for the root; any other path as it is.
std::string CompleteBareName(const std::string& path, const std::string& prefix);

// Returns the display path of the folder that holds `fileName`: the display name in angle brackets,
// the name's text from behind its last '>' to before its last backslash, and a backslash.
//
// Kept: a file-system name is treated the same way, so its whole folder ends up behind the name.
std::string FolderDisplayPath(std::string_view displayName, std::string_view fileName);

// A display path taken apart: "<My Depot>\x\y" gives "My Depot" and "x\y".
struct DisplayPathParts {
    std::string depotName;  // up to the last '>', or the whole text, without leading '<'
    std::string relative;   // behind the first backslash
};
DisplayPathParts SplitDisplayPath(std::string_view displayPath);

}  // namespace depot
