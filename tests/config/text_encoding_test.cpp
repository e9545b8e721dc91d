#include "config/text_encoding.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace depot {
namespace {

constexpr TextEncoding kEncodings[] = {TextEncoding::kAnsi, TextEncoding::kUtf8,
                                       TextEncoding::kUtf16, TextEncoding::kSwappedUtf16};

TEST(TextEncodingTest, WhatIsWrittenIsReadAsTheSameTextInTheSameEncoding) {
    const std::wstring texts[] = {
        L"", L"x", L"line\r\n", L"\xFEFFx", L"\xEF\xBB\xBFx", L"\xFF\xFEx", L"\xFE\xFFx"};
    for (const TextEncoding encoding : kEncodings) {
        for (const std::wstring& text : texts) {
            SCOPED_TRACE(static_cast<int>(encoding));
            const std::optional<std::string> bytes = BytesFromText(encoding, text);
            if (!bytes) continue;
            EXPECT_EQ(encoding, EncodingOf(*bytes));
            EXPECT_EQ(text, TextFromBytes(*bytes));
        }
    }
}

TEST(TextEncodingTest, EncodingsOfUnicodeHoldEveryText) {
    for (const TextEncoding encoding : kEncodings) {
        const bool isUnicode = encoding != TextEncoding::kAnsi;
        if (isUnicode) EXPECT_TRUE(BytesFromText(encoding, L"\xFEFF\x3042"));
    }
}

TEST(TextEncodingTest, TextThatBeginsLikeAMarkIsNoneOfTheAnsiCodePage) {
    const std::wstring marks[] = {L"\xFEFFx", L"\xEF\xBB\xBFx", L"\xFF\xFEx", L"\xFE\xFFx"};
    // Where the code page has the letters, their bytes are a mark, or other ones than in 1252.
    EXPECT_TRUE(std::any_of(std::begin(marks), std::end(marks), [](const std::wstring& text) {
        return !BytesFromText(TextEncoding::kAnsi, text);
    }));
    if (GetACP() == CP_UTF8) EXPECT_FALSE(BytesFromText(TextEncoding::kAnsi, marks[0]));
    if (GetACP() != 1252) return;
    for (const std::wstring& text : marks) {
        EXPECT_FALSE(BytesFromText(TextEncoding::kAnsi, text));
    }
}

}  // namespace
}  // namespace depot
