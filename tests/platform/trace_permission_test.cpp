#include "platform/trace_permission.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(TracePermissionTest, OrdinaryProcessFollowsTheEnvironment) {
    EXPECT_TRUE(MayFollowTheEnvironment({true, false, 0x1000}));
    EXPECT_TRUE(MayFollowTheEnvironment({true, false, 0x2000}));
    EXPECT_TRUE(MayFollowTheEnvironment({true, false, 0x2100}));
}

TEST(TracePermissionTest, ProcessWithMoreRightsThanTheUserDoesNot) {
    EXPECT_FALSE(MayFollowTheEnvironment({true, true, 0x2000}));
    EXPECT_FALSE(MayFollowTheEnvironment({true, false, 0x3000}));
    EXPECT_FALSE(MayFollowTheEnvironment({true, false, 0x4000}));
    EXPECT_FALSE(MayFollowTheEnvironment({false, false, 0}));
}

TEST(TracePermissionTest, OnlyAFileUnderOneNameIsWritten) {
    EXPECT_TRUE(IsPlainFile({true, false, 1}));
    EXPECT_FALSE(IsPlainFile({true, true, 1}));
    EXPECT_FALSE(IsPlainFile({true, false, 2}));
    EXPECT_FALSE(IsPlainFile({true, false, 0}));
    EXPECT_FALSE(IsPlainFile({false, false, 1}));
}

}  // namespace
}  // namespace depot
