#include "platform/file_names.h"

#include <gtest/gtest.h>

#include <set>

namespace depot {
namespace {

TEST(FileNamesTest, LetterCaseMakesNoDifferenceAndAllElseDoes) {
    for (const auto& [left, right, same] :
         {std::tuple("a.kra", "A.KRA", true), {"a.kra", "a.kra", true}, {"", "", true},
          {"a.kra", "a.kr", false}, {"a", "a ", false}, {"co-op", "coop", false},
          {"a_b", "a b", false}, {"\xC4.kra", "\xE4.kra", true}, {"\xC4", "A", false}}) {
        SCOPED_TRACE(left);
        EXPECT_EQ(same, IsSameFileName(left, right));
        EXPECT_EQ(same, IsSameFileName(right, left));
        EXPECT_EQ(same, !FileNameLess()(left, right) && !FileNameLess()(right, left));
    }
}

TEST(FileNamesTest, OrderedSetHoldsEachNameOnce) {
    std::set<std::string, FileNameLess> names;
    EXPECT_TRUE(names.insert("b.kra").second);
    EXPECT_TRUE(names.insert("a.kra").second);
    EXPECT_FALSE(names.insert("B.kra").second);
    EXPECT_EQ(2u, names.size());
}

}  // namespace
}  // namespace depot
