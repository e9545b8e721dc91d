// Between the names that depots work with, in the ANSI code page, and the texts on the screen.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/wide_text.h"

namespace depot {

// Returns nothing for a text that the code page cannot hold exactly: a name must not become that of
// another file.
std::optional<std::string> ExactAnsiFromWide(std::wstring_view text);

}  // namespace depot
