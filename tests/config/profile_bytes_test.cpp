#include "config/profile_bytes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/code_pages.h"

namespace depot {
namespace {

struct Row {
    std::string before;
    std::string after;
};

void ExpectRows(const std::vector<Row>& rows, const ProfileLineEdit& edit) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        EXPECT_EQ(row.after, WithProfileLine(row.before, edit, LetterCase::kOfCodePage));
        EXPECT_EQ(row.after, WithProfileLine(row.before, edit, LetterCase::kOfAscii));
    }
}

TEST(WithProfileLineTest, FirstLineOfTheKeyInTheFirstSectionOfTheNameTakesTheValue) {
    ExpectRows({{"[S]\r\nK=1\r\nK=2\r\n", "[S]\r\nK=new\r\nK=2\r\n"},
                {"K=0\n[T]\nK=1\n[S]\nK=2\n[S]\nK=3\n", "K=0\n[T]\nK=1\n[S]\nK=new\n[S]\nK=3\n"},
                {" [s] x\r  k \t= 1 ;x\rZ=1", " [s] x\r  k \t=new\rZ=1"},
                {"[S]\nK=1", "[S]\nK=new"},
                {"[S]\nK \nZ", "[S]\nK=new\nZ"},
                {"\xEF\xBB\xBF[S]\nK=1", "\xEF\xBB\xBF[S]\nK=new"},
                {"[S]\n\n;K=0\nKK=1\n[K=1\nK==", "[S]\n\n;K=0\nKK=1\n[K=1\nK=new"}},
               {"S", " K ", "new"});
}

TEST(WithProfileLineTest, NewLineComesBehindTheLastOneOfItsSection) {
    ExpectRows({{"", "[S]\r\nK=new\r\n"},
                {"\xEF\xBB\xBF", "\xEF\xBB\xBF[S]\r\nK=new\r\n"},
                {"[T]\nK=1", "[T]\nK=1\r\n[S]\r\nK=new\r\n"},
                {"[S]", "[S]\r\nK=new\r\n"},
                {"[S]\nA=1\n\n[T]\nK=1\n", "[S]\nA=1\nK=new\r\n\n[T]\nK=1\n"},
                {"[S]\nA=1\n[S]\nK=1\n", "[S]\nA=1\nK=new\r\n[S]\nK=1\n"}},
               {"S", "K", "new"});
}

TEST(WithProfileLineTest, ValueThatIsRemovedTakesItsLineAlone) {
    ExpectRows({{"[S]\r\nA=1\r\nK=1\r\n\r\n[T]\r\nK=2", "[S]\r\nA=1\r\n\r\n[T]\r\nK=2"},
                {"[S]\nK=1", "[S]\n"},
                {"[T]\nK=1", "[T]\nK=1"},
                {"", ""}},
               {"S", "K", {}});
}

TEST(WithProfileLineTest, SecondBytesAreNoBrackets) {
    const test::CodePageScope japanese(932);
    const std::string profile = "[\x83]\n[\x83]]\nK=1\n";
    const ProfileLineEdit edit = {"\x83]", "K", "2"};
    EXPECT_EQ("[\x83]\n[\x83]]\nK=2\n", WithProfileLine(profile, edit, LetterCase::kOfCodePage));
}

TEST(WithProfileLineTest, HalfACharacterTakesNoLineEndWithIt) {
    ExpectRows({{"[S]\nA=\x83\nK=1\n", "[S]\nA=\x83\nK=new\n"}}, {"S", "K", "new"});
}

}  // namespace
}  // namespace depot
