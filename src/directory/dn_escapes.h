// How names stand inside of distinguished names: with escapes where a character of theirs would
// otherwise be taken for a part of the whole.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace depot {

// Returns the name as it stands in a distinguished name (RFC 4514). One without special characters,
// and without blanks at its ends, is returned as it is.
std::string EscapedName(std::string_view name);

// Returns the name that stands there so, whatever way of escaping was chosen. Escapes of bytes
// above ASCII, and of a NUL, stay.
std::string UnescapedName(std::string_view escaped);

// Returns the byte of the two hexadecimal digits at that position, where there are any.
std::optional<unsigned char> HexByte(std::string_view text, std::size_t at);

// How many bytes the escape at that position takes; 0 where none begins.
std::size_t EscapeLength(std::string_view text, std::size_t at);

}  // namespace depot
