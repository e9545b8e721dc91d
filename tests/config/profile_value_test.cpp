#include "config/profile_value.h"

#include <gtest/gtest.h>

#include "support/random_text.h"

namespace depot {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

// What the profile reader makes of a stored value: the blanks around it go, then one pair of
// quotes.
std::string ReadBack(std::string stored) {
    while (!stored.empty() && IsBlank(stored.front())) stored.erase(0, 1);
    while (!stored.empty() && IsBlank(stored.back())) stored.pop_back();
    const bool quoted = stored.size() >= 2 && stored.front() == stored.back() &&
                        (stored.front() == '\'' || stored.front() == '"');
    return quoted ? stored.substr(1, stored.size() - 2) : stored;
}

TEST(QuoteProfileValueTest, EveryValueIsQuotedAsTheReaderNeedsIt) {
    const struct {
        const char* value;
        const char* stored;
    } rows[] = {
        {"", ""},
        {"plain", "plain"},
        {"two words", "two words"},
        {" a", "' a'"},
        {"a ", "'a '"},
        {" ", "' '"},
        {"\ta", "'\ta'"},
        {" 'a'", "' 'a''"},
        {"'a' ", "''a' '"},
        {"\"a\" ", "'\"a\" '"},
        {"'a'", "''a''"},
        {"'a", "'a"},
        {"a'", "a'"},
        {"'", "'''"},
        {"''", "''''"},
        {"\"a\"", "\"\"a\"\""},
        {"\"a", "\"a"},
        {"a\"", "a\""},
        {"\"", "\"\"\""},
        {"\"\"", "\"\"\"\""},
        {"'a\"", "'a\""},
        {"\"a'", "\"a'"},
        {"it's", "it's"},
        {"a;b=c", "a;b=c"},
        {"\xC4 \x80", "\xC4 \x80"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(row.stored, QuoteProfileValue(row.value));
        EXPECT_EQ(row.value, ReadBack(row.stored));
    }
}

TEST(QuoteProfileValueTest, ValuesLongerThanFourThousandCharactersAreQuotedWhole) {
    const std::string value = " " + std::string(10'000, 'x');
    EXPECT_EQ("'" + value + "'", QuoteProfileValue(value));
}

TEST(QuoteProfileValueTest, RandomValuesAreReadBackExactly) {
    test::RandomTexts random(0x5EED11);
    for (int round = 0; round < 8000; ++round) {
        const std::string value = random.Text(7, " \t'\"ab=;\xC4");
        SCOPED_TRACE(value);
        ASSERT_EQ(value, ReadBack(QuoteProfileValue(value)));
    }
}

}  // namespace
}  // namespace depot
