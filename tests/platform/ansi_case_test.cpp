#include "platform/ansi_case.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "platform/win32.h"

namespace depot {
namespace {

// The other tests go on with the table that they started with.
class AnsiCaseTest : public testing::Test {
protected:
    AnsiCaseTest() {
        for (std::size_t byte = 0; byte < before_.size(); ++byte) {
            before_[byte] = LowerCase(static_cast<char>(byte));
        }
        InstallAnsiCaseTable();
    }
    ~AnsiCaseTest() override { InstallCaseTable(before_); }

private:
    CaseTable before_{};
};

TEST_F(AnsiCaseTest, AccentedLettersFoldAsInTheCodePage) {
    ASSERT_EQ(1252u, GetACP());
    EXPECT_TRUE(EqualsNoCase("<\xC9t\xC9>\\", "<\xE9T\xE9>\\"));
    EXPECT_TRUE(EqualsNoCase("\x8A\x8C\x8E\x9F", "\x9A\x9C\x9E\xFF"));
    EXPECT_EQ("C:\\x\\a", ReplaceAllNoCase("<\xE4>\\a", "<\xC4>\\", "C:\\x\\"));
}

TEST_F(AnsiCaseTest, SignsThatOnlyLookLikePairsStayApart) {
    EXPECT_FALSE(EqualsNoCase("\xD7", "\xF7"));
    EXPECT_FALSE(EqualsNoCase("\xDF", "\xFF"));
    EXPECT_FALSE(EqualsNoCase("[", "{"));
}

TEST_F(AnsiCaseTest, AsciiFoldsAsBeforeAndLoweringTwiceChangesNothing) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const char c = static_cast<char>(byte);
        EXPECT_EQ(LowerCase(c), LowerCase(LowerCase(c)));
        if (byte < 0x80) {
            EXPECT_EQ(byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : c, LowerCase(c));
        }
    }
}

}  // namespace
}  // namespace depot
