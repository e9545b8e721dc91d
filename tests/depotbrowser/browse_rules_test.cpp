// What the browse dialog decides without a window.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "depotbrowser/browse_layout.h"
#include "depotbrowser/column_text.h"
#include "depotbrowser/entry_order.h"
#include "depotbrowser/file_name_field.h"
#include "depotbrowser/icon_location.h"
#include "depotbrowser/name_rules.h"
#include "support/code_pages.h"

namespace depot::test {
namespace {

BrowseEntry Entry(const std::wstring& name, bool folder, std::uint64_t size, std::uint64_t date) {
    BrowseEntry entry;
    entry.shownName = name;
    entry.isFolder = folder;
    entry.size = size;
    entry.date = date;
    entry.typeName = folder ? L"Folder" : L"File";
    return entry;
}

std::wstring Sorted(Column column, bool descending) {
    const std::vector<BrowseEntry> entries = {Entry(L"c", false, 1, 30), Entry(L"a", false, 3, 20),
                                              Entry(L"b", false, 2, 10), Entry(L"y", true, 0, 5),
                                              Entry(L"x", true, 0, 5)};
    std::vector<std::size_t> rows = {0, 1, 2, 3, 4};
    SortRows(
        rows, entries, {column, descending},
        [](const std::wstring& left, const std::wstring& right) { return left.compare(right); });
    std::wstring order;
    for (const std::size_t row : rows) order += entries[row].shownName;
    return order;
}

TEST(EntryOrderTest, FoldersComeFirstInEveryOrder) {
    EXPECT_EQ(L"xyabc", Sorted(Column::kName, false));
    EXPECT_EQ(L"yxcba", Sorted(Column::kName, true));
    EXPECT_EQ(L"xycba", Sorted(Column::kSize, false));
    EXPECT_EQ(L"xyabc", Sorted(Column::kSize, true));
    EXPECT_EQ(L"xybac", Sorted(Column::kDate, false));
    EXPECT_EQ(L"xycab", Sorted(Column::kDate, true));
}

TEST(EntryOrderTest, EqualsAreOrderedByNameInBothDirections) {
    EXPECT_EQ(L"xyabc", Sorted(Column::kType, false));
    EXPECT_EQ(L"xyabc", Sorted(Column::kType, true));
}

TEST(EntryOrderTest, ClickTurnsTheOwnOrderRoundAndStartsAnotherUpwards) {
    const EntryOrder once = OrderAfterClick({Column::kName, false}, Column::kName);
    EXPECT_TRUE(once.descending);
    EXPECT_FALSE(OrderAfterClick(once, Column::kName).descending);
    const EntryOrder other = OrderAfterClick(once, Column::kDate);
    EXPECT_EQ(Column::kDate, other.column);
    EXPECT_FALSE(other.descending);
}

TEST(EntryOrderTest, NumberWithoutAColumnIsTheNames) {
    EXPECT_EQ(Column::kDate, ColumnOf(3));
    for (const long number : {-1L, 0L, 5L, 1000L}) EXPECT_EQ(Column::kName, ColumnOf(number));
}

TEST(EntryOrderTest, EntriesOfTheShownFolderComeBeforeThoseOfOthers) {
    std::vector<BrowseEntry> entries = {Entry(L"a", true, 0, 0), Entry(L"b", false, 0, 0),
                                        Entry(L"c", true, 0, 0), Entry(L"d", false, 0, 0)};
    entries[0].elsewhere = entries[1].elsewhere = "Sub\\";
    std::vector<std::size_t> rows = {0, 1, 2, 3};
    SortRows(
        rows, entries, {Column::kName, false},
        [](const std::wstring& left, const std::wstring& right) { return left.compare(right); });
    EXPECT_EQ((std::vector<std::size_t>{2, 3, 0, 1}), rows);
}

TEST(FileNameFieldTest, NamesAreTakenApart) {
    const struct {
        const wchar_t* field;
        std::vector<std::wstring> names;
        bool firstQuoted;
    } rows[] = {
        {L"", {}, false},
        {L"  \t", {}, false},
        {L" a b.kra ", {L"a b.kra"}, false},
        {L"\"a.kra\"", {L"a.kra"}, true},
        {L"\"a\" \"b c\"", {L"a", L"b c"}, true},
        {L"\"a\"\"b\"", {L"a", L"b"}, true},
        {L"\"a", {L"a"}, true},
        {L"a \"b\"", {L"a", L"b"}, false},
        {L"\"\" \"\"", {}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.field)));
        std::vector<std::wstring> names;
        const auto parsed = ParseFileNames(row.field);
        for (const TypedName& name : parsed) names.push_back(name.text);
        EXPECT_EQ(row.names, names);
        if (!parsed.empty()) {
            EXPECT_EQ(row.firstQuoted, parsed.front().quoted);
        }
    }
}

