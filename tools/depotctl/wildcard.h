// Patterns for names, as they are typed at a prompt.
#pragma once

#include <string_view>

namespace depot::ctl {

// Returns whether the text, in the ANSI code page, has a "*" or a "?".
bool HasWildcard(std::string_view text);

// Returns whether the whole name is as the pattern has it: "*" stands for any characters, or none,
// and "?" for one. Letter case does not count. Nothing else in a pattern is special: "*.*" is a
// name with a dot.
bool MatchesWildcard(std::string_view name, std::string_view pattern);

}  // namespace depot::ctl
