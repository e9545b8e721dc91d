#include "platform/code_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/code_pages.h"
#include "support/random_text.h"

namespace depot {
namespace {

using test::CodePageScope;
using test::Encoded;
using test::kCodePages;
using test::RandomTexts;
using testing::ElementsAre;

constexpr std::size_t kNowhere = std::string_view::npos;

// The positions at which characters begin, stepped through from the front.
std::vector<std::size_t> StartsOf(std::string_view text) {
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at < text.size(); at += CharacterLength(text, at)) {
        starts.push_back(at);
    }
    return starts;
}

// Letters of all the pages' languages, what looks like separators in them, and halves.
std::vector<std::string> PiecesOf(unsigned page) {
    std::vector<std::string> pieces = {"\\", "\\",   ".",    "|",    "a",    "A",   "{",
                                       " ",  "\x81", "\x83", "\xE3", "\x80", "\xFF"};
    for (const char16_t letter : std::u16string(u"\u8868\u5341\u30BD\u4E88\u30DD\u30A2\u30C2\u7E37"
                                                u"\uACE0\u8B93\u00C4\u00E4\u0130\u0131\uFF21\u0416"
                                                u"\u0436\u023A\u2C65\u20AC")) {
        std::string encoded = Encoded(page, {&letter, 1});
        if (!encoded.empty()) pieces.push_back(std::move(encoded));
    }
    return pieces;
}

// Runs `check` with many texts of every code page.
template <class Check>
void ForRandomTexts(Check check) {
    for (const unsigned page : kCodePages) {
        SCOPED_TRACE(page);
        const CodePageScope scope(page);
        const std::vector<std::string> pieces = PiecesOf(page);
        RandomTexts random(page);
        for (int round = 0; round < 2000; ++round) {
            const std::string text = round % 4 == 0 ? random.Bytes(16) : random.Pieces(12, pieces);
            SCOPED_TRACE(testing::PrintToString(text));
            check(text, random);
            if (testing::Test::HasFailure()) return;
        }
    }
}

TEST(CodePageTest, WithoutADescriptionEveryByteIsACharacter) {
    EXPECT_EQ(CodePageKind::kSingleByte, InstalledCodePage().kind);
    EXPECT_EQ(1u, CharacterLength("\x95\\", 0));
    EXPECT_EQ(1u, FindCharacter("\x95\\", '\\'));
}

TEST(CharacterAtTest, LengthsFollowTheCodePage) {
    const struct {
        unsigned page;
        const char* text;
        std::size_t length;
        bool broken;
    } rows[] = {
        {1252, "\x95\\", 1, false},
        {932, "\x95\\", 2, false},
        {932, "\xB1\\", 1, false},
        {932, "\x95", 1, true},
        {936, "\x81\\", 2, false},
        {949, "\xB0\xA1", 2, false},
        {950, "\xA4\\", 2, false},
        {65001, "\xC3\xA4", 2, false},
        {65001, "\xE8\xA1\xA8", 3, false},
        {65001, "\xF0\x9F\x98\x80", 4, false},
        {65001, "\xC3", 1, true},
        {65001, "\xC3\\", 1, true},
        {65001, "\xE8\xA1", 1, true},
        {65001, "\x80", 1, true},
        {65001, "\xC0\xAF", 1, true},
        {65001, "\xE0\x80\xAF", 1, true},
        {65001, "\xED\xA0\x80", 1, true},
        {65001, "\xF4\x90\x80\x80", 1, true},
        {65001, "\xF5\x80\x80\x80", 1, true},
        {65001, "a", 1, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.page) + " " + testing::PrintToString(row.text));
        const CodePageScope scope(row.page);
        EXPECT_EQ(row.length, CharacterAt(row.text, 0).length);
        EXPECT_EQ(row.broken, CharacterAt(row.text, 0).broken);
        EXPECT_EQ(row.broken, HasBrokenCharacters(std::string_view(row.text, row.length)));
    }
}

TEST(CharacterAtTest, LeadByteBeforeANulIsACharacterOfItsOwn) {
    const CodePageScope scope(932);
    EXPECT_EQ(1u, CharacterLength(std::string_view("\x95\0a", 3), 0));
    EXPECT_TRUE(IsCharacterStart(std::string_view("\x95\0a", 3), 1));
}

