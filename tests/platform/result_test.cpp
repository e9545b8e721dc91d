#include "platform/result.h"

#include <gtest/gtest.h>

#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;
using testing::Not;

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
    EXPECT_THAT(Result().AsFlag(&text), IsDone());
    EXPECT_EQ("before", text);
}

TEST(ResultTest, FlagOfAFailureHandsOutTheText) {
    std::string text = "before";
    EXPECT_THAT(Result(Missing()).AsFlag(&text), Fails());
    EXPECT_EQ("There is no such entry.", text);
    EXPECT_THAT(Result(Missing()).AsFlag(nullptr), Fails());
}

TEST(ResultTest, FailureWithoutTextLeavesTheErrorTextAlone) {
    std::string text = "before";
    EXPECT_THAT(Result(Error{Reason::kStopped, CodeKind::kDirectory, 88}).AsFlag(&text), Fails());
    EXPECT_EQ("before", text);
}

// What a failing expectation prints.
template <class Value, class Matcher>
std::string Explained(const Value& value, const Matcher& matcher) {
    testing::StringMatchResultListener listener;
    testing::ExplainMatchResult(matcher, value, &listener);
    return listener.str();
}

TEST(ResultMatcherTest, ResultPrintsItsReasonItsCodeAndItsText) {
    const Result failed = Missing();
    EXPECT_THAT(failed, Fails(32));
    EXPECT_THAT(failed, test::FailsFor(Reason::kMissing));
    EXPECT_THAT(failed, Not(IsDone()));
    EXPECT_THAT(failed, Not(Fails(33)));
    for (const std::string part : {"kMissing", "32", "There is no such entry."}) {
        EXPECT_THAT(Explained(failed, IsDone()), testing::HasSubstr(part));
        EXPECT_THAT(testing::PrintToString(failed), testing::HasSubstr(part));
    }
    EXPECT_THAT(Result(), IsDone());
    EXPECT_THAT(Result(), Not(Fails()));
}

TEST(ResultMatcherTest, FlagIsOneOrZero) {
    EXPECT_THAT(test::kDone, IsDone());
    EXPECT_THAT(test::kFailed, Fails());
    EXPECT_THAT(2, Not(testing::AnyOf(IsDone(), Fails())));
}

TEST(ResultMatcherTest, CodeOfTheDirectoryIsDoneAtZero) {
    EXPECT_THAT(std::uint32_t{0}, IsDone());
    EXPECT_THAT(std::uint32_t{32}, Fails(32));
    EXPECT_THAT(Explained(std::uint32_t{32}, IsDone()), testing::HasSubstr("32"));
}

TEST(ResultMatcherTest, HresultPrintsItsNumberInHexadecimal) {
    constexpr long kFalse = 1;
    const auto pointer = static_cast<long>(static_cast<std::int32_t>(0x80004003));
    EXPECT_THAT(0L, test::IsOk());
    EXPECT_THAT(kFalse, test::IsRefused());
    EXPECT_THAT(kFalse, Not(testing::AnyOf(test::IsOk(), Fails())));
    EXPECT_THAT(pointer, Fails(0x80004003));
    EXPECT_THAT(Explained(pointer, test::IsOk()), testing::HasSubstr("0x80004003"));
}

}  // namespace
}  // namespace depot