TEST(FileNameFieldTest, JoinedNamesComeBack) {
    EXPECT_EQ(L"a b", JoinFileNames({L"a b"}));
    EXPECT_EQ(L"", JoinFileNames({}));
    EXPECT_EQ(L"\"a b\" \"c\"", JoinFileNames({L"a b", L"c"}));
    EXPECT_EQ(2u, ParseFileNames(JoinFileNames({L"a b", L"c"})).size());
}

TEST(NameRulesTest, NamesOfFilesHaveLimits) {
    EXPECT_TRUE(IsValidName("a b.kra"));
    EXPECT_TRUE(IsValidName(".kra"));
    EXPECT_TRUE(IsValidName(std::string(255, 'x')));
    EXPECT_FALSE(IsValidName(std::string(256, 'x')));
    for (const char* const name : {"", ".", "..", "a.", "a ", "a\\b", "a/b", "a:b", "a*", "a?",
                                   "a\"", "a<", "a>", "a|", "a\n"}) {
        EXPECT_FALSE(IsValidName(name)) << name;
    }
}

TEST(NameRulesTest, PatternsMatchInAnyLetterCase) {
    const struct {
        const char* name;
        const char* pattern;
        bool matches;
    } rows[] = {
        {"a.KRA", "*.kra", true},  {"a.krax", "*.kra", false}, {"noext", "*.*", true},
        {"noext", "*.kra", false}, {"abc", "a?c", true},       {"ac", "a?c", false},
        {"aXbXc", "a*b*c", true},  {"abcab", "*ab", true},     {"", "*", true},
        {"", "?", false},          {"a", "", false},           {"a", "a**", true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.matches, MatchesPattern(row.name, row.pattern))
            << row.name << " " << row.pattern;
    }
    EXPECT_TRUE(IsPattern("a?"));
    EXPECT_FALSE(IsPattern("a.kra"));
}

TEST(NameRulesTest, DefaultExtensionIsAddedWhereNoneOfAProfileStands) {
    EXPECT_EQ("a.kra", WithDefaultExtension("a", ".kra"));
    EXPECT_EQ("a.v2.kra", WithDefaultExtension("a.v2", ".kra"));
    EXPECT_EQ("a.KRV", WithDefaultExtension("a.KRV", ".kra"));
    EXPECT_EQ("a", WithDefaultExtension("a.", ".kra"));
    EXPECT_EQ("a", WithDefaultExtension("a", ""));
    EXPECT_EQ("", WithDefaultExtension("", ".kra"));
}

TEST(NameRulesTest, TypesPatternIsItsExtensions) {
    EXPECT_EQ("*.krv", PatternOfType(62));
    EXPECT_EQ("*.kra", PatternOfType(64));
    EXPECT_EQ("*.*", PatternOfType(0));
}

