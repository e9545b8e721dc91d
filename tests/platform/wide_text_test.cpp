#include "platform/wide_text.h"

#include <gtest/gtest.h>

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

TEST(WideTextTest, ANulInsideTheTextIsKept) {
    EXPECT_EQ(std::wstring(L"a\0b", 3), WideFromUtf8(std::string_view("a\0b", 3)));
    EXPECT_EQ(std::string("a\0b", 3), Utf8FromWide(std::wstring_view(L"a\0b", 3)));
}

}  // namespace
}  // namespace depot
