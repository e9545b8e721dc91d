// How the bytes of a whole text file stand for characters.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace depot {

enum class TextEncoding : std::uint8_t {
    kAnsi,         // the code page of the process, without a mark
    kUtf8,         // these begin with a byte order mark
    kUtf16,        // as the system writes it
    kSwappedUtf16  // with the high byte first
};

// Returns what the mark at the beginning says; the code page without one.
TextEncoding EncodingOf(std::string_view bytes);

// Returns the text without its mark. Nothing for bytes that are no characters of the encoding:
// written back they would be other ones.
std::optional<std::wstring> TextFromBytes(std::string_view bytes);

// Returns the bytes of the text, with the mark of the encoding. Nothing for a text that the
// encoding does not hold exactly, or whose bytes in the ANSI code page begin like a mark.
std::optional<std::string> BytesFromText(TextEncoding encoding, std::wstring_view text);

}  // namespace depot
