#include "platform/text.h"

#include <algorithm>

namespace depot {
namespace {

constexpr CaseTable AsciiCaseTable() {
    CaseTable table{};
    for (int byte = 0; byte < 256; ++byte) {
        const bool upper = byte >= 'A' && byte <= 'Z';
        table[static_cast<std::size_t>(byte)] = static_cast<char>(upper ? byte - 'A' + 'a' : byte);
    }
    return table;
}

CaseTable lowerCase = AsciiCaseTable();

bool SameLetter(char left, char right) {
    return LowerCase(left) == LowerCase(right);
}

}  // namespace

void InstallCaseTable(const CaseTable& lower) {
    lowerCase = lower;
}

char LowerCase(char c) {
    return lowerCase[static_cast<unsigned char>(c)];
}

std::string ToLower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerCase);
    return lower;
}

bool EqualsNoCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), SameLetter);
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
    return EqualsNoCase(text.substr(0, prefix.size()), prefix);
}

std::size_t FindNoCase(std::string_view text, std::string_view find, std::size_t from) {
    if (find.empty() || from >= text.size()) return std::string_view::npos;
    const auto start = text.begin() + static_cast<std::ptrdiff_t>(from);
    const auto found = std::search(start, text.end(), find.begin(), find.end(), SameLetter);
    return found == text.end() ? std::string_view::npos
                               : static_cast<std::size_t>(found - text.begin());
}

std::string ReplaceAllNoCase(std::string_view text, std::string_view find,
                             std::string_view replacement) {
    if (EqualsNoCase(find, replacement)) return std::string(text);
    std::string result;
    std::size_t copied = 0;
    for (std::size_t found; (found = FindNoCase(text, find, copied)) != std::string_view::npos;
         copied = found + find.size()) {
        result.append(text, copied, found - copied);
        result.append(replacement);
    }
    return result.append(text.substr(copied));
}

std::string EnsureTrailingBackslash(std::string text) {
    if (!text.empty() && text.back() != '\\') text.push_back('\\');
    return text;
}

std::string_view UpToNul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

std::string_view TrimTrailingBlanks(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n\v\f");
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

}  // namespace depot
