#include "platform/system_code_page.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "platform/win32.h"

namespace depot {
namespace {

// The other tests go on with the description that they started with.
class SystemCodePageTest : public testing::Test {
protected:
    SystemCodePageTest() { InstallSystemCodePage(); }
    ~SystemCodePageTest() override { InstallCodePage(before_); }

private:
    CodePage before_ = InstalledCodePage();
};

TEST_F(SystemCodePageTest, AccentedLettersFoldAsInTheCodePage) {
    InstallCodePage(DescribeSystemCodePage(1252));
    EXPECT_TRUE(EqualsNoCase("<\xC9t\xC9>\\", "<\xE9T\xE9>\\"));
    EXPECT_TRUE(EqualsNoCase("\x8A\x8C\x8E\x9F", "\x9A\x9C\x9E\xFF"));
    EXPECT_EQ("C:\\x\\a", ReplaceAllNoCase("<\xE4>\\a", "<\xC4>\\", "C:\\x\\"));
}

TEST_F(SystemCodePageTest, SignsThatOnlyLookLikePairsStayApart) {
    EXPECT_FALSE(EqualsNoCase("\xD7", "\xF7"));
    EXPECT_FALSE(EqualsNoCase("\xDF", "\xFF"));
    EXPECT_FALSE(EqualsNoCase("[", "{"));
}

TEST_F(SystemCodePageTest, AsciiFoldsInEveryCodePageAndLoweringTwiceChangesNothing) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const char c = static_cast<char>(byte);
        EXPECT_EQ(LowerCase(c), LowerCase(LowerCase(c)));
        if (byte < 0x80) {
            EXPECT_EQ(byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : c, LowerCase(c));
        }
    }
}

TEST_F(SystemCodePageTest, LettersFoldAsTheSystemLowersThem) {
    for (int byte = 0x80; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        char lower = static_cast<char>(byte);
        CharLowerBuffA(&lower, 1);
        EXPECT_EQ(lower, LowerCase(static_cast<char>(byte)));
    }
}

TEST(DescribeSystemCodePageTest, KindsAndLeadBytesAreTheSystems) {
    EXPECT_EQ(CodePageKind::kSingleByte, DescribeSystemCodePage(1254).kind);
    EXPECT_EQ(CodePageKind::kUtf8, DescribeSystemCodePage(CP_UTF8).kind);
    for (const unsigned page : {932u, 936u, 949u, 950u}) {
        SCOPED_TRACE(page);
        const CodePage description = DescribeSystemCodePage(page);
        EXPECT_EQ(CodePageKind::kDoubleByte, description.kind);
        EXPECT_TRUE(description.leads[0x95]);
        EXPECT_FALSE(description.leads['\\']);
    }
    EXPECT_FALSE(DescribeSystemCodePage(932).leads[0xB1]);
}

}  // namespace
}  // namespace depot
