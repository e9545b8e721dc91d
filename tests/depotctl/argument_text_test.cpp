// What stands on a command line, and what its user meant.
#include "depotctl/argument_text.h"

#include <gtest/gtest.h>

namespace depot::ctl {
namespace {

TEST(ClosedPathsTest, BackslashAtTheEndOfAQuotedPathIsNoEscape) {
    const struct {
        const wchar_t *typed, *meant;
    } rows[] = {
        {L"ls \"<Work>\\\"", L"ls \"<Work>\\\\\""},
        {L"mv \"<Work>\\a b\\\" \"<Archive>\\\"", L"mv \"<Work>\\a b\\\\\" \"<Archive>\\\\\""},
        {L"cp \"C:\\My files\\\" x", L"cp \"C:\\My files\\\\\" x"},
        {L"cp \"\\\\server\\share\\\"", L"cp \"\\\\server\\share\\\\\""},
        {L"\"C:\\a b\\depotctl.exe\" ls \"<Travail \x4E88>\\\"\t-l",
         L"\"C:\\a b\\depotctl.exe\" ls \"<Travail \x4E88>\\\\\"\t-l"}};
    for (const auto& row : rows) EXPECT_EQ(row.meant, WithClosedPaths(row.typed));
}

TEST(ClosedPathsTest, AnythingElseStaysAsItIs) {
    for (const wchar_t* line :
         {L"", L"\"", L"ls", L"ls <Work>\\", L"ls \"<Work>\\a\"", L"ls \"<Work>\\\\\"",
          L"set p s k \"say \\\"hello\\\"\"", L"set p s k \"\\\"",
          L"set p s k \"<b>bold\\\" text\"", L"set p s k \"<Work>\\a\\\"b\"",
          L"set p s k \"x <Work>\\\" y\"", L"\"C:\\a\"\\\" b"}) {
        EXPECT_EQ(line, WithClosedPaths(line));
    }
}

}  // namespace
}  // namespace depot::ctl
