#include "platform/result.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

Error Missing() {
    return {Reason::kMissing, CodeKind::kDirectory, 32, "There is no such entry."};
}

TEST(ResultTest, DoneIsNoFailureAndHasNoText) {
    const Result done;
    EXPECT_TRUE(done);
    EXPECT_FALSE(done.Is(Reason::kMissing));
    EXPECT_EQ("", done.Text());
}

TEST(ResultTest, FailureKeepsItsReasonCodeAndText) {
    const Result failed = Missing();
    EXPECT_FALSE(failed);
    EXPECT_TRUE(failed.Is(Reason::kMissing));
    EXPECT_FALSE(failed.Is(Reason::kExists));
    EXPECT_EQ(CodeKind::kDirectory, failed.Why().kind);
    EXPECT_EQ(32u, failed.Why().code);
    EXPECT_EQ("There is no such entry.", failed.Text());
}

TEST(ResultTest, FlagOfADoneOperationLeavesTheErrorTextAlone) {
    std::string text = "before";
    EXPECT_EQ(1, Result().AsFlag(&text));
    EXPECT_EQ("before", text);
}

TEST(ResultTest, FlagOfAFailureHandsOutTheText) {
    std::string text = "before";
    EXPECT_EQ(0, Result(Missing()).AsFlag(&text));
    EXPECT_EQ("There is no such entry.", text);
    EXPECT_EQ(0, Result(Missing()).AsFlag(nullptr));
}

TEST(ResultTest, FailureWithoutTextLeavesTheErrorTextAlone) {
    std::string text = "before";
    EXPECT_EQ(0, Result(Error{Reason::kStopped, CodeKind::kDirectory, 88}).AsFlag(&text));
    EXPECT_EQ("before", text);
}

}  // namespace
}  // namespace depot
