// Texts between the tool, which speaks UTF-8, and the component, which works in the ANSI code page.
#pragma once

#include <string>
#include <string_view>

namespace depot::ctl {

std::string Utf8FromAnsi(std::string_view text);

// Ends the command for what a user typed and the code page cannot hold as it stands.
std::string ToAnsi(std::string_view text);

}  // namespace depot::ctl
