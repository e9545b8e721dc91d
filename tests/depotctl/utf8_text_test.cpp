#include "depotctl/utf8_text.h"

#include <gtest/gtest.h>

namespace depot::ctl {
namespace {

TEST(Utf8TextTest, AsciiIsFoundBetweenCharactersWhateverTheCodePage) {
    // The second byte of the first character begins a double-byte character in some code pages.
    const std::string path = "\xE8\xA1\xA8\xE4\xBA\x88\\x>";
    EXPECT_EQ(6u, FindAscii(path, '\\'));
    EXPECT_EQ(std::string::npos, FindAscii(path, '\\', 7));
    EXPECT_EQ(8u, FindAnyAscii(path, "<>|"));
    EXPECT_TRUE(EndsInAscii(path, '>'));
    EXPECT_FALSE(EndsInAscii(path, '\\'));
}

TEST(Utf8TextTest, Utf16LengthCountsPairsTwice) {
    EXPECT_EQ(0u, Utf16Length(""));
    EXPECT_EQ(3u, Utf16Length("a\xC3\xBC\xE8\xA1\xA8"));
    EXPECT_EQ(2u, Utf16Length("\xF0\x9F\x98\x80"));
}

TEST(Utf8TextTest, DisplayWidthCountsColumnsNotBytes) {
    EXPECT_EQ(0u, DisplayWidth(""));
    EXPECT_EQ(4u, DisplayWidth("B\xC3\xBCro"));
    EXPECT_EQ(4u, DisplayWidth("\xE6\x97\xA5\xE6\x9C\xAC"));  // two wide characters
    EXPECT_EQ(1u, DisplayWidth("e\xCC\x81"));                 // a letter and its accent
    EXPECT_EQ(2u, DisplayWidth("\xF0\x9F\x98\x80"));
    EXPECT_EQ(2u, DisplayWidth("\xFFz"));     // not UTF-8
    EXPECT_EQ(2u, DisplayWidth("\xE6\x97"));  // cut off
    EXPECT_EQ(3u, DisplayWidth("\xE6zz"));
}

TEST(Utf8TextTest, CutToWidthLeavesWholeCharactersAndAnEllipsis) {
    EXPECT_EQ("office", CutToWidth("office", 6));
    EXPECT_EQ("offi\xE2\x80\xA6", CutToWidth("office", 5));
    EXPECT_EQ("\xE2\x80\xA6", CutToWidth("office", 1));
    EXPECT_EQ("", CutToWidth("office", 0));
    EXPECT_EQ("\xE6\x97\xA5\xE2\x80\xA6", CutToWidth("\xE6\x97\xA5\xE6\x9C\xAC", 3));
    // A wide character that would stick out is left out whole.
    EXPECT_EQ("a\xE2\x80\xA6", CutToWidth("a\xE6\x97\xA5\xE6\x9C\xAC", 3));
}

TEST(Utf8TextTest, PrintableReplacesControlsAndBrokenBytes) {
    EXPECT_EQ("a?[2Jb", Printable("a\x1b[2Jb"));
    EXPECT_EQ("a?b?", Printable("a\nb\x7f"));
    EXPECT_EQ("?", Printable("\xC2\x9B"));  // the same control as two bytes
    EXPECT_EQ("\xC3\xBC?", Printable("\xC3\xBC\xFC"));
}

TEST(Utf8TextTest, OneLineTurnsLineEndsIntoBlanks) {
    EXPECT_EQ("first second", OneLine("first\r\n  second\r\n"));
    EXPECT_EQ("", OneLine("\r\n"));
    EXPECT_EQ("a b", OneLine("  a\tb "));
}

TEST(Utf8TextTest, WrappedBreaksBetweenWordsAndIndentsTheRest) {
    EXPECT_EQ("one two three", Wrapped("one two three", 0, 2));
    EXPECT_EQ("one two\n  three", Wrapped("one two three", 8, 2));
    EXPECT_EQ("one\n  two\n  thre\n  e", Wrapped("one two three", 6, 2));
    EXPECT_EQ("abcdef\n  ghij", Wrapped("abcdefghij", 6, 2));
    EXPECT_EQ("", Wrapped("", 6, 2));
}

TEST(Utf8TextTest, WrappedFitsEveryWidth) {
    const std::string text =
        "  problem  B\xC3\xBCro \xE6\x97\xA5\xE6\x9C\xAC: a-rather-long-word and others";
    for (std::size_t width = 8; width < 70; ++width) {
        const std::string wrapped = Wrapped(text, width, 4);
        for (std::size_t at = 0; at <= wrapped.size();) {
            const std::size_t end = std::min(wrapped.find('\n', at), wrapped.size());
            EXPECT_LE(DisplayWidth(wrapped.substr(at, end - at)), width);
            at = end + 1;
        }
    }
}

}  // namespace
}  // namespace depot::ctl
