// Conversion between UTF-16 and narrow text, for the few places where the system wants the former.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace depot {

std::wstring WideFromUtf8(std::string_view text);
std::string Utf8FromWide(std::wstring_view text);

// The same with the ANSI code page. What it cannot hold is replaced.
std::wstring WideFromAnsi(std::string_view text);
std::string AnsiFromWide(std::wstring_view text);

// Returns nothing for a text that the ANSI code page cannot hold exactly: a name must not become
// that of another file.
std::optional<std::string> ExactAnsiFromWide(std::wstring_view text);

}  // namespace depot
