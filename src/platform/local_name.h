// Names from elsewhere that are to become names of local files.
#pragma once

#include <string_view>

namespace depot {

// Whether a name may become that of a local file or folder: it is neither empty nor a dot name nor
// a device's, and holds no separator, wildcard or control character.
bool IsSafeLocalName(std::string_view name);

}  // namespace depot
