#include "platform/environment.h"

#include <gtest/gtest.h>

#include "platform/win32.h"

namespace depot {
namespace {

constexpr char kVariable[] = "DEPOT_TEST_VALUE";

class ExpandEnvironmentTest : public testing::Test {
protected:
    ~ExpandEnvironmentTest() override { Set(nullptr); }
    static void Set(const char* value) { SetEnvironmentVariableA(kVariable, value); }
};

TEST_F(ExpandEnvironmentTest, ReferencesAreReplaced) {
    Set("Acme");
    EXPECT_EQ("C:\\Acme\\Acme", ExpandEnvironment("C:\\%DEPOT_TEST_VALUE%\\%depot_test_value%"));
}

TEST_F(ExpandEnvironmentTest, UnknownNamesAndLonePercentSignsStay) {
    EXPECT_EQ("%DEPOT_TEST_VALUE%\\100%", ExpandEnvironment("%DEPOT_TEST_VALUE%\\100%"));
    EXPECT_EQ("%%", ExpandEnvironment("%%"));
}

TEST_F(ExpandEnvironmentTest, TextThatExpandsToNothingComesBackUnexpanded) {
    Set("");
    EXPECT_EQ("%DEPOT_TEST_VALUE%", ExpandEnvironment("%DEPOT_TEST_VALUE%"));
    EXPECT_EQ("a", ExpandEnvironment("a%DEPOT_TEST_VALUE%"));
}

// The documentation asks for room for the text, its NUL and one byte more; some systems do without
// that.
bool SystemWantsAByteMore() {
    char exact[4] = {};
    return ExpandEnvironmentStringsA("abc", exact, sizeof(exact)) > sizeof(exact);
}

TEST_F(ExpandEnvironmentTest, ResultThatFits520BytesIsUsedAndALongerOneIsNot) {
    const std::size_t longest = SystemWantsAByteMore() ? 519 : 520;
    // The sizes count the terminating NUL.
    for (const std::size_t bytes : {518u, 519u, 520u, 521u}) {
        SCOPED_TRACE(bytes);
        const std::string value(bytes - 1, 'v');
        Set(value.c_str());
        EXPECT_EQ(bytes <= longest ? value : "%DEPOT_TEST_VALUE%",
                  ExpandEnvironment("%DEPOT_TEST_VALUE%"));
    }
}

TEST_F(ExpandEnvironmentTest, LongTextComesBackUnexpanded) {
    Set("v");
    for (const std::size_t size : {519u, 32748u, 32749u, 65520u, 100000u}) {
        SCOPED_TRACE(size);
        const std::string text = std::string(size, 'x') + "%DEPOT_TEST_VALUE%";
        EXPECT_EQ(text, ExpandEnvironment(text));
    }
}

TEST_F(ExpandEnvironmentTest, EmptyTextStaysEmpty) {
    EXPECT_EQ("", ExpandEnvironment(""));
}

}  // namespace
}  // namespace depot
