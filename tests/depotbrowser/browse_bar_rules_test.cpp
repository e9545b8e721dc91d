// What the bar above the list and the search decide without a window.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "depotbrowser/column_widths.h"
#include "depotbrowser/crumbs.h"
#include "depotbrowser/label_text.h"
#include "depotbrowser/name_search.h"
#include "depotbrowser/profile_summary.h"
#include "depotbrowser/visited.h"

namespace depot::test {
namespace {

TEST(LabelTextTest, AccessKeysAreNotReadOut) {
    const struct {
        const wchar_t* label;
        const wchar_t* text;
    } rows[] = {
        {L"", L""},
        {L"&Open", L"Open"},
        {L"Na&me:", L"Name:"},
        {L"Trailing&", L"Trailing"},
        {L"A && B", L"A & B"},
        {L"\x524A\x9664(&L)", L"\x524A\x9664"},
        {L"Name(&N):", L"Name:"},
        {L"(x)", L"(x)"},
        {L"(&", L"("},
        {L"(&&)", L"(&)"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.text, WithoutAccessKey(row.label));
}

TEST(LabelTextTest, TextOfALabelIsShownAsItIs) {
    for (const wchar_t* const text : {L"", L"A & B", L"&&", L"plain", L"x&"}) {
        EXPECT_EQ(text, WithoutAccessKey(AsLabel(text)));
    }
    EXPECT_EQ(L"A && B", AsLabel(L"A & B"));
}

TEST(VisitedTest, LeadsBackAndForwardThroughTheVisits) {
    Visited<int> visited;
    EXPECT_FALSE(visited.Back() || visited.Forward());
    for (const int place : {1, 2, 2, 3}) visited.Visit(place);
    EXPECT_EQ(2, visited.Back());
    EXPECT_EQ(1, visited.Back());
    EXPECT_FALSE(visited.HasBack());
    EXPECT_EQ(2, visited.Forward());
    EXPECT_TRUE(visited.HasForward());
}

TEST(VisitedTest, NewVisitForgetsWhatLayAhead) {
    Visited<int> visited;
    for (const int place : {1, 2, 3}) visited.Visit(place);
    visited.Back();
    visited.Visit(9);
    EXPECT_FALSE(visited.HasForward());
    EXPECT_EQ(2, visited.Back());
}

TEST(VisitedTest, OldestVisitsAreForgotten) {
    Visited<int> visited;
    const int most = static_cast<int>(Visited<int>::kMostPlaces);
    for (int place = 0; place <= most; ++place) visited.Visit(place);
    int steps = 0;
    while (visited.Back()) ++steps;
    EXPECT_EQ(most - 1, steps);
    EXPECT_FALSE(visited.HasBack());
}

TEST(SearchWordsTest, EveryWordHasToOccur) {
    const struct {
        const wchar_t* words;
        const wchar_t* name;
        bool matches;
    } rows[] = {
        {L"", L"a.kra", true},
        {L"  \x3000 ", L"a.kra", true},
        {L"plan", L"old plan.kra", true},
        {L"plan 2026", L"2026 plan.kra", true},
        {L"plan 2026", L"plan.kra", false},
        {L"*.kra", L"a.kra", true},
        {L"*.kra", L"a.krax", false},
        {L"a?c", L"abc", true},
        {L"a?c", L"xabc", false},
        {L"pl* .kra", L"plan.kra", true},
        {L"****", L"", true},
        {L"a*b*c", L"aXbXbXc", true},
        {L"a", L"", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.words)));
        EXPECT_EQ(row.matches, SearchWords(row.words).Match(row.name));
    }
    EXPECT_TRUE(SearchWords(L" ").IsEmpty());
    EXPECT_EQ(SearchWords(L"a b"), SearchWords(L" a  b "));
}

TEST(CrumbsTest, WayIsShownFromItsEndAsFarAsThereIsRoom) {
    EXPECT_EQ(0u, FirstShownCrumb({}, 100, 10));
    EXPECT_EQ(0u, FirstShownCrumb({500}, 100, 10));
    EXPECT_EQ(0u, FirstShownCrumb({50, 50}, 100, 10));
    EXPECT_EQ(1u, FirstShownCrumb({51, 50}, 100, 10));
    // Room for what stands in the place of the first is needed as long as one is left out.
    EXPECT_EQ(2u, FirstShownCrumb({50, 50, 50}, 109, 10));
    EXPECT_EQ(1u, FirstShownCrumb({50, 50, 50}, 110, 10));
    EXPECT_EQ(0u, FirstShownCrumb({50, 50, 50}, 150, 10));
    EXPECT_EQ(2u, FirstShownCrumb({1, 1, 500}, 100, 10));
}

TEST(CrumbsTest, NamesLeadToTheirFolders) {
    EXPECT_EQ("", LeadingFolder("a\\b\\c\\", 0));
    EXPECT_EQ("a\\b\\", LeadingFolder("a\\b\\c\\", 2));
    EXPECT_EQ("a\\b\\c\\", LeadingFolder("a\\b\\c\\", 3));
    EXPECT_EQ("a\\", LeadingFolder("a\\", 9));
    EXPECT_EQ("", LeadingFolder("", 9));
}

TEST(ProfileSummaryTest, TitleAndHostAreTheFirstValuesOfTheirSections) {
    const ProfileSummary summary = SummaryOf(
        L"Title=none\r\n[profile]\r\n title = 'My office' \r\nTitle=second\r\n"
        L"[HOST]\r\nName=\"mail.example\"\r\n[Other]\r\nName=x");
    EXPECT_EQ(L"My office", summary.title);
    EXPECT_EQ(L"mail.example", summary.host);
}

TEST(ProfileSummaryTest, TextThatIsNoProfileSaysNothing) {
    for (const std::wstring& text :
         {std::wstring(), std::wstring(L"="), std::wstring(L"[profile"), std::wstring(L"[]\n=\n[="),
          std::wstring(L"[profile]\nTitle"), std::wstring(100000, L'['),
          std::wstring(L"[profile]\nTitle=\n") + std::wstring(9, L'\0')}) {
        EXPECT_EQ(L"", SummaryOf(text).title);
        EXPECT_EQ(L"", SummaryOf(text).host);
    }
    EXPECT_EQ(100u, SummaryOf(L"[PROFILE]\nTitle=" + std::wstring(100000, L't')).title.size());
}

TEST(ColumnWidthsTest, WidthsComeBackFromTheirText) {
    EXPECT_EQ("10 200 3000", ColumnWidthsText({10, 200, 3000}));
    EXPECT_EQ((std::vector<int>{10, 200, 3000}), ParseColumnWidths("10 200 3000", 3));
}

TEST(ColumnWidthsTest, TextOfOtherColumnsIsNoText) {
    for (const char* const text :
         {"", "10", "10 20 30 40", "10 20 x", "10 20 7", "10 20 4001", "10 20 -9",
          "10 20 99999999999999999999", "10,20,30", "10  20 30"}) {
        EXPECT_EQ(std::vector<int>(), ParseColumnWidths(text, 3)) << text;
    }
}

}  // namespace
}  // namespace depot::test
