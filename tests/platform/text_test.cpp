#include "platform/text.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(ReplaceAllNoCaseTest, EveryOccurrenceInAnyCaseIsReplaced) {
    EXPECT_EQ("C:\\w\\sub\\C:\\w\\b",
              ReplaceAllNoCase("<Work>\\sub\\<work>\\b", "<WORK>\\", "C:\\w\\"));
}

TEST(ReplaceAllNoCaseTest, InsertedTextIsNotSearchedAgain) {
    EXPECT_EQ("aaaa", ReplaceAllNoCase("aa", "a", "aa"));
}

TEST(ReplaceAllNoCaseTest, FindThatDiffersOnlyInCaseLeavesTheTextUnchanged) {
    EXPECT_EQ("One", ReplaceAllNoCase("One", "one", "ONE"));
}

TEST(ReplaceAllNoCaseTest, EmptyFindOrTextChangesNothing) {
    EXPECT_EQ("text", ReplaceAllNoCase("text", "", "x"));
    EXPECT_EQ("", ReplaceAllNoCase("", "x", "y"));
}

TEST(EnsureTrailingBackslashTest, OnlyANonEmptyTextGetsOne) {
    EXPECT_EQ("", EnsureTrailingBackslash(""));
    EXPECT_EQ("a\\", EnsureTrailingBackslash("a"));
    EXPECT_EQ("a\\", EnsureTrailingBackslash("a\\"));
}

}  // namespace
}  // namespace depot
