#include "directory/comparable_dn.h"

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
