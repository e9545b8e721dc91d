// UTF-8 texts as a terminal shows them: how wide they are and how they are cut.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace depot::ctl {

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

// Breaks a text between words into lines of at most `width` columns, all but the first behind
// `indent` blanks; a word that is wider stands in parts. A width of 0 breaks nothing.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent);

}  // namespace depot::ctl
