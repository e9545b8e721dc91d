#include "utf8_text.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace depot::ctl {
namespace {

constexpr char kEllipsis[] = "\xE2\x80\xA6";

struct Character {
    std::uint32_t code = 0;
    std::size_t bytes = 1;

    // A byte that is not part of UTF-8.
    bool IsBroken() const { return bytes == 1 && code >= 0x80; }
};

struct Range {
    std::uint32_t first, last;
};

// The blocks whose characters take two columns, and those of marks that take none.
constexpr Range kWide[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD},
};
constexpr Range kCombining[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x064B, 0x065F}, {0x1AB0, 0x1AFF},
    {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},
};

template <std::size_t Count>
bool IsIn(const Range (&ranges)[Count], std::uint32_t code) {
    return std::any_of(std::begin(ranges), std::end(ranges), [code](const Range& range) {
        return code >= range.first && code <= range.last;
    });
}

std::size_t SequenceLength(unsigned char lead) {
    if (lead >= 0xF0 && lead < 0xF5) return 4;
    if (lead >= 0xE0) return lead < 0xF0 ? 3 : 1;
    return lead >= 0xC2 ? 2 : 1;
}

// Reads the character at the beginning of the text, which is not empty.
Character FirstOf(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = SequenceLength(lead);
    if (length == 1 || length > text.size()) return {lead, 1};
    std::uint32_t code = lead & (0xFFu >> (length + 1));
    for (std::size_t index = 1; index < length; ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        if ((byte & 0xC0) != 0x80) return {lead, 1};
        code = code << 6 | (byte & 0x3Fu);
    }
    return {code, length};
}

// Calls `visit` with each character and its bytes.
template <class Visit>
void ForEachCharacter(std::string_view text, const Visit& visit) {
    while (!text.empty()) {
        const Character character = FirstOf(text);
        visit(character, text.substr(0, character.bytes));
        text.remove_prefix(character.bytes);
    }
}

std::size_t WidthOf(std::uint32_t code) {
    if (IsIn(kCombining, code)) return 0;
    return IsIn(kWide, code) ? 2 : 1;
}

constexpr bool IsFirstHalf(std::uint32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsSecondHalf(std::uint32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

// Takes a character off the units, of which there are some.
std::uint32_t TakeCharacter(std::u16string_view& units) {
    constexpr std::uint32_t kReplacement = 0xFFFD;
    const std::uint32_t first = units.front();
    units.remove_prefix(1);
    if (!IsFirstHalf(first)) return IsSecondHalf(first) ? kReplacement : first;
    if (units.empty() || !IsSecondHalf(units.front())) return kReplacement;
    const std::uint32_t second = units.front();
    units.remove_prefix(1);
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

bool IsControl(std::uint32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

}  // namespace

std::size_t FindAscii(std::string_view text, char character, std::size_t from) {
    return text.find(character, from);
}

std::size_t FindAnyAscii(std::string_view text, std::string_view characters, std::size_t from) {
    return text.find_first_of(characters, from);
}

bool EndsInAscii(std::string_view text, char character) {
    return text.ends_with(character);
}

void AppendUtf8(std::string& text, std::uint32_t code) {
    const auto add = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) return add(code);
    if (code < 0x800) {
        add(0xC0 | code >> 6);
    } else {
        add(code < 0x10000 ? 0xE0 | code >> 12 : 0xF0 | code >> 18);
        if (code >= 0x10000) add(0x80 | (code >> 12 & 0x3F));
        add(0x80 | (code >> 6 & 0x3F));
    }
    add(0x80 | (code & 0x3F));
}

std::u16string Utf16(std::string_view text) {
    std::u16string units;
    ForEachCharacter(text, [&](const Character& character, std::string_view /*bytes*/) {
        // The rest of a character that was cut.
        if (character.IsBroken() && character.code < 0xC0) return;
        const std::uint32_t above = character.code - 0x10000;
        if (character.code > 0xFFFF) units.push_back(static_cast<char16_t>(0xD800 + (above >> 10)));
        units.push_back(static_cast<char16_t>(character.code > 0xFFFF ? 0xDC00 + (above & 0x3FF)
                                                                      : character.code));
    });
    return units;
}

std::string Utf8FromUtf16(std::u16string_view units) {
    std::string text;
    while (!units.empty()) AppendUtf8(text, TakeCharacter(units));
    return text;
}

std::size_t Utf16Length(std::string_view text) {
    return Utf16(text).size();
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    ForEachCharacter(text, [&](const Character& character, std::string_view /*bytes*/) {
        width += WidthOf(character.code);
    });
    return width;
}

std::string CutToWidth(std::string_view text, std::size_t width) {
    if (DisplayWidth(text) <= width) return std::string(text);
    if (width == 0) return {};
    std::size_t kept = 0, used = 0;
    while (kept < text.size()) {
        const Character character = FirstOf(text.substr(kept));
        used += WidthOf(character.code);
        if (used > width - 1) break;
        kept += character.bytes;
    }
    return std::string(text.substr(0, kept)).append(kEllipsis);
}

std::string Printable(std::string_view text) {
    std::string result;
    ForEachCharacter(text, [&](const Character& character, std::string_view bytes) {
        result += character.IsBroken() || IsControl(character.code) ? "?" : bytes;
    });
    return result;
}

std::string OneLine(std::string_view text) {
    std::string result;
    bool gap = false;
    ForEachCharacter(text, [&](const Character& character, std::string_view bytes) {
        const bool broken = character.IsBroken();
        if (character.code == ' ' || (!broken && IsControl(character.code))) {
            gap = !result.empty();
            return;
        }
        if (gap) result.push_back(' ');
        gap = false;
        result.append(broken ? "?" : bytes);
    });
    return result;
}

std::string Counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent) {
    if (width == 0) return std::string(text);
    std::string result;
    std::size_t column = 0;
    const auto breakLine = [&] {
        while (result.ends_with(' ')) result.pop_back();
        result.append(1, '\n').append(indent, ' ');
        column = indent;
    };
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' ', 1), text.size());
        std::string_view word = text.substr(0, end);
        text.remove_prefix(end);
        if (column > indent && column + DisplayWidth(word) > width) {
            breakLine();
            word.remove_prefix(word.starts_with(' ') ? 1 : 0);
        }
        ForEachCharacter(word, [&](const Character& character, std::string_view bytes) {
            const std::size_t wide = WidthOf(character.code);
            if (column > indent && column + wide > width) breakLine();
            result.append(bytes);
            column += wide;
        });
    }
    return result;
}

}  // namespace depot::ctl
