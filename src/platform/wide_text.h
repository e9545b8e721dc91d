// Conversion between UTF-16 and narrow text, for the few places where the system wants the former.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace depot {

std::wstring WideFromUtf8(std::string_view text);
std::string Utf8FromWide(std::wstring_view text);

// The same with the ANSI code page, or with any other of the system. What it cannot hold is
// replaced.
std::wstring WideFromAnsi(std::string_view text);
std::string AnsiFromWide(std::wstring_view text);
std::wstring WideFromCodePage(unsigned codePage, std::string_view text);

// Return nothing for a text that the code page cannot hold exactly, which would come back as
// another one, and for a lone surrogate: a name must not become that of another file.
std::optional<std::string> ExactAnsiFromWide(std::wstring_view text);
std::optional<std::string> ExactFromWide(unsigned codePage, std::wstring_view text);

// Return nothing for bytes that are no characters of the code page they are in, or that the other
// one cannot hold exactly.
std::optional<std::wstring> ExactWideFromAnsi(std::string_view text);
std::optional<std::wstring> ExactWideFromCodePage(unsigned codePage, std::string_view text);
std::optional<std::string> ExactAnsiFromUtf8(std::string_view text);
std::optional<std::string> ExactUtf8FromAnsi(std::string_view text);

}  // namespace depot
