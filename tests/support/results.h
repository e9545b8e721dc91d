// What an operation came to, printed with its code and its text where a test expects otherwise.
//
// An operation says it in one of four ways: by a Result, by 1 or 0 where its signature is given, by
// a code of the directory that is 0 when it is done, or by an HRESULT.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

#include "platform/result.h"

namespace depot {

void PrintTo(Reason reason, std::ostream* stream);
void PrintTo(const Error& error, std::ostream* stream);
void PrintTo(const Result& result, std::ostream* stream);

}  // namespace depot

namespace depot::test {

// What operations of a given signature return: to a question, and of their work.
inline constexpr int kYes = 1;
inline constexpr int kNo = 0;
inline constexpr int kDone = 1;
inline constexpr int kFailed = 0;

// What the matchers see of any of the four.
struct Outcome {
    bool isDone = false;
    bool isFailure = false;  // a flag other than 1 and 0, and S_FALSE, are neither
    std::uint32_t code = 0;  // 0 where the result has none
    std::string text;        // the code by its name, and what else is known
};
Outcome OutcomeOf(const Result& result);
Outcome OutcomeOf(int flag);
Outcome OutcomeOf(std::uint32_t code);
Outcome OutcomeOf(long hresult);
// Of the directory's codes as its client declares them.
Outcome OutcomeOf(unsigned long code);

// The name of a code of the directory, or of an HRESULT; its number where it has none here.
std::string DirectoryCodeName(std::uint32_t code);
std::string HresultName(std::uint32_t code);

class DoneMatcher {
public:
    using is_gtest_matcher = void;
    template <class Value>
    bool MatchAndExplain(const Value& value, testing::MatchResultListener* listener) const {
        const Outcome outcome = OutcomeOf(value);
        *listener << outcome.text;
        return outcome.isDone;
    }
    void DescribeTo(std::ostream* stream) const { *stream << "is done"; }
    void DescribeNegationTo(std::ostream* stream) const { *stream << "is not done"; }
};

class FailureMatcher {
public:
    using is_gtest_matcher = void;
    FailureMatcher() = default;
    explicit FailureMatcher(std::uint32_t code) : code_(code) {}

    template <class Value>
    bool MatchAndExplain(const Value& value, testing::MatchResultListener* listener) const {
        const Outcome outcome = OutcomeOf(value);
        *listener << outcome.text;
        return outcome.isFailure && (!code_ || outcome.code == *code_);
    }
    void DescribeTo(std::ostream* stream) const { Describe("fails", stream); }
    void DescribeNegationTo(std::ostream* stream) const { Describe("does not fail", stream); }

private:
    void Describe(const char* verb, std::ostream* stream) const;

    std::optional<std::uint32_t> code_;
};

// A result that is done: also 1, LDAP_SUCCESS and S_OK.
inline DoneMatcher IsDone() {
    return {};
}
// S_OK.
inline DoneMatcher IsOk() {
    return {};
}
// A failure: also 0, and any other code. S_FALSE is none, see IsRefused.
inline FailureMatcher Fails() {
    return {};
}
// A failure with this code, of the system, the directory or COM. REQUIRES: the result has a code.
template <class Code>
FailureMatcher Fails(Code code) {
    return FailureMatcher(static_cast<std::uint32_t>(code));
}

// A failure for this reason.
MATCHER_P(FailsFor, reason, "fails for " + testing::PrintToString(reason)) {
    *result_listener << OutcomeOf(arg).text;
    return arg.Is(reason);
}

// S_FALSE, by which methods refuse what they are asked for.
MATCHER(IsRefused, "is S_FALSE") {
    constexpr long kRefusal = 1;
    *result_listener << HresultName(static_cast<std::uint32_t>(arg));
    return arg == kRefusal;
}

// This code of the directory, where a last error is asked for.
MATCHER_P(IsCode, code, "is " + DirectoryCodeName(static_cast<std::uint32_t>(code))) {
    *result_listener << DirectoryCodeName(arg);
    return arg == static_cast<std::uint32_t>(code);
}

}  // namespace depot::test
