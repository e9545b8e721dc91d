// References to environment variables in texts.
#pragma once

#include <string>

namespace depot {

// Returns the text with its %NAME% references replaced; a name that is no variable stays. When the
// result, its NUL included, takes more than 520 bytes, or is empty, the text comes back as it was.
std::string ExpandEnvironment(const std::string& text);

}  // namespace depot
