#include "depotctl/completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace depot::ctl {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(CompletionTest, EachCommandHasItsWordsWithTheirHelp) {
    const std::string script = PowerShellCompletion(
        {{"", {{"depots", "Depots"}}}, {"depots add", {{"--path", "Where"}, {"-p", ""}}}});
    EXPECT_THAT(script, HasSubstr("'' = [ordered]@{\n            'depots' = 'Depots'\n"));
    EXPECT_THAT(script, HasSubstr("'depots add' = [ordered]@{\n"
                                  "            '--path' = 'Where'\n            '-p' = '-p'\n"));
}

TEST(CompletionTest, TextsAreNeverExpandedAndStayOnOneLine) {
    const std::string script = PowerShellCompletion({{"", {{"x", "a 'b' $(c)\n`d"}}}});
    EXPECT_THAT(script, HasSubstr("'x' = 'a ''b'' $(c) `d'\n"));
}

TEST(CompletionTest, WordStandsOnceWhateverItsLetterCase) {
    const std::string script = PowerShellCompletion({{"", {{"-v", "one"}, {"-V", "other"}}}});
    EXPECT_THAT(script, HasSubstr("'-v' = 'one'"));
    EXPECT_THAT(script, Not(HasSubstr("'-V'")));
}

}  // namespace
}  // namespace depot::ctl
