#include "directory/dn_escapes.h"

#include <gtest/gtest.h>

#include "directory/dn.h"
#include "platform/text.h"
#include "support/code_pages.h"
#include "support/random_text.h"

namespace depot {
namespace {

TEST(EscapedNameTest, NamesWithoutSpecialCharactersStayAsTheyAre) {
    for (const char* name :
         {"", "a.krc", "Report 1 (2).krc", "%s", "a#b", "b\xFCro", "a.b..", "~$&'@"}) {
        EXPECT_EQ(name, EscapedName(name));
    }
}

TEST(EscapedNameTest, SpecialCharactersAreEscaped) {
    const struct {
        const char *name, *escaped;
    } rows[] = {
        {"a,b", "a\\,b"},   {"a+b=c", "a\\+b\\=c"}, {"\"<>;", "\\\"\\<\\>\\;"},
        {"a\\b", "a\\\\b"}, {"#1#", "\\#1#"},       {" a b ", "\\20a b\\20"},
        {" ", "\\20"},      {"  ", "\\20\\20"},     {"a\nCNF:1", "a\\0ACNF:1"},
        {"\x7f", "\\7F"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.escaped, EscapedName(row.name));
        EXPECT_EQ(row.name, UnescapedName(row.escaped));
    }
}

TEST(UnescapedNameTest, EveryWayOfEscapingIsUnderstood) {
    EXPECT_EQ("a,b c", UnescapedName("a\\2Cb\\20c"));
    EXPECT_EQ("a,b", UnescapedName("\\61\\2c\\62"));
    EXPECT_EQ("a b", UnescapedName("a\\ b"));
}

TEST(UnescapedNameTest, WhatIsNoCharacterOfANameStays) {
    for (const char* text : {"a\\", "\\00", "\\C3\\A9", "\\FF"}) {
        EXPECT_EQ(text, UnescapedName(text));
    }
}

TEST(EscapedNameTest, SecondBytesAreNotEscaped) {
    const test::CodePageScope scope(932);
    EXPECT_EQ("\x95\\.kra", EscapedName("\x95\\.kra"));
    EXPECT_EQ("\x95\\\\,", EscapedName("\x95\\,"));
    EXPECT_EQ("\x95\\,", UnescapedName("\x95\\\\,"));
    EXPECT_EQ("\x95\\20", UnescapedName("\x95\\20"));
    EXPECT_EQ("\x95\\a", UnescapedName("\\\x95\\a"));
}

TEST(EscapedNameTest, EveryNameComesBack) {
    for (const unsigned page : {1252u, 932u, 65001u}) {
        const test::CodePageScope scope(page);
        test::RandomTexts random(13);
        for (int round = 0; round < 5000; ++round) {
            const std::string name = random.Text(12, ",+\"\\<>;=# a2C.\x95\xE3\x81\x8B\n");
            if (HasBrokenCharacters(name)) continue;
            EXPECT_EQ(name, UnescapedName(EscapedName(name))) << page;
            // One component, whatever the name is.
            const auto entry = SplitFirstComponent("CN=" + EscapedName(name), {"CN", "CN"});
            ASSERT_TRUE(entry);
            EXPECT_EQ(name, entry->name);
        }
    }
}

}  // namespace
}  // namespace depot
