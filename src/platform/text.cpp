#include "platform/text.h"

#include <algorithm>

namespace depot {
namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

bool HasOnlySingleBytes() {
    return InstalledCodePage().kind == CodePageKind::kSingleByte;
}

bool SameByte(const CaseTable& lower, char left, char right) {
    return lower[static_cast<unsigned char>(left)] == lower[static_cast<unsigned char>(right)];
}

bool EqualBytes(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return false;
    const CaseTable& lower = InstalledCodePage().lower;
    for (std::size_t at = 0; at < left.size(); ++at) {
        if (!SameByte(lower, left[at], right[at])) return false;
    }
    return true;
}

// Returns how many bytes of the text equal `find` from `at` on, or nothing.
std::optional<std::size_t> LengthOfMatch(std::string_view text, std::size_t at,
                                         std::string_view find) {
    const std::size_t start = at;
    for (std::size_t next = 0; next < find.size();) {
        if (at >= text.size()) return std::nullopt;
        const Character one = FoldedCharacterAt(text, at);
        const Character other = FoldedCharacterAt(find, next);
        if (one.code != other.code) return std::nullopt;
        at += one.length;
        next += other.length;
    }
    return at - start;
}

std::optional<TextMatch> FindMatchInBytes(std::string_view text, std::string_view find,
                                          std::size_t from) {
    const CaseTable& lower = InstalledCodePage().lower;
    const auto start = text.begin() + static_cast<std::ptrdiff_t>(from);
    const auto found =
        std::search(start, text.end(), find.begin(), find.end(),
                    [&lower](char left, char right) { return SameByte(lower, left, right); });
    if (found == text.end()) return std::nullopt;
    return TextMatch{static_cast<std::size_t>(found - text.begin()), find.size()};
}

}  // namespace

char LowerCase(char c) {
    return InstalledCodePage().lower[static_cast<unsigned char>(c)];
}

std::string ToLower(std::string_view text) {
    std::string lower;
    if (HasOnlySingleBytes()) {
        const CaseTable& table = InstalledCodePage().lower;
        lower = text;
        for (char& c : lower) c = table[static_cast<unsigned char>(c)];
        return lower;
    }
    lower.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); at += CharacterLength(text, at)) {
        AppendCharacter(lower, FoldedCharacterAt(text, at));
    }
    return lower;
}

bool EqualsNoCase(std::string_view left, std::string_view right) {
    if (!HasOnlySingleBytes()) return LengthOfMatch(left, 0, right) == left.size();
    return EqualBytes(left, right);
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
    if (!HasOnlySingleBytes()) return LengthOfMatch(text, 0, prefix).has_value();
    return EqualBytes(text.substr(0, prefix.size()), prefix);
}

std::optional<std::size_t> PrefixLengthNoCase(std::string_view text, std::string_view prefix) {
    if (!HasOnlySingleBytes()) return LengthOfMatch(text, 0, prefix);
    return StartsWithNoCase(text, prefix) ? std::optional(prefix.size()) : std::nullopt;
}

std::optional<TextMatch> FindMatchNoCase(std::string_view text, std::string_view find,
                                         std::size_t from) {
    if (find.empty() || from >= text.size()) return std::nullopt;
    if (HasOnlySingleBytes()) return FindMatchInBytes(text, find, from);
    for (std::size_t at = from; at < text.size(); at += CharacterLength(text, at)) {
        if (const auto length = LengthOfMatch(text, at, find)) return TextMatch{at, *length};
    }
    return std::nullopt;
}

std::size_t FindNoCase(std::string_view text, std::string_view find, std::size_t from) {
    const std::optional<TextMatch> match = FindMatchNoCase(text, find, from);
    return match ? match->start : kNowhere;
}

std::string ReplaceAllNoCase(std::string_view text, std::string_view find,
                             std::string_view replacement) {
    if (EqualsNoCase(find, replacement)) return std::string(text);
    std::string result;
    std::size_t copied = 0;
    while (const std::optional<TextMatch> match = FindMatchNoCase(text, find, copied)) {
        result.append(text, copied, match->start - copied);
        result.append(replacement);
        copied = match->start + match->length;
    }
    return result.append(text.substr(copied));
}

std::string Concatenate(std::initializer_list<std::string_view> texts) {
    std::size_t length = 0;
    for (const std::string_view text : texts) length += text.size();
    std::string whole;
    whole.reserve(length);
    for (const std::string_view text : texts) whole.append(text);
    return whole;
}

std::string NumberText(std::uint64_t number) {
    return std::to_string(number);
}

std::string CountText(std::uint64_t number, std::string_view one, std::string_view several) {
    if (number == 0) return {};
    return Concatenate({NumberText(number), " ", number == 1 ? one : several});
}

std::string EnsureTrailingBackslash(std::string text) {
    if (!text.empty() && !EndsInCharacter(text, '\\')) text.push_back('\\');
    return text;
}

std::string_view UpToNul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

std::string_view TrimTrailingBlanks(std::string_view text) {
    std::size_t end = text.find_last_not_of(" \t\r\n\v\f") + 1;
    if (!IsCharacterStart(text, end)) ++end;
    return text.substr(0, end);
}

}  // namespace depot
