// Narrow-text helpers that compare and replace without regard to case.
//
// Texts are characters of the ANSI code page and are compared character by character: a match never
// begins or ends inside of one. Which letters are one in two cases is what the installed
// description of the code page says (code_page.h).
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace depot {

// Returns the lower case of a character that is a single byte; any other byte as it is.
char LowerCase(char c);

// Lower-cases the letters. Under UTF-8 that may change the length of the text.
std::string ToLower(std::string_view text);

bool EqualsNoCase(std::string_view left, std::string_view right);
bool StartsWithNoCase(std::string_view text, std::string_view prefix);

// Returns how many bytes of the text its beginning that equals `prefix` takes, which may be more or
// fewer than the prefix has; nothing when the text begins otherwise.
std::optional<std::size_t> PrefixLengthNoCase(std::string_view text, std::string_view prefix);

// Where a text was found, and how many bytes it takes there.
struct TextMatch {
    std::size_t start;
    std::size_t length;
};

// Finds the first occurrence of `find` at or after `from`, which is where a character begins. An
// empty `find` is found nowhere.
std::optional<TextMatch> FindMatchNoCase(std::string_view text, std::string_view find,
                                         std::size_t from = 0);

// The position alone, or npos.
std::size_t FindNoCase(std::string_view text, std::string_view find, std::size_t from = 0);

// Replaces every occurrence of `find`, in any letter case, by `replacement` as given; the search
// goes on right after the inserted text. Returns the text unchanged when it or `find` is empty, or
// when `find` and `replacement` differ at most in case.
std::string ReplaceAllNoCase(std::string_view text, std::string_view find,
                             std::string_view replacement);

// Returns the texts one after another.
std::string Concatenate(std::initializer_list<std::string_view> texts);

// Returns the number in decimal digits.
std::string NumberText(std::uint64_t number);

// Returns the number and what is counted, such as "1 file" and "2 files"; empty for 0.
std::string CountText(std::uint64_t number, std::string_view one, std::string_view several);

// Appends one backslash to a text that is not empty and does not end in one.
std::string EnsureTrailingBackslash(std::string text);

// Returns the text before its first NUL.
std::string_view UpToNul(std::string_view text);

// Returns the text without the blanks, tabs and line ends at its end.
std::string_view TrimTrailingBlanks(std::string_view text);

}  // namespace depot