TEST(NameRulesTest, PathsLeadFromFolderToFolder) {
    const struct {
        const char* from;
        const char* path;
        const char* folder;
        const char* name;
    } rows[] = {
        {"", "a.kra", "", "a.kra"},
        {"x\\", "a.kra", "x\\", "a.kra"},
        {"x\\", "..", "", ""},
        {"", "..", "", ""},
        {"x\\y\\", "..\\a", "x\\", "a"},
        {"x\\", "y\\", "x\\y\\", ""},
        {"x\\", "\\a", "", "a"},
        {"x\\", "\\", "", ""},
        {"x\\", ".\\y/z", "x\\y\\", "z"},
        {"x\\", "y\\\\z", "x\\y\\", "z"},
    };
    for (const auto& row : rows) {
        const RelativeTarget target = FollowPath(row.from, row.path);
        EXPECT_EQ(row.folder, target.folder) << row.from << " " << row.path;
        EXPECT_EQ(row.name, target.name) << row.from << " " << row.path;
    }
    EXPECT_EQ("x\\", FolderAbove("x\\y\\"));
    EXPECT_EQ("", FolderAbove("x\\"));
    EXPECT_EQ("", FolderAbove(""));
    EXPECT_THAT(FolderNames("x\\y\\"), testing::ElementsAre("x", "y"));
    EXPECT_THAT(FolderNames(""), testing::IsEmpty());
}

TEST(ColumnTextTest, NumbersAndLabelsAreWrittenForPeople) {
    EXPECT_EQ(0u, Kilobytes(0));
    EXPECT_EQ(1u, Kilobytes(1));
    EXPECT_EQ(1u, Kilobytes(1024));
    EXPECT_EQ(2u, Kilobytes(1025));
    EXPECT_EQ(0x3FFFFFFFFFFFFFu + 1, Kilobytes(UINT64_MAX));
    EXPECT_EQ(L"0", GroupedNumber(0, L","));
    EXPECT_EQ(L"999", GroupedNumber(999, L","));
    EXPECT_EQ(L"1.000", GroupedNumber(1000, L"."));
    EXPECT_EQ(L"12 345 678", GroupedNumber(12345678, L" "));
    EXPECT_EQ(L"KRP", ExtensionLabel(L"a.b.krp"));
    EXPECT_EQ(L"", ExtensionLabel(L"README"));
    EXPECT_EQ(3u, StemLength(L"a.b.krp"));
    EXPECT_EQ(6u, StemLength(L"README"));
    EXPECT_EQ(8u, StemLength(L".profile"));
    EXPECT_EQ(1u, StemLength(L"a."));
    EXPECT_EQ(L"a \"x%s\" %s", FillIn(L"a \"%s\" %s", L"x%s"));
    EXPECT_EQ(L"plain", FillIn(L"plain", L"x"));
}

TEST(IconLocationTest, NumberBehindTheLastCommaIsTheIndex) {
    const struct {
        const char* location;
        const char* file;
        int index;
    } rows[] = {
        {"", "", 0},
        {"a.exe", "a.exe", 0},
        {"a.exe,2", "a.exe", 2},
        {"a.exe, -5", "a.exe", -5},
        {"a,b.exe", "a,b.exe", 0},
        {"a.exe,", "a.exe,", 0},
    };
    for (const auto& row : rows) {
        const IconLocation parsed = ParseIconLocation(row.location);
        EXPECT_EQ(row.file, parsed.file) << row.location;
        EXPECT_EQ(row.index, parsed.index) << row.location;
    }
}

LayoutMetrics Metrics() {
    LayoutMetrics m;
    m.margin = 10;
    m.gap = 6;
    m.labelHeight = 14;
    m.fieldHeight = 22;
    m.buttonHeight = 24;
    m.labelWidth = 60;
    m.okWidth = 80;
    m.stopWidth = 80;
    m.progressWidth = 120;
    m.messageHeight = 30;
    m.commandWidths = {90, 80, 100, 80};
    m.hasHelp = true;
    m.listMinimumHeight = 90;
    m.treeMinimumWidth = 120;
    m.iconSide = 16;
    m.gripSide = 14;
    m.searchLabelWidth = 50;
    m.searchWidth = 140;
    m.pathMinimumWidth = 130;
    return m;
}

bool Overlap(const Box& one, const Box& other) {
    return one.x < other.Right() && other.x < one.Right() && one.y < other.Bottom() &&
           other.y < one.Bottom();
}

