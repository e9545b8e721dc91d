#include "platform/text.h"

#include <gtest/gtest.h>

#include "support/code_pages.h"
#include "support/random_text.h"

namespace depot {
namespace {

using test::CodePageScope;
using test::Encoded;
using test::RandomTexts;

constexpr std::size_t kNowhere = std::string::npos;

// The rule of ReplaceAllNoCase, spelled out step by step.
std::string ReplacedStepByStep(std::string text, const std::string& find,
                               const std::string& replacement) {
    if (text.empty() || find.empty() || ToLower(find) == ToLower(replacement)) return text;
    for (std::size_t at = 0; (at = ToLower(text).find(ToLower(find), at)) != kNowhere;
         at += replacement.size()) {
        text.replace(at, find.size(), replacement);
    }
    return text;
}

TEST(LowerCaseTest, OnlyTheAsciiCapitalsChangeWithoutAnInstalledCodePage) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const bool capital = byte >= 'A' && byte <= 'Z';
        EXPECT_EQ(static_cast<char>(capital ? byte + 32 : byte),
                  LowerCase(static_cast<char>(byte)));
    }
}

TEST(ToLowerTest, EveryCharacterIsLoweredOnItsOwn) {
    EXPECT_EQ("", ToLower(""));
    EXPECT_EQ("<work>\\sub\\\xC4 1[", ToLower("<WORK>\\Sub\\\xC4 1["));
    EXPECT_EQ(std::string("a\0b", 3), ToLower(std::string_view("A\0B", 3)));
}

TEST(ToLowerTest, SecondBytesStayAsTheyAre) {
    const CodePageScope scope(932);
    EXPECT_EQ(
        "\x83\x41\x83\x5C"
        "a\x82\x81\x95",
        ToLower("\x83\x41\x83\x5C"
                "A\x82\x60\x95"));
}

TEST(ToLowerTest, LettersMayTakeMoreOrFewerBytesUnderUtf8) {
    const CodePageScope scope(65001);
    EXPECT_EQ("\xC3\xA4\xE2\xB1\xA5\xC9\xAB", ToLower("\xC3\x84\xC8\xBA\xE2\xB1\xA2"));
    EXPECT_EQ("\xE8\xA1\xF0\x9F\x98\x80\xC3", ToLower("\xE8\xA1\xF0\x9F\x98\x80\xC3"));
}

TEST(InstallCodePageTest, ComparisonsFoldByTheInstalledPage) {
    {
        const CodePageScope scope(1252);
        EXPECT_TRUE(EqualsNoCase("\xC4", "\xE4"));
        EXPECT_EQ("x\\", ReplaceAllNoCase("<\xE4>\\", "<\xC4>\\", "x\\"));
    }
    EXPECT_FALSE(EqualsNoCase("\xC4", "\xE4"));
}

TEST(EqualsNoCaseTest, DifferentCharactersOfEqualBytesInOtherCaseStayApart) {
    const CodePageScope scope(932);
    EXPECT_FALSE(EqualsNoCase("<\x83\x41>\\", "<\x83\x61>\\"));
    EXPECT_TRUE(EqualsNoCase("<\x82\x60>\\A", "<\x82\x81>\\a"));
    EXPECT_FALSE(EqualsNoCase("\x95", "\x95\\"));
}

TEST(EqualsNoCaseTest, AccentedLettersAreOneNameUnderUtf8) {
    const CodePageScope scope(65001);
    EXPECT_TRUE(EqualsNoCase("\xC3\x84.kra", "\xC3\xA4.KRA"));
    EXPECT_TRUE(EqualsNoCase("\xC8\xBA", "\xE2\xB1\xA5"));
    // The composed letter and the letter with a combining accent are two names.
    EXPECT_FALSE(EqualsNoCase("\xC3\xA4", "a\xCC\x88"));
    EXPECT_FALSE(EqualsNoCase("\xC3", "\xE3"));
}

