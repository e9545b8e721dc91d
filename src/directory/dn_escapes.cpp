#include "directory/dn_escapes.h"

#include "platform/code_page.h"

namespace depot {
namespace {

std::optional<int> HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? std::optional(c - 'a' + 10) : std::nullopt;
}

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

std::string HexEscape(char c) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    return {'\\', kDigits[byte >> 4], kDigits[byte & 15]};
}

std::string Escaped(char c, bool isFirst, bool isLast) {
    constexpr std::string_view kSpecial = ",+\"\\<>;=";
    // A blank behind a backslash would be cut off by whoever trims the text.
    if (IsControl(c) || (c == ' ' && (isFirst || isLast))) return HexEscape(c);
    const bool isSpecial = kSpecial.find(c) != std::string_view::npos || (c == '#' && isFirst);
    return isSpecial ? std::string{'\\', c} : std::string(1, c);
}

}  // namespace

std::optional<unsigned char> HexByte(std::string_view text, std::size_t at) {
    if (at + 2 > text.size()) return std::nullopt;
    const std::optional<int> high = HexDigit(text[at]), low = HexDigit(text[at + 1]);
    if (!high || !low) return std::nullopt;
    return static_cast<unsigned char>(*high * 16 + *low);
}

std::string EscapedName(std::string_view name) {
    std::string escaped;
    for (std::size_t at = 0; at < name.size();) {
        const std::size_t length = CharacterLength(name, at);
        const std::string_view character = name.substr(at, length);
        at += length;
        if (length > 1) {
            escaped.append(character);
        } else {
            escaped.append(Escaped(character.front(), at == 1, at == name.size()));
        }
    }
    return escaped;
}

std::size_t EscapeLength(std::string_view text, std::size_t at) {
    if (at + 1 >= text.size() || text[at] != '\\') return 0;
    // The character behind the backslash may have several bytes.
    return HexByte(text, at + 1) ? 3 : 1 + CharacterLength(text, at + 1);
}

std::string UnescapedName(std::string_view escaped) {
    std::string name;
    for (std::size_t at = 0; at < escaped.size();) {
        const std::size_t escape = EscapeLength(escaped, at);
        const std::size_t length = escape > 0 ? escape : CharacterLength(escaped, at);
        const auto byte = HexByte(escaped, at + 1);
        if (escape > 0 && byte && *byte > 0 && *byte < 0x80) {
            name.push_back(static_cast<char>(*byte));
        } else {
            const bool isCharacter = escape > 0 && !byte;
            name.append(escaped.substr(at, length).substr(isCharacter ? 1 : 0));
        }
        at += length;
    }
    return name;
}

}  // namespace depot
