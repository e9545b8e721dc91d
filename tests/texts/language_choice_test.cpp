#include "texts/language_choice.h"

#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "config/languages.h"

namespace depot {
namespace {

constexpr std::uint16_t kGerman = 0x0407;
constexpr std::uint16_t kFrench = 0x040C;
constexpr std::uint16_t kPolish = 0x0415;

using Text = std::optional<std::string>;

LanguageSettings Configured(Text name, Text available, Text global = {}) {
    return {"1", std::move(name), std::move(available), std::move(global)};
}

LanguageSettings OfTheUser(Text available, Text global = {}) {
    return {{}, {}, std::move(available), std::move(global)};
}

TEST(LanguageMethodTest, OnlyTheNumberOneAsksForTheConfiguredLanguage) {
    for (const char* text : {"1", "01", "0001", "+1", " 1", "\t1 "}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(UsesConfiguredLanguage(text));
    }
    for (const char* text : {"", " ", "0", "2", "10", "11", "-1", "1x", "x1", "1.0", "one", "0x1",
                             "+", "+-1", "++1", "1 1", "4294967297", "99999999999999999999"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(UsesConfiguredLanguage(text));
    }
    EXPECT_FALSE(UsesConfiguredLanguage(std::nullopt));
    EXPECT_FALSE(UsesConfiguredLanguage(std::string(100000, '1')));
}

TEST(LanguageNameTest, EveryRowOfTheTableHasItsName) {
    const std::pair<std::uint16_t, const char*> rows[] = {
        {0x00, "NOLANGUAGE"}, {0x09, "eng"}, {0x0C, "fra"}, {0x0A, "esp"},
        {0x07, "deu"},        {0x10, "ita"}, {0x11, "jpn"}, {0x16, "prt"}};
    EXPECT_EQ(std::size(kLanguages) + 1, std::size(rows));
    for (const auto& [primary, name] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(name, LanguageNameOf(primary));
        EXPECT_EQ(name, LanguageNameOf(static_cast<std::uint16_t>(primary | 0x0400)));
        EXPECT_EQ(name, LanguageNameOf(static_cast<std::uint16_t>(primary | 0xFC00)));
    }
}

TEST(LanguageNameTest, EveryOtherLanguageHasTheNameOfTheFirstRow) {
    int named = 0;
    for (std::uint16_t primary = 0; primary < 0x400; ++primary) {
        if (LanguageNameOf(primary) != "NOLANGUAGE") ++named;
    }
    EXPECT_EQ(std::ssize(kLanguages), named);
    EXPECT_EQ("NOLANGUAGE", LanguageNameOf(kPolish));
    // The tenth bit belongs to the primary language.
    EXPECT_EQ("NOLANGUAGE", LanguageNameOf(0x0209));
}

TEST(LanguageChoiceTest, ConfiguredLanguageThatIsAvailableIsChosen) {
    EXPECT_EQ("fra", ChooseLanguageName(Configured("fra", "eng fra"), kGerman));
}

TEST(LanguageChoiceTest, ConfiguredMethodNeverAsksForTheLanguageOfTheUser) {
    EXPECT_EQ("eng", ChooseLanguageName(Configured("ita", "eng deu"), kGerman));
    EXPECT_EQ("eng", ChooseLanguageName(Configured({}, "eng deu"), kGerman));
}

TEST(LanguageChoiceTest, EmptyConfiguredLanguageIsPassedOver) {
    EXPECT_EQ("deu", ChooseLanguageName(Configured("", "eng deu", "deu"), kFrench));
}

TEST(LanguageChoiceTest, LanguageOfTheUserThatIsAvailableIsChosen) {
    EXPECT_EQ("deu", ChooseLanguageName(OfTheUser("eng deu"), kGerman));
}

TEST(LanguageChoiceTest, UsersMethodIgnoresTheConfiguredLanguage) {
    EXPECT_EQ("deu", ChooseLanguageName({"0", "fra", "fra deu", {}}, kGerman));
    EXPECT_EQ("fra", ChooseLanguageName({"0", "deu", "fra deu", {}}, kPolish));
}

TEST(LanguageChoiceTest, LanguageWithoutANameTakesAllFallbacks) {
    EXPECT_EQ("NOLANGUAGE", ChooseLanguageName(OfTheUser("eng NOLANGUAGE deu", "deu"), kPolish));
    EXPECT_EQ("deu", ChooseLanguageName(OfTheUser("eng deu", "deu"), kPolish));
    EXPECT_EQ("eng", ChooseLanguageName(OfTheUser("eng deu", "esp"), kPolish));
    EXPECT_EQ("eng", ChooseLanguageName(OfTheUser("eng deu"), kPolish));
}

TEST(LanguageChoiceTest, ListWithoutWordsOffersNoLanguage) {
    for (const Text& available : {Text(), Text(""), Text(" \t \t")}) {
        EXPECT_EQ(std::nullopt, ChooseLanguageName(OfTheUser(available, "eng"), kGerman));
        EXPECT_EQ(std::nullopt, ChooseLanguageName(Configured("fra", available, "eng"), kGerman));
    }
}

TEST(LanguageChoiceTest, NameInsideALongerWordCountsAsAvailable) {
    EXPECT_EQ("eng", ChooseLanguageName(OfTheUser("english"), 0x0409));
    EXPECT_EQ("ran", ChooseLanguageName(Configured("ran", "eng fra\tgranada"), kGerman));
    EXPECT_EQ("ng f", ChooseLanguageName(OfTheUser("eng fra", "ng f"), kPolish));
}

TEST(LanguageChoiceTest, NamesAreComparedWithTheirCase) {
    EXPECT_EQ("ENG", ChooseLanguageName(OfTheUser("ENG DEU", "deu"), kGerman));
}

TEST(LanguageChoiceTest, EmptyMachineDefaultIsFoundInEveryList) {
    EXPECT_EQ("", ChooseLanguageName(OfTheUser("eng fra", ""), kGerman));
    EXPECT_EQ("", ChooseLanguageName(OfTheUser({}, ""), kGerman));
    EXPECT_EQ("fra", ChooseLanguageName(OfTheUser("eng fra", ""), kFrench));
}

TEST(LanguageChoiceTest, FirstWordEndsAtABlankOrATab) {
    for (const char* available : {"ita", " ita eng", "\t\t ita\teng", "ita\t", "ita eng\tfra"}) {
        SCOPED_TRACE(available);
        EXPECT_EQ("ita", ChooseLanguageName(OfTheUser(available), kPolish));
    }
    EXPECT_EQ("ita,eng", ChooseLanguageName(OfTheUser("ita,eng"), kPolish));
}

TEST(LanguageChoiceTest, LongListIsSearchedToItsEnd) {
    const std::string list = std::string(10000, 'x') + " deu";
    EXPECT_EQ("deu", ChooseLanguageName(OfTheUser(list), kGerman));
    EXPECT_EQ(std::string(10000, 'x'), ChooseLanguageName(OfTheUser(list), kFrench));
}

// Chooses into the first `size` bytes of a buffer full of junk and checks that no other changes.
std::pair<std::uint32_t, std::string> ChooseInto(const LanguageSettings& settings,
                                                 std::size_t size) {
    std::array<char, 16> buffer;
    buffer.fill('#');
    const auto result = ChooseDottedLanguage(settings, kGerman, std::span(buffer.data(), size));
    for (std::size_t beyond = size; beyond < buffer.size(); ++beyond) {
        EXPECT_EQ('#', buffer.at(beyond)) << beyond;
    }
    return {result, size == 0 ? std::string("untouched") : std::string(buffer.data())};
}

TEST(DottedLanguageTest, NameGetsADotUnlessItHasOne) {
    EXPECT_EQ(std::pair(0U, std::string(".deu")), ChooseInto(OfTheUser("deu"), 16));
    EXPECT_EQ(std::pair(0U, std::string(".fra")), ChooseInto(Configured(".fra", "x.fra"), 16));
    EXPECT_EQ(std::pair(0U, std::string(".")), ChooseInto(OfTheUser("eng", ""), 16));
}

TEST(DottedLanguageTest, NameIsCutToTheBuffer) {
    const char* const expected[] = {"", ".", ".d", ".de", ".deu", ".deu"};
    for (std::size_t size = 1; size <= std::size(expected); ++size) {
        SCOPED_TRACE(size);
        EXPECT_EQ(std::pair(0U, std::string(expected[size - 1])),
                  ChooseInto(OfTheUser("deu"), size));
    }
    EXPECT_EQ(std::pair(0U, std::string(".f")), ChooseInto(Configured(".fra", ".fra"), 3));
}

TEST(DottedLanguageTest, BufferWithoutRoomFails) {
    EXPECT_EQ(std::pair(1627U, std::string("untouched")), ChooseInto(OfTheUser("deu"), 0));
    EXPECT_EQ(1627U, ChooseDottedLanguage(OfTheUser("deu"), kGerman, {}));
}

TEST(DottedLanguageTest, MissingLanguageFailsAndEmptiesTheBuffer) {
    EXPECT_EQ(std::pair(1627U, std::string()), ChooseInto(OfTheUser({}), 16));
    EXPECT_EQ(std::pair(1627U, std::string()), ChooseInto(OfTheUser(" "), 1));
}

TEST(LanguageLibraryPathTest, LanguageStandsBeforeTheExtension) {
    EXPECT_EQ("c:\\farrow\\depotintr.eng.nls",
              LanguageLibraryPath("c:\\farrow\\depotintr.nls", ".eng"));
    EXPECT_EQ("c:\\a..nls", LanguageLibraryPath("c:\\a.nls", "."));
}

TEST(LanguageLibraryPathTest, PathIsCutAtTheFirstExtension) {
    EXPECT_EQ("c:\\data.eng.nls", LanguageLibraryPath("c:\\data.nls\\depotintr.nls", ".eng"));
}

TEST(LanguageLibraryPathTest, PathWithoutTheExtensionHasNoVariant) {
    EXPECT_EQ(std::nullopt, LanguageLibraryPath("c:\\farrow\\depotintr.nl", ".eng"));
    EXPECT_EQ(std::nullopt, LanguageLibraryPath("", ".eng"));
}

TEST(LanguageLibraryPathTest, ExtensionBeyondTheLimitIsNotSeen) {
    const std::string folder(256, 'x');
    EXPECT_EQ(folder + ".eng.nls", LanguageLibraryPath(folder + ".nls", ".eng"));
    EXPECT_EQ(std::nullopt, LanguageLibraryPath("x" + folder + ".nls", ".eng"));
    EXPECT_EQ(std::nullopt, LanguageLibraryPath(std::string(100000, 'x') + ".nls", ".eng"));
}

// Settings of random short texts over an alphabet in which names, blanks and NULs meet often.
class RandomSettings {
public:
    LanguageSettings Next() { return {Maybe(), Maybe(), Maybe(), Maybe()}; }
    std::uint16_t LanguageId() { return static_cast<std::uint16_t>(random_()); }
    std::size_t Below(std::size_t limit) { return random_() % limit; }

private:
    std::optional<std::string> Maybe() {
        if (Below(4) == 0) return std::nullopt;
        static const std::vector<std::string> kParts = {
            "eng", "deu", "fra", "NOLANGUAGE",         " ",   "\t",
            ".",   "1",   "+",   std::string(1, '\0'), "\xE9"};
        std::string text;
        for (std::size_t parts = Below(6); parts > 0; --parts) text += kParts[Below(kParts.size())];
        return text;
    }

    std::mt19937 random_{20};
};

TEST(LanguageChoiceTest, AnySettingsGiveAMentionedNameOrNone) {
    RandomSettings random;
    for (int round = 0; round < 20000; ++round) {
        const LanguageSettings settings = random.Next();
        const std::uint16_t userLanguage = random.LanguageId();
        const Text name = ChooseLanguageName(settings, userLanguage);
        const std::string list = settings.availableLanguages.value_or("");
        ASSERT_TRUE(!name || list.find(*name) != std::string::npos) << round;
        ASSERT_TRUE(name || list.find_first_not_of(" \t") == std::string::npos) << round;

        std::vector<char> buffer(random.Below(8), '#');
        const auto result = ChooseDottedLanguage(settings, userLanguage, buffer);
        ASSERT_EQ(name && !buffer.empty() ? 0U : 1627U, result) << round;
        ASSERT_TRUE(buffer.empty() || std::memchr(buffer.data(), '\0', buffer.size()) != nullptr);
        ASSERT_TRUE(result != 0 || buffer.size() < 2 || buffer[0] == '.') << round;
    }
}

}  // namespace
}  // namespace depot
