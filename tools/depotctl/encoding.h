// Texts between the tool, which speaks UTF-8, and the component, which works in the ANSI code page.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace depot::ctl {

std::string Utf8FromAnsi(std::string_view text);

// Returns nothing for a text that the code page cannot hold as it stands.
std::optional<std::string> AnsiFromUtf8(std::string_view text);

// The same for what a user typed: such a text ends the command.
std::string ToAnsi(std::string_view text);

}  // namespace depot::ctl
