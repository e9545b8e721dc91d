#include "macros/macro_engine.h"

#include <gtest/gtest.h>

#include "macros/fake_macro_system.h"
#include "support/code_pages.h"

namespace depot {
namespace {

int valuesAsked = 0;

std::optional<std::string> CountedValue(const MacroContext& /*context*/) {
    ++valuesAsked;
    return "value";
}

std::optional<std::string> NoValue(const MacroContext& /*context*/) {
    return std::nullopt;
}

void AppendMark(const MacroContext& /*context*/, std::string& text) {
    text += "!";
}

std::string Replaced(std::string text, const char* find, const std::string& replacement) {
    ReplaceEvery(text, find, replacement);
    return text;
}

std::string AfterStep(const MacroStep& step, std::string text) {
    test::FakeMacroSystem system;
    RunStep(step, {system}, text);
    return text;
}

TEST(ReplaceEveryTest, EveryOccurrenceIsReplacedInItsExactSpelling) {
    EXPECT_EQ("1b1", Replaced("$A$b$A$", "$A$", "1"));
    EXPECT_EQ("$a$", Replaced("$a$", "$A$", "1"));
    EXPECT_EQ("", Replaced("$A$", "$A$", ""));
    EXPECT_EQ("", Replaced("", "$A$", "1"));
}

TEST(ReplaceEveryTest, InsertedTextIsNotSearchedAgain) {
    EXPECT_EQ("$A$$A$", Replaced("$A$", "$A$", "$A$$A$"));
    EXPECT_EQ("$$A$A$", Replaced("$$A$A$", "$A$x", "1"));
    // The rest of a macro around an inserted text makes no new one.
    EXPECT_EQ("$A$", Replaced("$$A$A$", "$A$", ""));
}

TEST(ReplaceEveryTest, MacrosThatShareADollarAreTakenFromTheLeft) {
    EXPECT_EQ("1A$", Replaced("$A$A$", "$A$", "1"));
}

TEST(ReplaceEveryTest, ResultOfTheGreatestSizeIsMadeAndOneByteMoreIsNot) {
    const std::string value(kMaxExpandedBytes - 1, 'v');
    EXPECT_EQ(kMaxExpandedBytes, Replaced("x$A$", "$A$", value).size());
    EXPECT_EQ("xy$A$", Replaced("xy$A$", "$A$", value));
}

TEST(RunStepTest, TextWithoutTheMacroAsksForNoValue) {
    valuesAsked = 0;
    EXPECT_EQ("$a$ $A", AfterStep({"$A$", CountedValue, AppendMark}, "$a$ $A"));
    EXPECT_EQ(0, valuesAsked);
}

TEST(RunStepTest, SeveralOccurrencesAskForTheValueOnce) {
    valuesAsked = 0;
    EXPECT_EQ("value,value", AfterStep({"$A$", CountedValue}, "$A$,$A$"));
    EXPECT_EQ(1, valuesAsked);
}

TEST(RunStepTest, MacroWithoutAValueStays) {
    EXPECT_EQ("$A$", AfterStep({"$A$", NoValue}, "$A$"));
}

TEST(RunStepTest, RewritingFollowsTheReplacement) {
    EXPECT_EQ("value!", AfterStep({"$A$", CountedValue, AppendMark}, "$A$"));
}

TEST(ReplaceEveryTest, SecondByteBeginsNoOccurrence) {
    const test::CodePageScope scope(932);
    EXPECT_EQ("\x83Program Files", Replaced("\x83Program Files", "Program Files", "x"));
    EXPECT_EQ("\x83Px", Replaced("\x83PProgram Files", "Program Files", "x"));
}

}  // namespace
}  // namespace depot
