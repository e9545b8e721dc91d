#include "config/profile_bytes.h"

#include <algorithm>

#include "config/profile_blanks.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kNewLine = "\r\n";

// In no code page a line end is a part of another character, whatever half of one is before it.
std::string_view LineBreak(std::string_view text) {
    const std::size_t at = std::min(text.find_first_of(kNewLine), text.size());
    return text.substr(at, text.substr(at).starts_with(kNewLine) ? kNewLine.size() : 1);
}

class LineEditor {
public:
    LineEditor(std::string_view profile, const ProfileLineEdit& edit, LetterCase letters)
        : profile_(profile), edit_(edit), letters_(letters) {}

    std::string Run() const {
        bool inSection = false;
        std::size_t newLine = 0;
        std::size_t end = profile_.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
        while (end < profile_.size()) {
            const std::size_t start = end;
            const std::string_view rest = profile_.substr(start);
            const std::string_view lineBreak = LineBreak(rest);
            end = static_cast<std::size_t>(lineBreak.data() + lineBreak.size() - profile_.data());
            const std::string_view line = profile_.substr(start, end - start);
            if (const auto section = SectionOf(line)) {
                if (inSection) break;
                inSection = AreSame(*section, TrimProfileBlanks(edit_.section));
            } else if (inSection && IsWanted(line)) {
                return Around(start, end, edit_.value ? Changed(line, lineBreak) : std::string());
            }
            if (inSection && !TrimProfileBlanks(line).empty()) newLine = end;
        }
        return edit_.value ? Added(newLine) : std::string(profile_);
    }

private:
    bool AreSame(std::string_view left, std::string_view right) const {
        if (letters_ == LetterCase::kOfCodePage) return EqualsNoCase(left, right);
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
        return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                          [&](char a, char b) { return lower(a) == lower(b); });
    }

    // Returns the name of the section that the line begins.
    std::optional<std::string_view> SectionOf(std::string_view line) const {
        const std::string_view text = TrimProfileBlanks(line);
        if (!text.starts_with('[')) return std::nullopt;
        const std::size_t end =
            letters_ == LetterCase::kOfAscii ? text.rfind(']') : FindLastCharacter(text, ']');
        if (end == std::string_view::npos) return std::nullopt;
        return text.substr(1, end - 1);
    }

    // No code page has the equals sign as a part of another character.
    bool IsWanted(std::string_view line) const {
        return !TrimProfileBlanks(line).empty() &&
               AreSame(TrimProfileBlanks(line.substr(0, line.find('='))),
                       TrimProfileBlanks(edit_.key));
    }

    std::string Changed(std::string_view line, std::string_view lineBreak) const {
        const std::size_t sign = line.find('=');
        const std::string_view key = sign == std::string_view::npos
                                         ? line.substr(0, line.find_last_not_of(kProfileBlanks) + 1)
                                         : line.substr(0, sign);
        return Concatenate({key, "=", *edit_.value, lineBreak});
    }

    // Returns the profile with another text in the place of a part.
    std::string Around(std::size_t start, std::size_t end, std::string_view text) const {
        return Concatenate({profile_.substr(0, start), text, profile_.substr(end)});
    }

    // Returns the profile with a new line at that place, or with a new section without one.
    std::string Added(std::size_t place) const {
        const std::size_t at = place == 0 ? profile_.size() : place;
        const std::string_view before = profile_.substr(0, at);
        const bool isOpen = !before.empty() && before != kByteOrderMark &&
                            kNewLine.find(before.back()) == std::string_view::npos;
        const std::string header =
            place == 0 ? Concatenate({"[", TrimProfileBlanks(edit_.section), "]", kNewLine})
                       : std::string();
        return Around(at, at,
                      Concatenate({isOpen ? kNewLine : std::string_view(), header,
                                   TrimProfileBlanks(edit_.key), "=", *edit_.value, kNewLine}));
    }

    const std::string_view profile_;
    const ProfileLineEdit& edit_;
    const LetterCase letters_;
};

}  // namespace

std::string WithProfileLine(std::string_view profile, const ProfileLineEdit& edit,
                            LetterCase letters) {
    return LineEditor(profile, edit, letters).Run();
}

}  // namespace depot
