// What the text of a profile file holds, line by line.
#pragma once

#include <string_view>

namespace depot {

// Whether a profile's text, `after`, lacks anything that it held `before` a value of the key
// was written: a line, or the end of one. Lines of that key, in whatever section, do not count, and
// neither do blank lines, blanks around names and values, and bytes above ASCII: the system may
// write these in its own way.
bool LacksLines(std::string_view before, std::string_view after, std::string_view key);

// Whether the text has a line that gives the key this value, as it stands in the file.
bool HasValueLine(std::string_view text, std::string_view key, std::string_view value);

}  // namespace depot
