#include "depotctl/wildcard.h"

#include <gtest/gtest.h>

#include <string>

#include "support/code_pages.h"

namespace depot::ctl {
namespace {

using test::CodePageScope;
using test::Encoded;

TEST(WildcardTest, PatternHasAStarOrAQuestionMark) {
    EXPECT_TRUE(HasWildcard("*.kre"));
    EXPECT_TRUE(HasWildcard("a?"));
    EXPECT_FALSE(HasWildcard("a.kre"));
    EXPECT_FALSE(HasWildcard(""));
    EXPECT_FALSE(HasWildcard("[ab].kre"));
}

TEST(WildcardTest, WholeNameHasToMatch) {
    const struct {
        const char* name;
        const char* pattern;
        bool matches;
    } rows[] = {
        {"office.kre", "*.kre", true},
        {"office.kre", "*", true},
        {"office.kre", "o*e", true},
        {"office.kre", "office.kre", true},
        {"office.kre", "*.kr", false},
        {"office.kre", "ffice.kre", false},
        {"office.kre", "offic?.kre", true},
        {"office.kre", "office?.kre", false},
        {"office.kre", "*.*", true},
        {"office", "*.*", false},
        {"office", "office*", true},
        {"office", "*office*", true},
        {"aab", "*ab", true},
        {"abab", "*ab", true},
        {"mississippi", "m*iss*pi", true},
        {"mississippi", "m*iss*x", false},
        {"", "*", true},
        {"", "?", false},
        {"", "", true},
        {"a", "", false},
        {"a", "**", true},
        {"abc", "*?*?*?*", true},
        {"ab", "*?*?*?*", false},
        {"OFFICE.KRE", "*.kre", true},
        {"[x].kre", "[x].kre", true},
        {"%s%n", "%s*", true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.matches, MatchesWildcard(row.name, row.pattern))
            << row.name << " " << row.pattern;
    }
}

TEST(WildcardTest, QuestionMarkIsOneCharacterInEveryCodePage) {
    for (const unsigned page : {932u, 936u, 65001u}) {
        SCOPED_TRACE(page);
        const CodePageScope scope(page);
        const std::string name = Encoded(page, u"\u8868") + ".kra";
        EXPECT_TRUE(MatchesWildcard(name, "?.kra"));
        EXPECT_FALSE(MatchesWildcard(name, "??.kra"));
        EXPECT_TRUE(MatchesWildcard(name, Encoded(page, u"\u8868") + "*"));
    }
}

TEST(WildcardTest, LetterCaseCountsInNoCodePage) {
    for (const unsigned page : {1252u, 65001u}) {
        SCOPED_TRACE(page);
        const CodePageScope scope(page);
        EXPECT_TRUE(MatchesWildcard(Encoded(page, u"B\u00DCRO.kre"), Encoded(page, u"b\u00FC*")));
    }
    const CodePageScope scope(932);
    EXPECT_TRUE(MatchesWildcard(Encoded(932, u"\u041F\u043B.kre"), Encoded(932, u"\u043F*")));
    // The second byte of the first character is the letter that the pattern begins with.
    EXPECT_FALSE(MatchesWildcard(Encoded(932, u"\u30A2"), "*a"));
}

TEST(WildcardTest, ManyStarsOnALongNameEnd) {
    std::string pattern;
    for (int count = 0; count < 1000; ++count) pattern += "*a";
    EXPECT_FALSE(MatchesWildcard(std::string(2000, 'a'), pattern + "b"));
    EXPECT_TRUE(MatchesWildcard(std::string(2000, 'a'), pattern));
}

}  // namespace
}  // namespace depot::ctl
