#include "platform/wide_text.h"

#include <gtest/gtest.h>

#include "platform/win32.h"

namespace depot {
namespace {

TEST(WideTextTest, Utf8TextsComeBackAsTheyWere) {
    for (const char* text : {"", "a", "C:\\\xC3\xA4\\\xE2\x82\xAC.dll", "\xF0\x9F\x98\x80"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(text, Utf8FromWide(WideFromUtf8(text)));
    }
    EXPECT_EQ(L"\x20AC", WideFromUtf8("\xE2\x82\xAC"));
    EXPECT_EQ(2u, WideFromUtf8("\xF0\x9F\x98\x80").size());
}

TEST(WideTextTest, NulInsideTheTextIsKept) {
    EXPECT_EQ(std::wstring(L"a\0b", 3), WideFromUtf8(std::string_view("a\0b", 3)));
    EXPECT_EQ(std::string("a\0b", 3), Utf8FromWide(std::wstring_view(L"a\0b", 3)));
}

TEST(ExactFromWideTest, OnlyWhatComesBackAsItWasIsConverted) {
    const struct {
        unsigned page;
        const wchar_t* text;
        const char* narrow;  // null where it is refused
    } rows[] = {
        {1252, L"", ""},
        {1252, L"\u00C4.kra", "\xC4.kra"},
        {1252, L"\u0100.kra", nullptr},
        {1252, L"\uFF3C", nullptr},
        {1252, L"\u2216", nullptr},
        {932, L"\u8868\u5341", "\x95\\\x8F\\"},
        {932, L"\uFF3C", "\x81_"},
        {932, L"\u00A5", nullptr},
        {932, L"\u00C4", nullptr},
        {932, L"\u2252", "\x81\xE0"},
        {1254, L"\u0130\u0131", "\xDD\xFD"},
        {65001, L"\u00C4\u8868", "\xC3\x84\xE8\xA1\xA8"},
        {65001, L"\xD83D\xDE00", "\xF0\x9F\x98\x80"},
        {65001, L"a\xD83D", nullptr},
        {65001, L"\xDE00", nullptr},
        {65001, L"\uFFFD", "\xEF\xBF\xBD"},
        {932, L"\xD83D", nullptr},
        {1252, L"\xD83D\xDE00", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.page) + " " + testing::PrintToString(row.text));
        const auto narrow = ExactFromWide(row.page, row.text);
        EXPECT_EQ(row.narrow != nullptr, narrow.has_value());
        if (row.narrow != nullptr && narrow) {
            EXPECT_EQ(row.narrow, *narrow);
        }
    }
}

TEST(ExactAnsiTest, TextsOfTheOtherEncodingAreExactOrRefused) {
    ASSERT_EQ(1252u, GetACP());
    EXPECT_EQ("\xE4\x80", ExactAnsiFromUtf8("\xC3\xA4\xE2\x82\xAC"));
    EXPECT_EQ(std::nullopt, ExactAnsiFromUtf8("\xC4\x80"));
    EXPECT_EQ(std::nullopt, ExactAnsiFromUtf8("a\xC3"));
    EXPECT_EQ(std::nullopt, ExactAnsiFromUtf8("\xED\xA0\x80"));
    EXPECT_EQ("", ExactAnsiFromUtf8(""));
    EXPECT_EQ("\xC3\xA4", ExactUtf8FromAnsi("\xE4"));
    EXPECT_EQ(L"\u20AC", ExactWideFromAnsi("\x80"));
    EXPECT_EQ(L"", ExactWideFromAnsi(""));
}

}  // namespace
}  // namespace depot
