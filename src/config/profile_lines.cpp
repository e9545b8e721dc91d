#include "config/profile_lines.h"

#include <algorithm>
#include <utility>

#include "platform/text.h"

namespace depot {
namespace {

// What the profile functions pass over around names and values.
constexpr std::string_view kBlanks = " \t\r\n";

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string AsciiLower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

// Gives the n-th of equal names numbers of their own.
class Occurrences {
public:
    explicit Occurrences(NameTable& names) : names_(names) {}

    std::uint32_t Next(std::string name) {
        const std::uint32_t first = names_.NumberOf(std::move(name));
        const std::uint32_t earlier = seen_[first]++;
        if (earlier == 0) return first;
        return names_.NumberOf(Concatenate({"#", NumberText(first), "#", NumberText(earlier)}));
    }

private:
    NameTable& names_;
    std::unordered_map<std::uint32_t, std::uint32_t> seen_;
};

class Reader {
public:
    Reader(LetterCase letters, NameTable& names)
        : letters_(letters), names_(names), occurrences_(names) {}

    // Returns false where the line shows that the text is no profile.
    bool Read(ProfileLine& line) {
        const std::string_view text = Trimmed(line.text);
        line.section = section_;
        if (text.empty()) {
            line.kind = LineKind::kBlank;
            return true;
        }
        if (text.front() == '[' && ReadHeader(text, line)) return true;
        const bool isComment = text.front() == ';';
        if (!isComment && ReadValue(text, line)) return section_ != 0;
        line.kind = LineKind::kOther;
        line.id = names_.NumberOf(Concatenate({"o", NumberText(section_), "\n", text}));
        return isComment || section_ != 0;
    }

private:
    bool ReadHeader(std::string_view text, ProfileLine& line) {
        const std::size_t end =
            letters_ == LetterCase::kOfAscii ? text.rfind(']') : FindLastCharacter(text, ']');
        if (end == std::string_view::npos) return false;
        line.kind = LineKind::kHeader;
        line.name = text.substr(1, end - 1);
        section_ = occurrences_.Next(Concatenate({"s\n", Folded(line.name)}));
        line.id = line.section = section_;
        return true;
    }

    bool ReadValue(std::string_view text, ProfileLine& line) {
        // No code page has it as a part of another character.
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos) return false;
        const std::string_view key = Trimmed(text.substr(0, equals));
        if (key.empty()) return false;
        line.kind = LineKind::kValue;
        line.name = key;
        line.value = Trimmed(text.substr(equals + 1));
        line.id = occurrences_.Next(Concatenate({"k", NumberText(section_), "\n", Folded(key)}));
        return true;
    }

    std::string Folded(std::string_view name) const {
        return letters_ == LetterCase::kOfAscii ? AsciiLower(name) : ToLower(name);
    }

    const LetterCase letters_;
    NameTable& names_;
    Occurrences occurrences_;
    std::uint32_t section_ = 0;
};

}  // namespace

std::optional<std::vector<ProfileLine>> ReadProfileLines(std::string_view text, LetterCase letters,
                                                         NameTable& names) {
    if (text.find('\0') != std::string_view::npos) return std::nullopt;
    std::vector<ProfileLine> lines;
    lines.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    Reader reader(letters, names);
    while (!text.empty()) {
        ProfileLine line;
        const std::size_t end = text.find('\n');
        line.text = text.substr(0, end == std::string_view::npos ? end : end + 1);
        text.remove_prefix(line.text.size());
        if (!reader.Read(line)) return std::nullopt;
        lines.push_back(line);
    }
    return lines;
}

std::string_view LineEndOf(std::string_view line) {
    if (line.ends_with("\r\n")) return line.substr(line.size() - 2);
    return line.ends_with('\n') ? line.substr(line.size() - 1) : std::string_view();
}

}  // namespace depot
