#include "config/text_encoding.h"

#include <gtest/gtest.h>

#include "platform/win32.h"

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
        if (encoding == TextEncoding::kAnsi) continue;
        EXPECT_TRUE(BytesFromText(encoding, L"\xFEFF\x3042"));
    }
}

TEST(TextEncodingTest, TextThatBeginsLikeAMarkIsNoneOfTheAnsiCodePage) {
    if (GetACP() == CP_UTF8) {
        EXPECT_FALSE(BytesFromText(TextEncoding::kAnsi, L"\xFEFFx"));
        EXPECT_TRUE(BytesFromText(TextEncoding::kAnsi, L"\xEF\xBB\xBFx"));
        return;
    }
    // Other code pages lack the letters, or have them as these bytes.
    for (const wchar_t* text : {L"\xFEFFx", L"\xEF\xBB\xBFx", L"\xFF\xFEx", L"\xFE\xFFx"}) {
        EXPECT_FALSE(BytesFromText(TextEncoding::kAnsi, text));
    }
    EXPECT_TRUE(BytesFromText(TextEncoding::kAnsi, L"x"));
}

}  // namespace
}  // namespace depot
