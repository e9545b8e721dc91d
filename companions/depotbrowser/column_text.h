// What the cells of the list show, as far as no setting of the system decides it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace depot {

// Returns the format with its first "%s" replaced by the text.
std::wstring FillIn(std::wstring_view format, std::wstring_view text);

// Returns how many kilobytes a file takes, begun ones counted.
std::uint64_t Kilobytes(std::uint64_t bytes);

// Returns the number in decimal with the separator between groups of three digits.
std::wstring GroupedNumber(std::uint64_t number, std::wstring_view separator);

// Returns a name's extension without its dot, in capitals; empty for a name without one.
std::wstring ExtensionLabel(std::wstring_view name);

// Returns how long a file's name is without its extension; a name that begins with its only dot has
// none.
std::size_t StemLength(std::wstring_view name);

}  // namespace depot
