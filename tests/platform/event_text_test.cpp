#include "platform/event_text.h"

#include <gtest/gtest.h>

#include "platform/presence_rule.h"

namespace depot {
namespace {

TEST(EventTextTest, TextStaysAsItIs) {
    EXPECT_EQ(L"", EventText(L""));
    EXPECT_EQ(L"50 % of \x4E88 %s", EventText(L"50 % of \x4E88 %s"));
}

TEST(EventTextTest, NothingInItStandsForAnotherText) {
    EXPECT_EQ(L"% 1 % 2", EventText(L"%1 %2"));
    EXPECT_EQ(L"% % 1234", EventText(L"%%1234"));
    EXPECT_EQ(L"fe80::1% 0", EventText(L"fe80::1%0"));
}

TEST(EventTextTest, TextIsOneLineUpToItsFirstNul) {
    EXPECT_EQ(L"one  two three", EventText(L"one\r\ntwo\tthree"));
    EXPECT_EQ(L"a  b", EventText(L"a\x1B\x85"
                                 L"b"));
    EXPECT_EQ(L"one", EventText(std::wstring_view(L"one\0two", 7)));
}

TEST(EventTextTest, LongTextIsCutBetweenCharacters) {
    const std::wstring whole(kEventTextLimit, L'x');
    EXPECT_EQ(whole, EventText(whole));
    EXPECT_EQ(whole + L"...", EventText(whole + L"x"));
    std::wstring pair(kEventTextLimit - 1, L'x');
    EXPECT_EQ(pair + L"...", EventText(pair + wchar_t{0xD83D} + wchar_t{0xDE00}));
    // The log takes 31,839 characters of a value.
    EXPECT_GE(2 * kEventTextLimit + 3, EventText(std::wstring(100000, L'%')).size());
}

TEST(EntryBudgetTest, EntriesOfAMinuteAreBounded) {
    constexpr std::uint64_t kBegin = 1000000;
    EntryBudget budget;
    for (int entry = 0; entry < EntryBudget::kEntries; ++entry) {
        EXPECT_TRUE(budget.Take(kBegin + static_cast<std::uint64_t>(entry)));
    }
    EXPECT_FALSE(budget.Take(kBegin + EntryBudget::kMilliseconds - 1));
    EXPECT_TRUE(budget.Take(kBegin + EntryBudget::kMilliseconds));
}

TEST(EntryBudgetTest, EntriesOfAComputerThatHasJustStartedAreBoundedToo) {
    EntryBudget budget;
    for (int entry = 0; entry < EntryBudget::kEntries; ++entry) EXPECT_TRUE(budget.Take(5));
    EXPECT_FALSE(budget.Take(6));
}

TEST(PresenceRuleTest, VisibleStationAndNoValueOfTheMachineMeanAPerson) {
    EXPECT_TRUE(MayAPersonSee({1, std::nullopt}));
    EXPECT_TRUE(MayAPersonSee({3, 0}));
    EXPECT_FALSE(MayAPersonSee({0, std::nullopt}));
    EXPECT_FALSE(MayAPersonSee({2, 0}));
}

TEST(PresenceRuleTest, StationWhoseFlagsCannotBeReadCountsAsSeen) {
    EXPECT_TRUE(MayAPersonSee({std::nullopt, std::nullopt}));
}

TEST(PresenceRuleTest, OnlyTheNumberOneMakesAHostQuiet) {
    EXPECT_FALSE(MayAPersonSee({1, 1}));
    EXPECT_FALSE(MayAPersonSee({std::nullopt, 1}));
    EXPECT_TRUE(MayAPersonSee({1, 2}));
}

}  // namespace
}  // namespace depot