TEST(EqualsNoCaseTest, LengthAndEveryLetterCount) {
    const struct {
        const char* left;
        const char* right;
        bool equal;
    } rows[] = {{"", "", true},         {"Work", "WORK", true}, {"Work", "Works", false},
                {"Works", "W", false},  {"a1", "A2", false},    {"[", "{", false},
                {"@", "`", false},      {"a", "", false},       {"a b", "A B", true},
                {"\xC4", "\xE4", false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.left) + " and " + row.right);
        EXPECT_EQ(row.equal, EqualsNoCase(row.left, row.right));
        EXPECT_EQ(row.equal, EqualsNoCase(row.right, row.left));
    }
}

TEST(EqualsNoCaseTest, TextsBehindANulCount) {
    EXPECT_FALSE(EqualsNoCase(std::string_view("a\0b", 3), std::string_view("A\0c", 3)));
    EXPECT_TRUE(EqualsNoCase(std::string_view("a\0b", 3), std::string_view("A\0B", 3)));
}

TEST(StartsWithNoCaseTest, TextShorterThanThePrefixDoesNotStartWithIt) {
    EXPECT_TRUE(StartsWithNoCase("<WORK>\\a", "<Work>\\"));
    EXPECT_TRUE(StartsWithNoCase("<work>\\", "<Work>\\"));
    EXPECT_FALSE(StartsWithNoCase("<work>", "<Work>\\"));
    EXPECT_FALSE(StartsWithNoCase("", "<Work>\\"));
    EXPECT_TRUE(StartsWithNoCase("anything", ""));
}

TEST(FindNoCaseTest, FirstOccurrenceFromTheStartPositionIsFound) {
    EXPECT_EQ(0u, FindNoCase("AbcABC", "abc"));
    EXPECT_EQ(3u, FindNoCase("AbcABC", "abc", 1));
    EXPECT_EQ(3u, FindNoCase("AbcABC", "abc", 3));
    EXPECT_EQ(kNowhere, FindNoCase("AbcABC", "abc", 4));
    EXPECT_EQ(5u, FindNoCase("AbcABC", "c", 5));
    EXPECT_EQ(1u, FindNoCase("aaab", "AAB"));
}

TEST(FindNoCaseTest, NothingIsFoundBeyondTheEndOrForAnEmptyText) {
    EXPECT_EQ(kNowhere, FindNoCase("abc", "c", 3));
    EXPECT_EQ(kNowhere, FindNoCase("abc", "c", kNowhere));
    EXPECT_EQ(kNowhere, FindNoCase("abc", ""));
    EXPECT_EQ(kNowhere, FindNoCase("", ""));
    EXPECT_EQ(kNowhere, FindNoCase("ab", "abc"));
}

TEST(ReplaceAllNoCaseTest, EveryOccurrenceInAnyCaseIsReplaced) {
    EXPECT_EQ("C:\\w\\sub\\C:\\w\\b",
              ReplaceAllNoCase("<Work>\\sub\\<work>\\b", "<WORK>\\", "C:\\w\\"));
}

TEST(ReplaceAllNoCaseTest, ReplacementIsInsertedAsGiven) {
    EXPECT_EQ("x$&\\1%sX", ReplaceAllNoCase("xAX", "a", "$&\\1%s"));
}

TEST(ReplaceAllNoCaseTest, InsertedTextIsNotSearchedAgain) {
    EXPECT_EQ("aaaa", ReplaceAllNoCase("aa", "a", "aa"));
    EXPECT_EQ("<a>", ReplaceAllNoCase("a", "A", "<a>"));
}

TEST(ReplaceAllNoCaseTest, TextThatOnlyJoinsUpAfterARemovalStays) {
    EXPECT_EQ("ab", ReplaceAllNoCase("aabb", "ab", ""));
}

TEST(ReplaceAllNoCaseTest, OverlappingOccurrencesAreTakenFromTheLeft) {
    EXPECT_EQ("xa", ReplaceAllNoCase("aaa", "aa", "x"));
}

