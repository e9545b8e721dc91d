// The mistakes of what a location names: folders, servers and bases, as texts.
#pragma once

#include <string>

#include "depotctl/definition.h"

namespace depot::ctl {

// The mistakes of a list of servers as Host has it: blanks between them, each perhaps with a port
// behind a colon.
Findings CheckHost(const std::string& subject, const std::string& host);

// The mistakes of a base as Path has it: a distinguished name, perhaps with folders behind
// backslashes.
Findings CheckBase(const std::string& subject, const std::string& base);

// A path before and after its macros were expanded, and how many bytes the latter takes in the code
// page, in which the length of a path is limited.
struct FolderPath {
    std::string raw, expanded;
    std::size_t bytes;
};

// What keeps an expanded path from being a location's folder.
Findings CheckFolder(const std::string& subject, const FolderPath& path);

// What an expanded path still holds of macros and environment variables.
Findings CheckMacros(const std::string& subject, const std::string& expanded);

// The macros of a path, not yet expanded, that there are not.
Findings CheckMacroNames(const std::string& subject, const std::string& path);

// Returns whether a path holds anything to expand.
bool HasMacros(const std::string& path);

// Return whether a text looks like a distinguished name, and like a path of the file system.
bool LooksLikeBase(const std::string& text);
bool LooksLikeFolder(const std::string& text);

}  // namespace depot::ctl