TEST(FindCharacterTest, SecondBytesAreNoSeparators) {
    const struct {
        unsigned page;
        const char* text;
        std::size_t first;
        std::size_t last;
    } rows[] = {
        {1252, "C:\\\x95\\", 2, 4},
        {932, "C:\\\x97\\\x92\xE8\x95\\", 2, 2},  // 予定表
        {932, "\x95\\\\\x8F\\\\x", 2, 5},         // 表\十\x
        {932, "\x83\\.kra", kNowhere, kNowhere},  // ソ
        {932, "\x83\x83\\", 2, 2},                // ャ, then a separator
        {932, "\xB1\\", 1, 1},                    // half-width ア, then a separator
        {936, "\x81\\\\\x81|", 2, 2},
        {949, "\xB0\xA1\\\xB0\xA1", 2, 2},
        {950, "\xA5\\\xB3\\", kNowhere, kNowhere},
        {65001, "\xE8\xA1\xA8\\\xE5\x8D\x81", 3, 3},
        {65001, "\xE8\\\xA1", 1, 1},
        {932, "\x95", kNowhere, kNowhere},
        {932, "", kNowhere, kNowhere},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.page) + " " + testing::PrintToString(row.text));
        const CodePageScope scope(row.page);
        EXPECT_EQ(row.first, FindCharacter(row.text, '\\'));
        EXPECT_EQ(row.last, FindLastCharacter(row.text, '\\'));
    }
}

TEST(FindCharacterTest, YenSignIsNoLetterOfItsOwnInJapanese) {
    EXPECT_EQ("", Encoded(932, u"\u00A5"));
    EXPECT_EQ("\xA5", Encoded(1252, u"\u00A5"));
}

TEST(FoldedCharacterAtTest, SecondBytesKeepTheirCase) {
    const CodePageScope scope(932);
    // ア and ヂ, whose second bytes are A and a.
    EXPECT_NE(FoldedCharacterAt("\x83\x41", 0).code, FoldedCharacterAt("\x83\x61", 0).code);
    // Fullwidth A and a are one letter.
    EXPECT_EQ(FoldedCharacterAt("\x82\x60", 0).code, FoldedCharacterAt("\x82\x81", 0).code);
}

TEST(FoldedCharacterAtTest, LettersFoldInEveryCodePageThatHasThem) {
    const char16_t* const pairs[] = {u"Aa",           u"\u00C4\u00E4", u"\u0178\u00FF",
                                     u"\uFF21\uFF41", u"\u0416\u0436", u"\u03A9\u03C9",
                                     u"\u023A\u2C65"};
    for (const unsigned page : kCodePages) {
        const CodePageScope scope(page);
        for (const std::u16string_view pair : pairs) {
            const std::string upper = Encoded(page, pair.substr(0, 1));
            const std::string lower = Encoded(page, pair.substr(1));
            if (upper.empty() || lower.empty()) continue;
            SCOPED_TRACE(std::to_string(page) + " " + testing::PrintToString(upper));
            EXPECT_EQ(FoldedCharacterAt(upper, 0).code, FoldedCharacterAt(lower, 0).code);
        }
    }
}

TEST(FoldedCharacterAtTest, LettersWithoutOneOtherCaseStayApart) {
    // Both i's of Turkish, the long s, the Kelvin sign, the sharp s and the digraph in title case.
    const char16_t* const pairs[] = {u"\u0130i",      u"\u0131I",      u"\u0131i",
                                     u"\u0130\u0131", u"\u017Fs",      u"\u212Ak",
                                     u"\u1E9E\u00DF", u"\u01C5\u01C6", u"\u00B5\u03BC"};
    for (const unsigned page : {1252u, 1254u, 65001u}) {
        const CodePageScope scope(page);
        for (const std::u16string_view pair : pairs) {
            const std::string one = Encoded(page, pair.substr(0, 1));
            const std::string other = Encoded(page, pair.substr(1));
            if (one.empty() || other.empty()) continue;
            SCOPED_TRACE(std::to_string(page) + " " + testing::PrintToString(one));
            EXPECT_NE(FoldedCharacterAt(one, 0).code, FoldedCharacterAt(other, 0).code);
        }
    }
}

TEST(FoldedCharacterAtTest, BrokenBytesEqualOnlyThemselves) {
    const CodePageScope scope(65001);
    EXPECT_NE(FoldedCharacterAt("\xC3", 0).code, FoldedCharacterAt("\xC3\x83", 0).code);
    EXPECT_NE(FoldedCharacterAt("\xC3", 0).code, FoldedCharacterAt("\xE3", 0).code);
    EXPECT_EQ(FoldedCharacterAt("\xC3", 0).code, FoldedCharacterAt("\xC3", 0).code);
}

TEST(DescribeCodePageTest, DeviceDigitsAreTheSuperscriptsThatThePageHas) {
    EXPECT_THAT(test::DescribedCodePage(1252).deviceDigits, ElementsAre("\xB9", "\xB2", "\xB3"));
    EXPECT_THAT(test::DescribedCodePage(932).deviceDigits, ElementsAre());
    EXPECT_THAT(test::DescribedCodePage(65001).deviceDigits,
                ElementsAre("\xC2\xB9", "\xC2\xB2", "\xC2\xB3"));
}

