// Characters of ASCII, whatever the code page is.
#pragma once

#include <algorithm>
#include <string_view>

namespace depot::ctl {

inline char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool IsLetter(char c) {
    return LowerAscii(c) >= 'a' && LowerAscii(c) <= 'z';
}

inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

inline bool IsHexDigit(char c) {
    return IsDigit(c) || (LowerAscii(c) >= 'a' && LowerAscii(c) <= 'f');
}

// Whether a text is a number of at most five digits.
inline bool IsShortNumber(std::string_view text) {
    return !text.empty() && text.size() < 6 && std::all_of(text.begin(), text.end(), IsDigit);
}

// Whether all characters are letters, digits, hyphens or dots, as names in a schema have them.
inline bool HasSchemaCharacters(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return IsLetter(c) || IsDigit(c) || c == '-' || c == '.'; });
}

}  // namespace depot::ctl