TEST(ReplaceAllNoCaseTest, EmptyReplacementRemoves) {
    EXPECT_EQ("b\\c", ReplaceAllNoCase("<a>\\b\\<A>\\c", "<a>\\", ""));
}

TEST(ReplaceAllNoCaseTest, FindThatDiffersOnlyInCaseLeavesTheTextUnchanged) {
    EXPECT_EQ("One", ReplaceAllNoCase("One", "one", "ONE"));
}

TEST(ReplaceAllNoCaseTest, EmptyFindOrTextChangesNothing) {
    EXPECT_EQ("text", ReplaceAllNoCase("text", "", "x"));
    EXPECT_EQ("", ReplaceAllNoCase("", "x", "y"));
    EXPECT_EQ("", ReplaceAllNoCase("", "", "y"));
}

TEST(ReplaceAllNoCaseTest, TextsOfAHundredThousandCharactersAreReplacedWhole) {
    std::string text;
    std::string expected;
    while (text.size() < 100'000) {
        text += "<Work>\\sub\\";
        expected += "C:\\w\\sub\\";
    }
    EXPECT_EQ(expected, ReplaceAllNoCase(text, "<wORK>\\", "C:\\w\\"));
    EXPECT_EQ(text, ReplaceAllNoCase(text, "<Home>\\", "C:\\h\\"));
}

TEST(PrefixLengthNoCaseTest, LengthIsThatOfTheTextsOwnBeginning) {
    EXPECT_EQ(2u, PrefixLengthNoCase("ABc", "ab"));
    EXPECT_EQ(std::nullopt, PrefixLengthNoCase("a", "ab"));
    const CodePageScope scope(65001);
    EXPECT_EQ(3u, PrefixLengthNoCase("\xE2\xB1\xA5x", "\xC8\xBA"));
    EXPECT_EQ(2u, PrefixLengthNoCase("\xC8\xBAx", "\xE2\xB1\xA5"));
}

TEST(StartsWithNoCaseTest, PrefixNeverEndsInsideACharacter) {
    const CodePageScope scope(932);
    EXPECT_FALSE(StartsWithNoCase("a\x95\\b", "a\x95"));
    EXPECT_TRUE(StartsWithNoCase("a\x95\\b", "A\x95\\"));
}

TEST(FindNoCaseTest, MatchesBeginWithCharacters) {
    const CodePageScope scope(932);
    EXPECT_EQ(kNowhere, FindNoCase("\x83"
                                   "a",
                                   "A"));
    EXPECT_EQ(2u, FindNoCase("\x83"
                             "aa",
                             "A"));
    EXPECT_EQ(kNowhere, FindNoCase("\x95\\", "\\"));
}

TEST(ReplaceAllNoCaseTest, WhatIsReplacedMayDifferInLengthFromWhatIsLookedFor) {
    const CodePageScope scope(65001);
    EXPECT_EQ("xyxz", ReplaceAllNoCase("\xE2\xB1\xA5y\xC8\xBAz", "\xC8\xBA", "x"));
}

TEST(ReplaceAllNoCaseTest, RandomCharactersAreReplacedAsTheyCompare) {
    for (const unsigned page : test::kCodePages) {
        SCOPED_TRACE(page);
        const CodePageScope scope(page);
        RandomTexts random(page);
        const std::vector<std::string> pieces = {"\\",
                                                 "A",
                                                 "a",
                                                 "\x83",
                                                 "\x95",
                                                 "\xC8",
                                                 Encoded(page, u"\u8868"),
                                                 Encoded(page, u"\u30A2"),
                                                 Encoded(page, u"\u023A"),
                                                 Encoded(page, u"\u2C65"),
                                                 Encoded(page, u"\u00C4"),
                                                 Encoded(page, u"\u00E4")};
        for (int round = 0; round < 2000; ++round) {
            const std::string text = random.Pieces(12, pieces);
            const std::string find = random.Pieces(2, pieces);
            SCOPED_TRACE(testing::PrintToString(text) + " " + testing::PrintToString(find));
            ASSERT_EQ(ToLower(text), ToLower(ToLower(text)));
            ASSERT_TRUE(EqualsNoCase(text, ToLower(text)));
            const auto match = FindMatchNoCase(text, find);
            ASSERT_EQ(match.has_value(), ReplaceAllNoCase(text, find, "xyz") != text);
            if (!match) continue;
            ASSERT_TRUE(IsCharacterStart(text, match->start));
            ASSERT_TRUE(IsCharacterStart(text, match->start + match->length));
            ASSERT_TRUE(EqualsNoCase(text.substr(match->start, match->length), find));
        }
    }
}

