// The formatting of what people read.
#include <gtest/gtest.h>

#include "depotctl/directory_words.h"
#include "depotctl/progress_line.h"
#include "depotctl/table.h"
#include "depotctl/utf8_text.h"

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

const std::vector<Align> kTwo = {Align::kLeft, Align::kRight};

TEST(TableTest, LayoutAlignsColumnsTwoBlanksApart) {
    EXPECT_EQ("NAME    SIZE\nB\xC3\xBCro       5\noffice    10\n",
              LayoutTable({{"NAME", "SIZE"}, {"B\xC3\xBCro", "5"}, {"office", "10"}}, kTwo, 0));
}

TEST(TableTest, LayoutWithoutWidthNeverCuts) {
    const std::string name(300, 'x');
    EXPECT_NE(std::string::npos, LayoutTable({{"NAME"}, {name}}, {Align::kLeft}, 0).find(name));
}

TEST(TableTest, LayoutFitsEveryWidth) {
    const std::vector<TableRow> rows = {
        {"NAME", "KIND", "TYPE", "SIZE", "CHANGED"},
        {"a rather long name of a session profile.kre", "file", "1", "12345", "2024-05-31 14:07"}};
    const std::vector<Align> alignment(5, Align::kLeft);
    for (std::size_t width = 1; width < 100; ++width) {
        const std::string text = LayoutTable(rows, alignment, width);
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = text.find('\n', at);
            EXPECT_LE(DisplayWidth(text.substr(at, end - at)), width);
            at = end + 1;
        }
    }
}

TEST(TableTest, LayoutCutsTheWidestColumnFirst) {
    EXPECT_EQ("NAME    KIND\nlong \xE2\x80\xA6  file\n",
              LayoutTable({{"NAME", "KIND"}, {"long name here", "file"}},
                          {Align::kLeft, Align::kLeft}, 12));
}

TEST(TableTest, LayoutMakesCellsPrintable) {
    EXPECT_EQ("N\na?[0m\n", LayoutTable({{"N"}, {"a\x1b[0m"}}, {Align::kLeft}, 0));
}

TEST(ProgressLineTest, SizeTextUsesTheUnitThatFits) {
    EXPECT_EQ("0 B", SizeText(0));
    EXPECT_EQ("1023 B", SizeText(1023));
    EXPECT_EQ("1.0 KB", SizeText(1024));
    EXPECT_EQ("1.5 MB", SizeText(1536 * 1024));
    EXPECT_EQ("3.0 GB", SizeText(3ull << 30));
    EXPECT_EQ("2048.0 TB", SizeText(2048ull << 40));
}

TEST(ProgressLineTest, LineReportsCountsBytesAndRateBehindABar) {
    const ProgressState half = {12, 24, 2048, 2.0};
    EXPECT_EQ("[##########          ] 12/24 files  2.0 KB  1.0 KB/s", ProgressLine(half, 52));
    EXPECT_EQ("[                              ] 0/1 file  0 B", ProgressLine({0, 1, 0, 0}, 80));
    EXPECT_EQ("[##############################] 1/1 file  9 B  9 B/s",
              ProgressLine({1, 1, 9, 1}, 80));
}

TEST(ProgressLineTest, LineFitsEveryWidth) {
    const ProgressState state = {9999, 10000, 123456789, 12.5};
    for (std::size_t width = 1; width < 90; ++width) {
        EXPECT_LE(ProgressLine(state, width).size(), width);
    }
    EXPECT_EQ("9999/10000 files", ProgressLine(state, 17));
    EXPECT_EQ("9999/10000 files  117.7 MB  9.4 MB/s", ProgressLine(state, 40));
}

TEST(DirectoryWordsTest, EveryCodeHasWordsThatNameIt) {
    for (std::uint32_t code = 1; code < 130; ++code) {
        const std::string text = WordsFor(code).text;
        EXPECT_NE(std::string::npos, text.find("(LDAP " + std::to_string(code) + ")"));
    }
    EXPECT_EQ("the user name or the password is wrong (LDAP 49)", WordsFor(49).text);
}

TEST(DirectoryWordsTest, OnlyMissingServersAreUnreachable) {
    EXPECT_TRUE(MeansUnreachable(81));
    EXPECT_TRUE(MeansUnreachable(85));
    EXPECT_FALSE(MeansUnreachable(0));
    EXPECT_FALSE(MeansUnreachable(49));
    EXPECT_FALSE(MeansUnreachable(32));
}

}  // namespace
}  // namespace depot::ctl
