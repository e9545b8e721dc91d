#include "config/profile_text.h"

#include <gtest/gtest.h>

#include <string>

namespace depot {
namespace {

constexpr char kBefore[] = "[A]\r\nOne=1\r\nTwo=2\r\n\r\n[B]\r\nOne=1\r\nTwo=2\r\n";

TEST(LacksLinesTest, TextIsWholeWhateverItsOneKeyHolds) {
    EXPECT_FALSE(LacksLines(kBefore, kBefore, "Two"));
    EXPECT_FALSE(
        LacksLines(kBefore, "[A]\r\nOne=1\r\nTwo=other\r\n[B]\r\nOne=1\r\nTwo=2\r\n", "two"));
    EXPECT_FALSE(LacksLines(kBefore, "[A]\r\nOne=1\r\n[B]\r\nOne=1\r\nTwo=2\r\n", "Two"));
    EXPECT_FALSE(LacksLines(kBefore, std::string(kBefore) + "[C]\r\nNew=1\r\n", "New"));
    EXPECT_FALSE(LacksLines("", "", "Two"));
}

TEST(LacksLinesTest, EveryCutOfOtherLinesIsSeen) {
    const std::string text = std::string(kBefore) + "Three=33";
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_TRUE(LacksLines(text + "\r\n", text.substr(0, size), "Two")) << size;
    }
    EXPECT_FALSE(LacksLines(text + "\r\n", text, "Two"));
}

TEST(LacksLinesTest, SystemsOwnWayOfWritingIsNoLoss) {
    const char* const rows[][2] = {
        {"[A]\n  One = 1 \n\n\n", "[A]\r\nOne=1\r\n"},
        {"[ A ] behind\nOne=1", "[ A ]\r\nOne=1\r\n"},
        {"; a = comment\n[A]\n", "; a=comment\r\n[A]\r\n"},
        {"\xEF\xBB\xBF[A]\nOne=1\n", "[A]\r\nOne=1\r\n"},
        {"[A]\nOne=\x81x\n", "[A]\r\nOne=\xEF\xBF\xBDx\r\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0]);
        EXPECT_FALSE(LacksLines(row[0], row[1], "Two"));
    }
}

TEST(HasValueLineTest, ValueIsFoundWholeOnly) {
    EXPECT_TRUE(HasValueLine(kBefore, "two", "2"));
    EXPECT_TRUE(HasValueLine("[A]\nKey = ' v '", "Key", "' v '"));
    EXPECT_FALSE(HasValueLine(kBefore, "Two", "22"));
    EXPECT_FALSE(HasValueLine("[A]\nKey=123", "Key", "1234"));
    EXPECT_FALSE(HasValueLine("", "Key", "1"));
    EXPECT_TRUE(HasValueLine("Key=", "Key", ""));
}

}  // namespace
}  // namespace depot
