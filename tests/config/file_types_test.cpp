#include "config/file_types.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(DetectFileTypeTest, LetterCaseDoesNotMatter) {
    EXPECT_EQ(64, DetectFileType("A.KRA.KRA"));
}

TEST(DetectFileTypeTest, KrcAndKrkAreNotRecognised) {
    EXPECT_EQ(0, DetectFileType("a.krc"));
    EXPECT_EQ(0, DetectFileType("a.krk"));
}

}  // namespace
}  // namespace depot
