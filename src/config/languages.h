// The languages of the component's texts: one row a language, in the order in which their display
// names of depots serve users of others. The libraries of texts are made from these rows:
// resources/<code>.rc becomes depotintr.<code>.nls.
#pragma once

#include <cstdint>
#include <string_view>

namespace depot {

struct Language {
    std::string_view code;          // in registry values, file names and macros
    std::uint16_t primaryLanguage;  // of the operating system's identifiers
    bool servesOthers;              // whether a depot's name in it is shown to users of others
};

// Scripts of the build read one row a line.
// clang-format off
inline constexpr Language kLanguages[] = {
    {"eng", 0x09, true},
    {"fra", 0x0C, true},
    {"deu", 0x07, true},
    {"esp", 0x0A, true},
    {"ita", 0x10, true},
    {"jpn", 0x11, false},
    {"prt", 0x16, true},
};
// clang-format on

}  // namespace depot