TEST(BrowseLayoutTest, NothingOverlapsOrLeavesTheWindowFromTheSmallestSizeUp) {
    for (const int state : {0, 1, 2, 3}) {
        const bool commands = state < 2, kept = state % 2 != 0;
        LayoutMetrics metrics = Metrics();
        if (!commands) metrics.commandWidths.clear();
        if (kept) metrics.keptWidth = 150;
        const Box least = MinimumSize(metrics);
        for (const int more : {0, 1, 77, 1000}) {
            const int width = least.width + more, height = least.height + more;
            const BrowseLayout l = ComputeLayout(width, height, metrics);
            std::vector<Box> boxes = l.commands;
            boxes.insert(
                boxes.end(),
                {l.back,      l.forward, l.up,        l.path, l.searchLabel, l.search,
                 l.treeLabel, l.tree,    l.listLabel, l.list, l.details,     l.messageWhileBusy,
                 l.status,    l.grip,    l.progress,  l.stop, l.nameLabel,   l.name,
                 l.typeLabel, l.type,    l.help,      l.ok,   l.cancel});
            if (kept) boxes.push_back(l.kept);
            for (std::size_t one = 0; one < boxes.size(); ++one) {
                EXPECT_TRUE(boxes[one].x >= 0 && boxes[one].y >= 0 && boxes[one].width > 0 &&
                            boxes[one].height > 0 && boxes[one].Right() <= width &&
                            boxes[one].Bottom() <= height)
                    << "box " << one << " of " << more;
                for (std::size_t other = one + 1; other < boxes.size(); ++other) {
                    EXPECT_FALSE(Overlap(boxes[one], boxes[other])) << one << " and " << other;
                }
            }
        }
    }
}

TEST(BrowseLayoutTest, LargerWindowGivesItsRoomToTreeAndList) {
    const Box least = MinimumSize(Metrics());
    const BrowseLayout small = ComputeLayout(least.width, least.height, Metrics());
    const BrowseLayout large = ComputeLayout(least.width + 300, least.height + 200, Metrics());
    EXPECT_EQ(small.list.height + 200, large.list.height);
    EXPECT_EQ(small.tree.height + 200, large.tree.height);
    EXPECT_GT(large.list.width, small.list.width);
    EXPECT_EQ(small.ok.width, large.ok.width);
}

TEST(BrowseLayoutTest, LineOfKeptFilesTakesItsRoomFromTreeAndList) {
    LayoutMetrics metrics = Metrics();
    metrics.keptWidth = 150;
    const BrowseLayout without = ComputeLayout(2000, 1500, Metrics());
    const BrowseLayout with = ComputeLayout(2000, 1500, metrics);
    EXPECT_EQ(without.list.height - metrics.buttonHeight - metrics.gap, with.list.height);
    EXPECT_EQ(without.message.y, with.message.y);
    EXPECT_EQ(without.ok.y, with.ok.y);
}

// The second bytes of these are a separator, a bar and letters in the Japanese code page.
TEST(NameRulesTest, SecondBytesAreNoSeparatorsBarsOrLetters) {
    const CodePageScope japanese(932);
    const std::string table = Encoded(932, u"\u8868"), report = Encoded(932, u"\u30EC\u30DD");
    EXPECT_TRUE(IsValidName(table + ".kra"));
    EXPECT_TRUE(IsValidName(report + ".kra"));
    EXPECT_FALSE(IsValidName(table + "|"));
    EXPECT_TRUE(MatchesPattern(table + ".KRA", "?.kra"));
    EXPECT_TRUE(MatchesPattern(table + report, "*" + report));
    EXPECT_FALSE(MatchesPattern(Encoded(932, u"\u30A2"), Encoded(932, u"\u30C2")));
    EXPECT_EQ(table + "\\", FolderAbove(table + "\\" + report + "\\"));
    EXPECT_EQ((std::vector<std::string>{table, report}), FolderNames(table + "\\" + report + "\\"));
    const RelativeTarget target = FollowPath("", table + "/" + table);
    EXPECT_EQ(table + "\\", target.folder);
    EXPECT_EQ(table, target.name);
}

TEST(NameRulesTest, PatternsMatchLettersOfUtf8InEitherCase) {
    const CodePageScope utf8(65001);
    EXPECT_TRUE(MatchesPattern("B\xC3\x9CRO.kra", "b\xC3\xBCro.*"));
    EXPECT_TRUE(MatchesPattern("\xF0\x9F\x98\x80.kra", "?.kra"));
}

}  // namespace
}  // namespace depot::test
