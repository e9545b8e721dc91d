#include "platform/file_names.h"

#include <gtest/gtest.h>

#include <tuple>

namespace depot {
namespace {

TEST(FileNamesTest, LetterCaseMakesNoDifferenceAndAllElseDoes) {
    for (const auto& [left, right, same] : {std::tuple("a.kra", "A.KRA", true),
                                            {"a.kra", "a.kra", true},
                                            {"", "", true},
                                            {"a.kra", "a.kr", false},
                                            {"a", "a ", false},
                                            {"co-op", "coop", false},
                                            {"a_b", "a b", false},
                                            {"\xC4.kra", "\xE4.kra", true},
                                            {"\xC4", "A", false}}) {
        SCOPED_TRACE(left);
        EXPECT_EQ(same, IsSameFileName(left, right));
        EXPECT_EQ(same, IsSameFileName(right, left));
    }
}

TEST(FileNamesTest, SetHoldsEachNameOnce) {
    FileNameSet names;
    EXPECT_TRUE(names.Insert("b.kra"));
    EXPECT_TRUE(names.Insert("a.kra"));
    EXPECT_TRUE(names.Insert("\xC4.kra"));
    EXPECT_FALSE(names.Insert("B.kra"));
    EXPECT_FALSE(names.Insert("\xE4.kra"));
    EXPECT_TRUE(names.Insert("A.kr"));
}

}  // namespace
}  // namespace depot