TEST(ReplaceAllNoCaseTest, RandomTextsGiveWhatTheRuleGivesStepByStep) {
    RandomTexts random(0x5EED01);
    for (int round = 0; round < 5000; ++round) {
        const std::string text = random.Text(24, "aAbB<>\\");
        const std::string find = random.Text(3, "aAbB<>\\");
        const std::string replacement = random.Text(4, "aAbB<>\\");
        SCOPED_TRACE(text + " | " + find + " | " + replacement);
        ASSERT_EQ(ReplacedStepByStep(text, find, replacement),
                  ReplaceAllNoCase(text, find, replacement));
    }
}

TEST(ReplaceAllNoCaseTest, RandomBytesNeverFindWhatWasReplacedByForeignBytes) {
    RandomTexts random(0x5EED02);
    for (int round = 0; round < 3000; ++round) {
        const std::string text = random.Bytes(40);
        const std::string find = text.empty() ? "a" : text.substr(random.Below(text.size()), 2);
        const std::string replaced = ReplaceAllNoCase(text, find, "");
        ASSERT_LE(replaced.size(), text.size());
        ASSERT_EQ(FindNoCase(text, find) == kNowhere, replaced == text);
    }
}

TEST(EnsureTrailingBackslashTest, OnlyANonEmptyTextGetsOne) {
    EXPECT_EQ("", EnsureTrailingBackslash(""));
    EXPECT_EQ("a\\", EnsureTrailingBackslash("a"));
    EXPECT_EQ("a\\", EnsureTrailingBackslash("a\\"));
    EXPECT_EQ("a\\\\", EnsureTrailingBackslash("a\\\\"));
    EXPECT_EQ("\\", EnsureTrailingBackslash("\\"));
    EXPECT_EQ("a/\\", EnsureTrailingBackslash("a/"));
}

TEST(EnsureTrailingBackslashTest, SecondByteIsNoBackslash) {
    const CodePageScope scope(932);
    EXPECT_EQ("C:\\\x97\\\x92\xE8\x95\\\\", EnsureTrailingBackslash("C:\\\x97\\\x92\xE8\x95\\"));
}

TEST(UpToNulTest, RandomBytesNeverKeepANul) {
    test::RandomTexts random(11);
    for (int round = 0; round < 2000; ++round) {
        const std::string bytes = random.Bytes(300);
        const std::string_view text = UpToNul(bytes);
        EXPECT_EQ(std::string_view::npos, text.find('\0'));
        EXPECT_TRUE(bytes.starts_with(text));
    }
}

TEST(UpToNulTest, TextEndsBeforeItsFirstNul) {
    EXPECT_EQ("ab", UpToNul(std::string_view("ab\0cd\0", 6)));
    EXPECT_EQ("", UpToNul(std::string_view("\0ab", 3)));
    EXPECT_EQ("ab", UpToNul("ab"));
    EXPECT_EQ("", UpToNul(""));
}

TEST(TrimTrailingBlanksTest, OnlyWhiteSpaceAtTheEndIsRemoved) {
    EXPECT_EQ(" a b", TrimTrailingBlanks(" a b \t\r\n\v\f"));
    EXPECT_EQ("", TrimTrailingBlanks(" \t "));
    EXPECT_EQ("", TrimTrailingBlanks(""));
    EXPECT_EQ("a", TrimTrailingBlanks("a"));
    EXPECT_EQ("a\xA0", TrimTrailingBlanks("a\xA0"));
}

}  // namespace
}  // namespace depot
