#include "manager/display_path_text.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(MatchesPrefixTest, BareBracketedNameMatches) {
    EXPECT_TRUE(MatchesPrefix("<WORK>", DisplayPrefix("Work")));
    EXPECT_FALSE(MatchesPrefix("<Workshop>\\x", DisplayPrefix("Work")));
}

}  // namespace
}  // namespace depot
