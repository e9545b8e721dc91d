// Characters of ASCII, whatever the code page is.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
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

// Returns the number that all of the text is, of at most eight digits.
inline std::optional<std::uint32_t> NumberIn(std::string_view digits, int base) {
    const char* const end = digits.data() + digits.size();
    std::uint32_t number = 0;
    const auto [at, error] = std::from_chars(digits.data(), end, number, base);
    const bool isNumber = error == std::errc() && at == end && digits.size() <= 8;
    return isNumber ? std::optional(number) : std::nullopt;
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
