#include "platform/code_page.h"

#include <algorithm>
#include <utility>

#include "platform/no_destructor.h"

namespace depot {
namespace {

constexpr std::size_t kNowhere = std::string_view::npos;
constexpr char32_t kCodesInTables = 0x10000;
constexpr char32_t kLastCodePoint = 0x10FFFF;
// Codes of bytes that are no characters lie behind all code points.
constexpr char32_t kBrokenBytes = kLastCodePoint + 1;

unsigned char Byte(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

// There from the start: other objects may use texts while they are initialized.
constinit NoDestructor<CodePage> installed;

bool IsSurrogate(char32_t code) {
    return code >= 0xD800 && code < 0xE000;
}

bool IsContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

Character BrokenByte(unsigned char byte) {
    return {kBrokenBytes + byte, 1, true};
}

Character Utf8CharacterAt(std::string_view text, std::size_t at) {
    const unsigned char first = Byte(text, at);
    if (first < 0x80) return {first, 1, false};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() - at < length) return BrokenByte(first);
    char32_t code = first & (0xFFu >> (length + 1));
    for (std::size_t next = at + 1; next < at + length; ++next) {
        if (!IsContinuation(Byte(text, next))) return BrokenByte(first);
        code = code << 6 | (Byte(text, next) & 0x3Fu);
    }
    constexpr char32_t kFirstCodes[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool valid = code >= kFirstCodes[length] && code <= kLastCodePoint && !IsSurrogate(code);
    return valid ? Character{code, length, false} : BrokenByte(first);
}

// As the system steps through a text: any byte but NUL completes a lead byte.
Character DoubleByteCharacterAt(const CodePage& page, std::string_view text, std::size_t at) {
    const unsigned char first = Byte(text, at);
    if (!page.leads[first]) return {first, 1, false};
    if (at + 1 == text.size() || text[at + 1] == '\0') return BrokenByte(first);
    return {static_cast<char32_t>(first << 8 | Byte(text, at + 1)), 2, false};
}

Character CharacterOf(const CodePage& page, std::string_view text, std::size_t at) {
    switch (page.kind) {
        case CodePageKind::kDoubleByte:
            return DoubleByteCharacterAt(page, text, at);
        case CodePageKind::kUtf8:
            return Utf8CharacterAt(text, at);
        default:
            return {Byte(text, at), 1, false};
    }
}

// A byte in front that is no lead byte ends its character; the lead bytes behind it pair up.
bool IsSecondByte(std::string_view text, std::size_t at) {
    std::size_t run = 0;
    while (run < at && installed->leads[Byte(text, at - run - 1)]) ++run;
    return run % 2 != 0 && text[at] != '\0';
}

bool IsInsideUtf8(std::string_view text, std::size_t at) {
    if (!IsContinuation(Byte(text, at))) return false;
    for (std::size_t back = 1; back <= std::min<std::size_t>(at, 3); ++back) {
        if (IsContinuation(Byte(text, at - back))) continue;
        return Utf8CharacterAt(text, at - back).length > back;
    }
    return false;
}

// Steps through the characters from `at`, where one begins, to the first that begins at `bound` or
// behind it.
std::size_t StartAtOrAfter(std::string_view text, std::size_t at, std::size_t bound) {
    while (at < bound) at += CharacterAt(text, at).length;
    return at;
}

// Only here an ASCII byte may be a part of another character.
bool AsciiMayBeSecond() {
    return installed->kind == CodePageKind::kDoubleByte;
}

// The code decides the length: a letter's two cases may differ in it.
//
// REQUIRES: the code lies above ASCII.
void AppendUtf8(std::string& text, char32_t code) {
    const auto append = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    const unsigned continuations = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr char32_t kFirstBytes[] = {0xC0, 0xE0, 0xF0};
    append(kFirstBytes[continuations - 1] | code >> 6 * continuations);
    for (unsigned left = continuations; left > 0; --left) {
        append(0x80 | (code >> 6 * (left - 1) & 0x3F));
    }
}

// Enters the pair when both are characters that a table has room for.
void AddCasePair(CodePage& page, std::string_view upper, std::string_view lower) {
    if (upper.empty() || lower.empty()) return;
    const Character from = CharacterOf(page, upper, 0);
    const Character to = CharacterOf(page, lower, 0);
    const bool whole = from.length == upper.size() && to.length == lower.size();
    if (!whole || from.broken || to.broken || (from.length == 1) != (to.length == 1)) return;
    if (from.length == 1) {
        page.lower[from.code] = static_cast<char>(to.code);
    } else {
        page.longLower[from.code] = static_cast<char16_t>(to.code);
    }
}

std::vector<char16_t> UnchangedCodes() {
    std::vector<char16_t> codes(kCodesInTables);
    for (char32_t code = 0; code < kCodesInTables; ++code) codes[code] = char16_t(code);
    return codes;
}

}  // namespace

std::u16string AllLetters() {
    std::u16string letters;
    for (char32_t code = 0x80; code < kCodesInTables; ++code) {
        if (!IsSurrogate(code)) letters.push_back(static_cast<char16_t>(code));
    }
    return letters;
}

CodePage DescribeCodePage(CodePageKind kind, const LeadBytes& leads, const SystemLetters& system) {
    CodePage page;
    page.kind = kind;
    page.leads = leads;
    if (kind != CodePageKind::kSingleByte) page.longLower = UnchangedCodes();
    const std::u16string lower = system.lower(system.letters);
    const std::u16string upperAgain = system.upper(lower);
    const std::u16string lowerAgain = system.lower(lower);
    for (std::size_t index = 0; index < system.letters.size(); ++index) {
        const char16_t letter = system.letters[index];
        const bool pair = lower[index] != letter && upperAgain[index] == letter &&
                          lowerAgain[index] == lower[index];
        if (pair) AddCasePair(page, system.encode(letter), system.encode(lower[index]));
    }
    for (const char16_t superscript : {u'\u00B9', u'\u00B2', u'\u00B3'}) {
        std::string digit = system.encode(superscript);
        if (!digit.empty()) page.deviceDigits.push_back(std::move(digit));
    }
    return page;
}

void InstallCodePage(CodePage page) {
    *installed = std::move(page);
}

const CodePage& InstalledCodePage() {
    return *installed;
}

Character CharacterAt(std::string_view text, std::size_t at) {
    return CharacterOf(*installed, text, at);
}

Character FoldedCharacterAt(std::string_view text, std::size_t at) {
    Character character = CharacterAt(text, at);
    if (character.broken) return character;
    if (character.length == 1) {
        character.code = static_cast<unsigned char>(installed->lower[character.code]);
    } else if (character.code < installed->longLower.size()) {
        character.code = installed->longLower[character.code];
    }
    return character;
}

void AppendCharacter(std::string& text, const Character& character) {
    const char32_t code = character.code;
    const auto append = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character.broken) {
        append(code - kBrokenBytes);
    } else if (character.length == 1) {
        append(code);
    } else if (installed->kind == CodePageKind::kDoubleByte) {
        append(code >> 8);
        append(code & 0xFF);
    } else {
        AppendUtf8(text, code);
    }
}

bool IsCharacterStart(std::string_view text, std::size_t at) {
    if (at == 0 || at >= text.size()) return true;
    switch (installed->kind) {
        case CodePageKind::kDoubleByte:
            return !IsSecondByte(text, at);
        case CodePageKind::kUtf8:
            return !IsInsideUtf8(text, at);
        default:
            return true;
    }
}

bool HasBrokenCharacters(std::string_view text) {
    if (installed->kind == CodePageKind::kSingleByte) return false;
    for (std::size_t at = 0; at < text.size();) {
        const Character character = CharacterAt(text, at);
        if (character.broken) return true;
        at += character.length;
    }
    return false;
}

std::size_t FindCharacter(std::string_view text, char character, std::size_t from) {
    std::size_t found = text.find(character, from);
    if (!AsciiMayBeSecond()) return found;
    while (found != kNowhere && IsSecondByte(text, found)) found = text.find(character, found + 1);
    return found;
}

std::size_t FindLastCharacter(std::string_view text, char character, std::size_t end) {
    text = text.substr(0, end);
    std::size_t found = text.rfind(character);
    if (!AsciiMayBeSecond()) return found;
    // A second byte has its lead byte in front.
    while (found != kNowhere && IsSecondByte(text, found)) found = text.rfind(character, found - 1);
    return found;
}

std::size_t FindAnyCharacter(std::string_view text, std::string_view characters, std::size_t from) {
    std::size_t found = text.find_first_of(characters, from);
    if (!AsciiMayBeSecond()) return found;
    while (found != kNowhere && IsSecondByte(text, found)) {
        found = text.find_first_of(characters, found + 1);
    }
    return found;
}

std::size_t FindLastAnyCharacter(std::string_view text, std::string_view characters,
                                 std::size_t end) {
    text = text.substr(0, end);
    std::size_t found = text.find_last_of(characters);
    if (!AsciiMayBeSecond()) return found;
    while (found != kNowhere && IsSecondByte(text, found)) {
        found = text.find_last_of(characters, found - 1);
    }
    return found;
}

bool EndsInCharacter(std::string_view text, char character) {
    if (!text.ends_with(character)) return false;
    return !AsciiMayBeSecond() || !IsSecondByte(text, text.size() - 1);
}

std::size_t FindText(std::string_view text, std::string_view find, std::size_t from) {
    std::size_t found = text.find(find, from);
    if (installed->kind == CodePageKind::kSingleByte) return found;
    for (std::size_t at = from; found != kNowhere; found = text.find(find, found + 1)) {
        at = StartAtOrAfter(text, at, found);
        const std::size_t end = found + find.size();
        if (at == found && StartAtOrAfter(text, at, end) == end) break;
    }
    return found;
}

std::vector<std::string_view> SplitAtAny(std::string_view text, std::string_view characters) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = FindAnyCharacter(text, characters);
        parts.push_back(text.substr(0, end));
        if (end == kNowhere) return parts;
        text.remove_prefix(end + 1);
    }
}

std::string_view CutToBytes(std::string_view text, std::size_t mostBytes) {
    if (text.size() <= mostBytes) return text;
    while (!IsCharacterStart(text, mostBytes)) --mostBytes;
    return text.substr(0, mostBytes);
}

}  // namespace depot
