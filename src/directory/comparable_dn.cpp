#include "directory/comparable_dn.h"

#include <algorithm>
#include <vector>

#include "directory/dn_escapes.h"
#include "platform/code_page.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::string_view kEnds = ",+=";

bool IsEnd(char c) {
    return kEnds.find(c) != std::string_view::npos;
}

std::string_view NumberOf(std::string_view character) {
    if (character == "\\") return "\\5c";
    if (character == ",") return "\\2c";
    return character == "+" ? "\\2b" : "\\3d";
}

// The text as far as it is known, which holds no end but those of names and values.
class Comparable {
public:
    // A sign that has a meaning where it stands.
    void AddEnd(char end) {
        if (text_.ends_with(' ')) text_.pop_back();
        text_.push_back(end);
        isInValue_ = end == '=';
    }

    // A character of a name or a value; however it is escaped it looks the same.
    void AddCharacter(std::string_view character) {
        if (character == " ") {
            const bool isNothing = text_.empty() || text_.back() == ' ' || IsEnd(text_.back());
            if (!isNothing) text_.push_back(' ');
        } else {
            // By the number of each, so that none of them looks like an end or begins an escape.
            const bool isEnd = character.size() == 1 && IsEnd(character.front());
            text_.append(isEnd || character == "\\" ? NumberOf(character) : character);
        }
    }

    bool IsInValue() const { return isInValue_; }

    std::string Take() {
        if (text_.ends_with(' ')) text_.pop_back();
        return std::move(text_);
    }

private:
    std::string text_;
    bool isInValue_ = false;
};

// Returns the DN and those of all entries above it.
std::vector<std::string_view> LevelsOf(std::string_view dn) {
    std::vector<std::string_view> levels;
    for (; !dn.empty(); dn = ParentDN(dn)) levels.push_back(dn);
    return levels;
}

// Returns what a level adds to the one above it.
std::string ComponentOf(std::string_view dn) {
    const std::size_t above = ParentDN(dn).size();
    return ComparableDN(dn.substr(0, above > 0 ? dn.size() - above - 1 : dn.size()));
}

// Whether no rule makes the two components one.
bool AreDistinct(const std::string& component, const std::string& other) {
    const auto attribute = [](const std::string& text) { return text.substr(0, text.find('=')); };
    return attribute(component) != attribute(other) ||
           !(HasVariants(component) || HasVariants(other));
}

}  // namespace

std::string ComparableDN(std::string_view dn) {
    Comparable text;
    const std::string lower = ToLower(dn);
    const std::string_view rest = lower;
    for (std::size_t at = 0; at < rest.size();) {
        const std::size_t escape = EscapeLength(rest, at);
        const std::size_t length = escape > 0 ? escape : CharacterLength(rest, at);
        const std::string_view part = rest.substr(at, length);
        at += length;
        if (escape > 0) {
            text.AddCharacter(ToLower(UnescapedName(part)));
        } else if (length == 1 && IsEnd(part.front()) && !(part == "=" && text.IsInValue())) {
            text.AddEnd(part.front());
        } else {
            text.AddCharacter(part);
        }
    }
    return text.Take();
}

bool AreOneName(std::string_view name, std::string_view other) {
    const auto comparable = [](std::string_view text) {
        return ComparableDN(Concatenate({"x=", EscapedName(text)}));
    };
    return name == other || comparable(name) == comparable(other);
}

bool HasVariants(std::string_view name) {
    // The first byte of a longer character is above ASCII in every code page, and so is a byte that
    // stands as an escape.
    for (std::size_t at = 0; at < name.size(); ++at) {
        if (static_cast<unsigned char>(name[at]) >= 0x80) return true;
        if (EscapeLength(name, at) > 0 && HexByte(name, at + 1).value_or(0) >= 0x80) return true;
    }
    return false;
}

std::optional<EntriesInDoubt> FindDoubt(std::string_view dn, std::string_view other) {
    const std::vector<std::string_view> first = LevelsOf(dn), second = LevelsOf(other);
    const std::size_t common = std::min(first.size(), second.size());
    bool isDoubtful = false;
    for (std::size_t fromTop = 1; fromTop <= common; ++fromTop) {
        const std::string component = ComponentOf(first[first.size() - fromTop]);
        const std::string another = ComponentOf(second[second.size() - fromTop]);
        if (component == another) continue;
        if (AreDistinct(component, another)) return std::nullopt;
        isDoubtful = true;
    }
    if (!isDoubtful) return std::nullopt;
    return EntriesInDoubt{std::string(first[first.size() - common]),
                          std::string(second[second.size() - common])};
}

std::string_view ParentDN(std::string_view dn) {
    bool isQuoted = false;
    for (std::size_t at = 0; at < dn.size(); at += CharacterLength(dn, at)) {
        if (dn[at] == '"') isQuoted = !isQuoted;
        if (dn[at] == ',' && !isQuoted) return dn.substr(at + 1);
        // What follows belongs to the name.
        if (dn[at] == '\\') ++at;
        if (at >= dn.size()) break;
    }
    return {};
}

}  // namespace depot
