#include "depotctl/schema_classes.h"

#include <algorithm>
#include <string_view>

#include "depotctl/ascii.h"
#include "depotctl/definition.h"

namespace depot::ctl {
namespace {

using Words = std::vector<std::string>;

// The words of a description; brackets are words, dollar signs mean nothing here. What stands in
// quotes is one word with its first quote, so that it is no key word.
Words WordsOf(const std::string& description) {
    Words words(1);
    bool isQuoted = false;
    for (const char c : description) {
        if (c == '\'') {
            isQuoted = !isQuoted;
            if (isQuoted) words.emplace_back();
        }
        if (isQuoted) {
            words.back() += c;
            continue;
        }
        const bool isBracket = c == '(' || c == ')';
        if (!isBracket && c != ' ' && c != '\'' && c != '$' && c != '\t') {
            words.back() += c;
            continue;
        }
        if (!words.back().empty()) words.emplace_back();
        if (isBracket) {
            words.back() = c;
            words.emplace_back();
        }
    }
    std::erase(words, std::string());
    return words;
}

// What stands behind a key word: one word, or those in brackets.
Words ListBehind(const Words& words, std::string_view keyWord) {
    const auto found = std::find_if(words.begin(), words.end(), [&](const std::string& word) {
        return SameName(word, keyWord);
    });
    if (found == words.end() || found + 1 == words.end()) return {};
    const bool isOne = *(found + 1) != "(";
    Words list(isOne ? found + 1 : found + 2,
               isOne ? found + 2 : std::find(found, words.end(), ")"));
    for (std::string& word : list) {
        if (word.starts_with('\'')) word.erase(0, 1);
    }
    return list;
}

bool Contains(const Words& names, const std::string& name) {
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& one) { return SameName(one, name); });
}

// The names of what a description describes, its object identifier among them.
Words NamesOf(const Words& description) {
    Words names = ListBehind(description, "NAME");
    if (description.size() > 1) names.push_back(description[1]);
    return names;
}

// Empty where the schema has none of that name.
Words Described(const std::vector<std::string>& descriptions, const std::string& name) {
    for (const std::string& description : descriptions) {
        Words words = WordsOf(description);
        if (Contains(NamesOf(words), name)) return words;
    }
    return {};
}

}  // namespace

bool LacksAttribute(const SchemaTexts& schema, const std::string& className,
                    const std::string& attribute) {
    const Words names = NamesOf(Described(schema.attributes, attribute));
    if (names.empty()) return false;
    // A chain that is longer leads in a circle.
    constexpr std::size_t kMostClasses = 64;
    Words classes = {className};
    for (std::size_t next = 0; next < classes.size(); ++next) {
        const Words words = Described(schema.classes, classes[next]);
        if (words.empty() || next == kMostClasses) return false;
        for (const char* const keyWord : {"MUST", "MAY"}) {
            for (const std::string& one : ListBehind(words, keyWord)) {
                if (Contains(names, one)) return false;
            }
        }
        for (const std::string& above : ListBehind(words, "SUP")) {
            if (!Contains(classes, above)) classes.push_back(above);
        }
    }
    // A class for everything names nothing.
    return !Contains(classes, "extensibleObject");
}

}  // namespace depot::ctl