TEST(FindTextTest, MatchesBeginAndEndWithCharacters) {
    const CodePageScope scope(932);
    EXPECT_EQ(kNowhere, FindText("\x83Program Files", "Program Files"));
    EXPECT_EQ(3u, FindText("\x83PPProgram", "PProgram") + 1);
    EXPECT_EQ(kNowhere, FindText("a\x95\\", "a\x95"));
    EXPECT_EQ(2u, FindText("\x95\\\x95\x5D", "\x95\x5D"));
    EXPECT_EQ(1u, FindText("abc", "", 1));
}

TEST(SplitAtAnyTest, PartsStandBetweenWholeCharacters) {
    const CodePageScope scope(932);
    EXPECT_THAT(SplitAtAny("\x95\\\\\x83|/a", "\\/|"), ElementsAre("\x95\\", "\x83|", "a"));
    EXPECT_THAT(SplitAtAny("", "\\"), ElementsAre(""));
    EXPECT_THAT(SplitAtAny("a\\\\", "\\"), ElementsAre("a", "", ""));
}

TEST(CutToBytesTest, HalvesNoCharacter) {
    const struct {
        unsigned page;
        const char* text;
        std::size_t bytes;
        const char* cut;
    } rows[] = {{1252, "\x95\\a", 1, "\x95"},     {932, "\x95\\a", 1, ""},
                {932, "\x95\\a", 2, "\x95\\"},    {932, "\x95\\a", 3, "\x95\\a"},
                {932, "\x95\\a", 9, "\x95\\a"},   {932, "\x95\x95\x95\x95", 3, "\x95\x95"},
                {65001, "a\xE8\xA1\xA8", 3, "a"}, {65001, "\xF0\x9F\x98\x80", 3, ""},
                {65001, "\xE8\xA1", 1, "\xE8"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.page) + " " + testing::PrintToString(row.text));
        const CodePageScope scope(row.page);
        EXPECT_EQ(row.cut, CutToBytes(row.text, row.bytes));
    }
}

TEST(CodePageTest, EveryPositionKnowsWhetherACharacterBeginsThere) {
    ForRandomTexts([](const std::string& text, RandomTexts&) {
        const std::vector<std::size_t> starts = StartsOf(text);
        for (std::size_t at = 0; at < text.size(); ++at) {
            ASSERT_EQ(std::binary_search(starts.begin(), starts.end(), at),
                      IsCharacterStart(text, at))
                << at;
        }
    });
}

TEST(CodePageTest, SearchesFindWhatSteppingThroughFinds) {
    ForRandomTexts([](const std::string& text, RandomTexts& random) {
        const std::string set = "\\|A";
        std::vector<std::size_t> separators, any;
        for (const std::size_t at : StartsOf(text)) {
            if (CharacterLength(text, at) != 1) continue;
            if (text[at] == '\\') separators.push_back(at);
            if (set.find(text[at]) != std::string::npos) any.push_back(at);
        }
        separators.push_back(kNowhere);
        any.push_back(kNowhere);
        ASSERT_EQ(separators.front(), FindCharacter(text, '\\'));
        ASSERT_EQ(any.front(), FindAnyCharacter(text, set));
        separators.insert(separators.begin(), kNowhere);
        any.insert(any.begin(), kNowhere);
        ASSERT_EQ(*(separators.end() - 2), FindLastCharacter(text, '\\'));
        ASSERT_EQ(*(any.end() - 2), FindLastAnyCharacter(text, set));
        const bool ends = !text.empty() && *(separators.end() - 2) == text.size() - 1;
        ASSERT_EQ(ends, EndsInCharacter(text, '\\'));
        const std::string_view cut = CutToBytes(text, random.Below(18));
        ASSERT_TRUE(IsCharacterStart(text, cut.size()));
    });
}

TEST(CodePageTest, CharactersAppendedOneByOneMakeTheText) {
    ForRandomTexts([](const std::string& text, RandomTexts&) {
        std::string copy;
        for (const std::size_t at : StartsOf(text)) AppendCharacter(copy, CharacterAt(text, at));
        ASSERT_EQ(text, copy);
    });
}

TEST(CodePageTest, FoldingTwiceChangesNothing) {
    ForRandomTexts([](const std::string& text, RandomTexts&) {
        for (const std::size_t at : StartsOf(text)) {
            const Character folded = FoldedCharacterAt(text, at);
            std::string lower;
            AppendCharacter(lower, folded);
            ASSERT_EQ(folded.code, FoldedCharacterAt(lower, 0).code);
        }
    });
}

TEST(CodePageTest, TextsOfManyLeadBytesAreSearchedInOneWalk) {
    const CodePageScope scope(932);
    const std::string text = std::string(200'000, '\x95') + "\\";
    EXPECT_EQ(text.size() - 1, FindLastCharacter(text, '\\'));
    EXPECT_EQ(kNowhere, FindText(text, "\x95"));
}

}  // namespace
}  // namespace depot
