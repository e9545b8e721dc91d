// The characters of narrow texts: where they begin and end in the ANSI code page, and which of them
// are one letter in two cases.
//
// Narrow texts are looked into through here, text.h and paths.h only. The second byte of a
// double-byte character may be 0x5C, 0x7C or a letter; taken by itself it would be a separator, a
// forbidden character or the other case of another name.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace depot {

enum class CodePageKind : char { kSingleByte, kDoubleByte, kUtf8 };

// Entry n is true for a byte n that begins a double-byte character.
using LeadBytes = std::array<bool, 256>;

// Entry n is the lower case of the character that is the single byte n.
using CaseTable = std::array<char, 256>;

constexpr CaseTable AsciiCaseTable() {
    CaseTable table{};
    for (int byte = 0; byte < 256; ++byte) {
        const bool upper = byte >= 'A' && byte <= 'Z';
        table[static_cast<std::size_t>(byte)] = static_cast<char>(upper ? byte - 'A' + 'a' : byte);
    }
    return table;
}

// What is known of a code page. By default one of single bytes whose ASCII letters fold.
struct CodePage {
    CodePageKind kind = CodePageKind::kSingleByte;
    LeadBytes leads{};
    CaseTable lower = AsciiCaseTable();
    // The lower cases of longer characters by their codes, which are the two bytes of a double-byte
    // character and the code point under UTF-8. Empty when none folds.
    std::vector<char16_t> longLower;
    // The superscripts one to three, which the system takes for the number of a device.
    std::vector<std::string> deviceDigits;
};

// What a system knows of letters. `lower` and `upper` change a text letter by letter; `encode`
// returns a letter as the code page has it, or nothing when the page cannot hold it exactly.
struct SystemLetters {
    std::u16string letters;  // the ones to look at
    std::function<std::u16string(const std::u16string&)> lower;
    std::function<std::u16string(const std::u16string&)> upper;
    std::function<std::string(char16_t)> encode;
};

// Returns every letter above ASCII that is one UTF-16 unit.
std::u16string AllLetters();

// Describes a code page by what the system knows. Two letters fold into one only when each is the
// other's only other case, as file systems compare names: the dotless i, the Kelvin sign and the
// sharp s stay letters of their own.
CodePage DescribeCodePage(CodePageKind kind, const LeadBytes& leads, const SystemLetters& system);

// Makes `page` the one whose characters all narrow texts have. Called before any other thread uses
// the module; what is installed stays until the process ends.
void InstallCodePage(CodePage page);
const CodePage& InstalledCodePage();

// A character by its code, which two equal characters share. A byte that is no character has a code
// that no character has.
struct Character {
    char32_t code;
    std::size_t length;  // in bytes, at least 1
    bool broken;
};

// Returns the character that begins at `at`, which is less than the text's size. A lead byte before
// a NUL or the end is a character of its own, and so is each byte that is not UTF-8.
Character CharacterAt(std::string_view text, std::size_t at);

// The same with the code of the character's lower case.
Character FoldedCharacterAt(std::string_view text, std::size_t at);

inline std::size_t CharacterLength(std::string_view text, std::size_t at) {
    return CharacterAt(text, at).length;
}

// Appends a character of that code and length.
void AppendCharacter(std::string& text, const Character& character);

// Whether a character begins at `at`; the end of a text counts as a beginning.
bool IsCharacterStart(std::string_view text, std::size_t at);

// Whether the text holds a lone lead byte or bytes that are not UTF-8.
bool HasBrokenCharacters(std::string_view text);

// Return the position of the first such character at or after `from`, which is where a character
// begins, or of the last one before `end`; npos when there is none.
//
// REQUIRES: the characters looked for are ASCII.
std::size_t FindCharacter(std::string_view text, char character, std::size_t from = 0);
std::size_t FindLastCharacter(std::string_view text, char character,
                              std::size_t end = std::string_view::npos);
std::size_t FindAnyCharacter(std::string_view text, std::string_view characters,
                             std::size_t from = 0);
std::size_t FindLastAnyCharacter(std::string_view text, std::string_view characters,
                                 std::size_t end = std::string_view::npos);
bool EndsInCharacter(std::string_view text, char character);

// Returns the position of the first occurrence of `find`, letter case included, at or after `from`,
// or npos. An empty `find` is found at `from`.
std::size_t FindText(std::string_view text, std::string_view find, std::size_t from = 0);

// Returns the parts between the given ASCII characters; a text without any is one part.
std::vector<std::string_view> SplitAtAny(std::string_view text, std::string_view characters);

// Returns the longest beginning of the text of at most so many bytes that halves no character.
std::string_view CutToBytes(std::string_view text, std::size_t mostBytes);

}  // namespace depot
