#include "config/profile_text.h"

#include "config/profile_blanks.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// A line as the system may write it: a section's name in brackets, or a name and a value.
struct Line {
    std::string_view name;
    std::string_view value;

    bool IsBlank() const { return name.empty() && value.empty(); }
};

Line ParseLine(std::string_view text) {
    const std::string_view line = TrimProfileBlanks(text);
    // What follows a section's name is nothing.
    if (line.starts_with('[')) return {line.substr(0, FindLastCharacter(line, ']')), {}};
    const std::size_t sign = line.find('=');
    if (sign == std::string_view::npos) return {line, {}};
    return {TrimProfileBlanks(line.substr(0, sign)), TrimProfileBlanks(line.substr(sign + 1))};
}

// The lines of a text, one after the other.
class Lines {
public:
    explicit Lines(std::string_view text) : rest_(text) {
        if (rest_.starts_with(kByteOrderMark)) rest_.remove_prefix(kByteOrderMark.size());
    }

    bool Next(Line& line) {
        if (rest_.empty()) return false;
        const std::size_t end = rest_.find('\n');
        line = ParseLine(rest_.substr(0, end));
        rest_ = end == std::string_view::npos ? std::string_view() : rest_.substr(end + 1);
        return true;
    }

private:
    std::string_view rest_;
};

// Returns the place of the next ASCII character at or after `at`, or the text's size.
std::size_t NextAscii(std::string_view text, std::size_t at) {
    while (at < text.size()) {
        const Character character = CharacterAt(text, at);
        if (character.code < 0x80) break;
        at += character.length;
    }
    return at;
}

bool EqualInAscii(std::string_view left, std::string_view right) {
    for (std::size_t a = 0, b = 0;; ++a, ++b) {
        a = NextAscii(left, a);
        b = NextAscii(right, b);
        if (a == left.size() || b == right.size()) return a == left.size() && b == right.size();
        if (left[a] != right[b]) return false;
    }
}

bool IsSameLine(const Line& left, const Line& right) {
    return EqualInAscii(left.name, right.name) && EqualInAscii(left.value, right.value);
}

}  // namespace

bool LacksLines(std::string_view before, std::string_view after, std::string_view key) {
    const std::string_view name = TrimProfileBlanks(key);
    Lines left(after);
    Lines wanted(before);
    for (Line line; wanted.Next(line);) {
        if (line.IsBlank() || EqualsNoCase(line.name, name)) continue;
        Line present;
        do {
            if (!left.Next(present)) return true;
        } while (!IsSameLine(line, present));
    }
    return false;
}

bool HasValueLine(std::string_view text, std::string_view key, std::string_view value) {
    const Line wanted = {TrimProfileBlanks(key), TrimProfileBlanks(value)};
    Lines lines(text);
    for (Line line; lines.Next(line);) {
        if (EqualsNoCase(line.name, wanted.name) && EqualInAscii(line.value, wanted.value)) {
            return true;
        }
    }
    return false;
}

}  // namespace depot
