// The blanks around the names and values of a profile. Nothing here asks the system.
#pragma once

#include <string_view>

namespace depot {

// What the profile functions pass over; the last one is the end mark of old text files.
inline constexpr std::string_view kProfileBlanks = " \t\v\f\r\n\032";

inline std::string_view TrimProfileBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kProfileBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kProfileBlanks) - first + 1);
}

}  // namespace depot
