// Names from elsewhere that are to become names of local files.
#pragma once

#include <string_view>

namespace depot {

// Whether a name may become that of a local file or folder: it is neither empty nor a dot name nor
// a device's, and holds no separator, wildcard or control character.
bool IsSafeLocalName(std::string_view name);

// Whether a name that a server returned may become that of a local file or folder without a look at
// what is there: it does not have the form of the short names that a file system gives files
// besides their own, such as "LONGFI~1.KRA", under which another file may be reached.
bool IsSafeForeignName(std::string_view name);

}  // namespace depot
