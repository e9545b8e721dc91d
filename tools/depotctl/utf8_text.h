// UTF-8 texts: what stands in them, how wide a terminal shows them and how they are cut.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace depot::ctl {

// Look for ASCII characters in UTF-8, which no byte of a longer character is: the code page of
// narrow texts does not matter here. Positions are those of bytes, npos when there is none.
std::size_t FindAscii(std::string_view text, char character, std::size_t from = 0);
std::size_t FindAnyAscii(std::string_view text, std::string_view characters, std::size_t from = 0);
bool EndsInAscii(std::string_view text, char character);

// Returns the text in UTF-16, and back, and how many units it takes there.
std::u16string Utf16(std::string_view text);
std::string Utf8FromUtf16(std::u16string_view units);  // a half of a pair becomes U+FFFD
std::size_t Utf16Length(std::string_view text);

// Appends the character of that code.
void AppendUtf8(std::string& text, std::uint32_t code);

// Returns how many columns the text takes: wide East Asian characters take two, combining marks
// none. A byte that is not part of UTF-8 counts as one character.
std::size_t DisplayWidth(std::string_view text);

// Returns the text, or, when it takes more than `width` columns, as much of it as leaves room for
// an ellipsis behind it.
std::string CutToWidth(std::string_view text, std::size_t width);

// Returns the text with control characters replaced by question marks, so that no name can move the
// cursor or colour the screen.
std::string Printable(std::string_view text);

// Returns the text on one line: each run of blanks, line ends and other controls becomes one blank,
// none at the ends.
std::string OneLine(std::string_view text);

// Returns "1 file", "2 files".
std::string Counted(std::size_t count, const std::string& noun);

// Breaks a text between words into lines of at most `width` columns, all but the first behind
// `indent` blanks; a word that is wider stands in parts. A width of 0 breaks nothing.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent);

}  // namespace depot::ctl
