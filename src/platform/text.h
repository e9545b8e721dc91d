// Narrow-text helpers that compare and replace without regard to case.
//
// Texts are byte strings in the ANSI code page; they are compared byte by byte. Case is folded
// through a table of 256 entries that starts as plain ASCII; on Windows the component installs the
// table of the ANSI code page when it is loaded, so that accented letters fold as well.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace depot {

using CaseTable = std::array<char, 256>;

// Makes `lower` the table by which texts are lower-cased: entry n is the lower case of byte n.
// Called once, before any other thread uses the component.
void InstallCaseTable(const CaseTable& lower);

char LowerCase(char c);
std::string ToLower(std::string_view text);

bool EqualsNoCase(std::string_view left, std::string_view right);
bool StartsWithNoCase(std::string_view text, std::string_view prefix);

// Returns the position of the first occurrence of `find` at or after `from`, or npos. An empty
// `find` is found nowhere.
std::size_t FindNoCase(std::string_view text, std::string_view find, std::size_t from = 0);

// Replaces every occurrence of `find`, in any letter case, by `replacement` as given; the search
// goes on right after the inserted text. Returns the text unchanged when it or `find` is empty, or
// when `find` and `replacement` differ at most in case.
std::string ReplaceAllNoCase(std::string_view text, std::string_view find,
                             std::string_view replacement);

// Appends one backslash to a text that is not empty and does not end in one.
std::string EnsureTrailingBackslash(std::string text);

// Returns the text before its first NUL.
std::string_view UpToNul(std::string_view text);

// Returns the text without the blanks, tabs and line ends at its end.
std::string_view TrimTrailingBlanks(std::string_view text);

}  // namespace depot
