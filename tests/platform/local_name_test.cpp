#include "platform/local_name.h"

#include <gtest/gtest.h>

#include <string>

#include "support/code_pages.h"
#include "support/random_text.h"

namespace depot {
namespace {

TEST(IsSafeLocalNameTest, OrdinaryNamesAreSafe) {
    for (const char* name : {"a.krc", "Dir", "a b", "..a", ".a", "console", "com", "com10", "lpt",
                             "nul_", "r\xE9sum\xE9.krc", "a,b", "{x}"}) {
        EXPECT_TRUE(IsSafeLocalName(name)) << name;
    }
}

TEST(IsSafeLocalNameTest, NamesThatLeadElsewhereAreNot) {
    for (const char* name :
         {"",        ".",     "..",       "a\\b",     "..\\a",  "a/b",  "c:a",  "a:stream",
          "a\nb",    "a\x1f", "a\x7f",    "a*",       "a?",     "con",  "NUL",  "nul.krc",
          "aux.a.b", "com1",  "LPT9.txt", "con .krc", "conin$", "com0", "prn ", "a.",
          "a ",      "...",   "a\"",      "<a",       "a>",     "a|b"}) {
        EXPECT_FALSE(IsSafeLocalName(name)) << name;
    }
    EXPECT_FALSE(IsSafeLocalName(std::string_view("a\0b", 3)));
}

TEST(IsSafeForeignNameTest, NamesInTheFormOfShortNamesAreNot) {
    for (const char* name : {"LONGFI~1.KRA", "a~1", "longfi~1.k", "~1.kra", "LO1A2B~1.KRA",
                             "x~123456.kra", "PROGRA~2", "\xC4\xD6~1.kra"}) {
        EXPECT_FALSE(IsSafeForeignName(name)) << name;
        EXPECT_TRUE(IsSafeLocalName(name)) << name;
    }
}

TEST(IsSafeForeignNameTest, OtherNamesWithATildeAreSafe) {
    for (const char* name : {"LONGFIL~1.KRA", "a~.kra", "a~1b.kra", "a~1.kram", "a~1.k.r", "~",
                             "~a", "a1.kra", "backup.kra~1x"}) {
        EXPECT_TRUE(IsSafeForeignName(name)) << name;
    }
    EXPECT_FALSE(IsSafeForeignName("con"));
}

TEST(IsSafeForeignNameTest, ShortNamesAreKnownByTheirCharactersInEveryCodePage) {
    const struct {
        unsigned page;
        const char* name;
        bool safe;
    } rows[] = {{932, "\x95\\\x83\\~1.kra", false},
                {932, "\x83~\x31.kra", true},  // the second byte of ミ is that of a tilde
                {65001, "\xE8\xA1\xA8\xE8\xA1\xA8~1.kra", false},
                {65001, "\xE8\xA1\xA8\xE8\xA1\xA8.kra", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const test::CodePageScope scope(row.page);
        EXPECT_EQ(row.safe, IsSafeForeignName(row.name));
    }
}

TEST(IsSafeLocalNameTest, SecondBytesAreNoForbiddenCharacters) {
    const test::CodePageScope scope(932);
    // レポート.kra, 表.kra and a name that ends in 表.
    EXPECT_TRUE(IsSafeLocalName("\x83\x8C\x83|\x81[\x83g.kra"));
    EXPECT_TRUE(IsSafeLocalName("\x95\\.kra"));
    EXPECT_TRUE(IsSafeLocalName("\x97\\\x92\xE8\x95\\"));
    EXPECT_FALSE(IsSafeLocalName("\x83||"));
    EXPECT_FALSE(IsSafeLocalName("\x95\\\\a"));
}

TEST(IsSafeLocalNameTest, BrokenCharactersMakeANameUnsafe) {
    for (const unsigned page : {932u, 936u, 949u, 950u, 65001u}) {
        SCOPED_TRACE(page);
        const test::CodePageScope scope(page);
        EXPECT_FALSE(IsSafeLocalName("a\xE3"));
        EXPECT_TRUE(IsSafeLocalName("a"));
    }
}

TEST(IsSafeLocalNameTest, SuperscriptsNumberDevicesWhereTheCodePageHasThem) {
    const struct {
        unsigned page;
        const char* name;
        bool safe;
    } rows[] = {{1252, "com\xB9", false},   {1252, "LPT\xB3.txt", false},  {1252, "com\xB1", true},
                {932, "com\xB9", true},     {65001, "com\xC2\xB9", false}, {65001, "comX", true},
                {949, "com\xA9\xF6", false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const test::CodePageScope scope(row.page);
        EXPECT_EQ(row.safe, IsSafeLocalName(row.name));
    }
}

TEST(IsSafeLocalNameTest, NoRandomNameThatIsSafeHoldsAForbiddenCharacter) {
    test::RandomTexts random(12);
    for (int round = 0; round < 5000; ++round) {
        const std::string name = random.Bytes(24);
        if (!IsSafeLocalName(name)) continue;
        EXPECT_EQ(std::string::npos, name.find_first_of("\\/:*?\"<>|"));
    }
}

}  // namespace
}  // namespace depot
