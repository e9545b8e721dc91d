// The tables of values and languages, and the pages that list them.
#include "config/depot_values.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include "config/languages.h"

namespace depot {
namespace {

std::string Page(const std::string& name) {
    const std::ifstream file(DEPOTINTR_DOCS "/" + name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// What the page says that a value may be.
std::string FormText(const DepotValue& value) {
    const ValueForm& form = value.form;
    if (!value.IsNumber()) return "text";
    if (form.highest == 0xFFFFFFFF) return "number";
    if (value.IsSwitch() && form.words.empty()) return "0 or 1";
    std::string words;
    for (std::size_t number = 0; number < form.words.size(); ++number) {
        words +=
            (number == 0 ? "" : ", ") + std::to_string(number) + " " + form.words[number].meaning;
    }
    if (!words.empty()) return words;
    return std::to_string(form.lowest) + " to " + std::to_string(form.highest);
}

std::string RowText(const DepotValue& value) {
    return "| `" + std::string(value.name) + (value.IsNumbered() ? "1" : "") + "` | " +
           FormText(value) + " | " + DefaultOf(value) + " | " + value.meaning + " |\n";
}

TEST(DepotValuesTest, AdministrationPageListsEveryValue) {
    const std::string page = Page("administration.md");
    ASSERT_FALSE(page.empty()) << "no page in " DEPOTINTR_DOCS;
    for (const ValueScope scope :
         {ValueScope::kDepot, ValueScope::kLocation, ValueScope::kDirectory}) {
        std::string rows;
        for (const DepotValue& value : kDepotValues) {
            if (value.scope == scope) rows += RowText(value);
        }
        EXPECT_NE(std::string::npos, page.find("|---|---|---|---|\n" + rows + "\n"))
            << "docs/administration.md needs a table of exactly these rows:\n"
            << rows;
    }
}

TEST(DepotValuesTest, NamesAndOptionsAreUnique) {
    std::set<std::string> names, options;
    for (const DepotValue& value : kDepotValues) {
        EXPECT_TRUE(names.insert(value.name).second) << value.name;
        if (value.option == nullptr) continue;
        EXPECT_TRUE(options.insert(value.option).second) << value.option;
    }
}

TEST(DepotValuesTest, TextsAreKeptInTextsAndNumbersInNumbers) {
    for (const DepotValue& value : kDepotValues) {
        const bool isNumber =
            std::holds_alternative<std::uint32_t DepotSettings::*>(value.member) ||
            std::holds_alternative<std::uint32_t LocationSettings::*>(value.member);
        EXPECT_EQ(value.IsNumber(), isNumber) << value.name;
    }
}

TEST(DepotValuesTest, DefaultsOfNumbersAreInTheirRanges) {
    for (const DepotValue& value : kDepotValues) {
        if (!value.IsNumber() || value.form.standard != nullptr) continue;
        const auto number = static_cast<std::uint32_t>(std::stoul(DefaultOf(value)));
        EXPECT_LE(value.form.lowest, number) << value.name;
        EXPECT_GE(value.form.highest, number) << value.name;
    }
}

TEST(LanguagesTest, AdministrationPageListsTheLanguagesThatServeOthers) {
    std::string list;
    for (const Language& language : kLanguages) {
        if (language.servesOthers) list += std::string(language.code) + ", ";
    }
    std::string page = Page("administration.md");
    std::replace(page.begin(), page.end(), '\n', ' ');
    EXPECT_THAT(page,
                testing::HasSubstr("the user's language first, then " + list + "then the key"));
}

TEST(LanguagesTest, CodesHaveThreeLettersAndIdentifiersAreUnique) {
    std::set<std::uint16_t> identifiers;
    for (const Language& language : kLanguages) {
        EXPECT_EQ(3u, language.code.size());
        EXPECT_TRUE(identifiers.insert(language.primaryLanguage).second) << language.code;
    }
}

}  // namespace
}  // namespace depot
