#include "model/copy_name.h"

#include <gtest/gtest.h>

#include <random>

#include "support/code_pages.h"
#include "support/random_text.h"

namespace depot {
namespace {

constexpr char kDash[] = "%s - copy%s";
constexpr char kPrefix[] = "Copy %sof %s";

struct TemplateCase {
    const char* name;
    const char* text;
    bool hasCounter;
};

TEST(BuildCounterTemplateTest, FirstPositiveNumberInParenthesesBecomesTheCounter) {
    const TemplateCase cases[] = {
        {"Plan (7).kra", "Plan (%d).kra", true},
        {"Plan.kra", "", false},
        {"", "", false},
        {"(3)x", "", false},
        {"a((3)b", "a(%d)b", true},
        {"a(1)(2)", "a(%d)(2)", true},
        {"a(x)(2)b", "a(x)(%d)b", true},
        {"Plan (0)", "Plan (0)", false},
        {"Plan (x)", "Plan (x)", false},
        {"Plan ()", "Plan ()", false},
        {"Plan (3", "Plan (3", false},
        {"Plan (3x)", "Plan (%d)", true},
        {"Plan (-3)", "Plan (-3)", false},
        {"Plan (+3)", "Plan (+3)", false},
        {"Plan ( 3)", "Plan ( 3)", false},
        {"Plan )3(", "", false},
        {"a(b(3)", "a(b(%d)", true},
        {"a)(3)", "a)(%d)", true},
        {"a(3)b)", "a(%d)b)", true},
        {"Plan (99999999999999999999)", "Plan (%d)", true},
        {"Plan (007)", "Plan (%d)", true},
    };
    for (const TemplateCase& expected : cases) {
        SCOPED_TRACE(expected.name);
        const CounterTemplate counter = BuildCounterTemplate(expected.name);
        EXPECT_EQ(expected.text, counter.text);
        EXPECT_EQ(expected.hasCounter, counter.hasCounter);
    }
}

TEST(FormatCounterTest, OnlyDescribedSequencesAreInterpreted) {
    EXPECT_EQ("a (3)", FormatCounter("a (%d)", 3));
    EXPECT_EQ("100%", FormatCounter("100%%", 3));
    EXPECT_EQ("%s%n%99999d%", FormatCounter("%s%n%99999d%", 3));
}

TEST(FormatTextsTest, TextsAreTakenInOrderAndNeverReadBeyond) {
    EXPECT_EQ("Report - copy.kra", FormatTexts(kDash, "Report", ".kra"));
    EXPECT_EQ("ab", FormatTexts("%s%s%s", "a", "b"));
    EXPECT_EQ("%n%d%", FormatTexts("%n%d%", "a", "b"));
}

std::string Sequence(std::string name, int attempts,
                     std::string (*make)(std::string_view, int, std::string_view),
                     const char* format) {
    std::string all;
    for (int number = 1; number <= attempts; ++number) {
        name = make(name, number, format);
        all += name + "|";
    }
    return all;
}

TEST(MakeDashCopyNameTest, AttemptsCountUpFromTheCopyName) {
    EXPECT_EQ("Report - copy.kra|Report - copy (2).kra|Report - copy (3).kra|",
              Sequence("Report.kra", 3, MakeDashCopyName, kDash));
}

TEST(MakePrefixCopyNameTest, AttemptsCountUpBehindThePrefix) {
    EXPECT_EQ("Copy of Report.kra|Copy (2) of Report.kra|Copy (3) of Report.kra|",
              Sequence("Report.kra", 3, MakePrefixCopyName, kPrefix));
}

TEST(MakeDashCopyNameTest, AttemptsBelowTwoUseTheFormat) {
    for (const int number : {1, 0, -1}) {
        EXPECT_EQ("Plan (7) - copy.kra", MakeDashCopyName("Plan (7).kra", number, kDash));
    }
}

TEST(MakePrefixCopyNameTest, AnyAttemptButTheFirstStandsBehindThePrefix) {
    EXPECT_EQ("Copy (0) of Report.kra", MakePrefixCopyName("Copy of Report.kra", 0, kPrefix));
    EXPECT_EQ("Copy (-1) of Report.kra", MakePrefixCopyName("Copy of Report.kra", -1, kPrefix));
    EXPECT_EQ("a Copy (2) of b", MakePrefixCopyName("a Copy of b", 2, kPrefix));
    // The letter case counts: this one is not found.
    EXPECT_EQ("cop (2)  of b", MakePrefixCopyName("copy of b", 2, kPrefix));
}

TEST(MakeDashCopyNameTest, CounterOutsideOfTheBaseIsNoneOfItsOwn) {
    EXPECT_EQ("a (2).b(3)", MakeDashCopyName("a.b(3)", 2, kDash));
}

TEST(MakeDashCopyNameTest, NameWithoutExtensionCountsAsExtension) {
    EXPECT_EQ(" - copyNotes", MakeDashCopyName("Notes", 1, kDash));
}

TEST(MakePrefixCopyNameTest, CounterInTheNameWinsAndIsAtLeastTwo) {
    EXPECT_EQ("Plan (2).kra", MakePrefixCopyName("Plan (7).kra", 1, kPrefix));
    EXPECT_EQ("Plan (9).kra", MakePrefixCopyName("Plan (7).kra", 9, kPrefix));
}

TEST(MakeDashCopyNameTest, ParenthesesWithoutAValidCounterGetOneAppended) {
    EXPECT_EQ("Plan (0) (2).kra", MakeDashCopyName("Plan (0).kra", 2, kDash));
    EXPECT_EQ("Plan (x) (2).kra", MakeDashCopyName("Plan (x).kra", 2, kDash));
}

TEST(MakeDashCopyNameTest, PercentInATemplateIsInterpretedByTheFormatter) {
    EXPECT_EQ("a% (2).kra", MakeDashCopyName("a%% (1).kra", 2, kDash));
    EXPECT_EQ("a%s (2).kra", MakeDashCopyName("a%s (1).kra", 2, kDash));
    EXPECT_EQ("a%% (2).kra", MakeDashCopyName("a%%.kra", 2, kDash));
}

TEST(MakePrefixCopyNameTest, MissingPrefixGarblesTheName) {
    // The position of the missing prefix counts as -1: three characters, the number, one left out.
    EXPECT_EQ("Rep (2) rt.kra", MakePrefixCopyName("Report.kra", 2, kPrefix));
    EXPECT_EQ("ab (2) ", MakePrefixCopyName("ab", 2, kPrefix));
}

TEST(MakeCopyNameTest, NoNameOrFormatMakesItReadOutside) {
    std::mt19937 random(7);
    const std::string alphabet = "a.() %sdn0123";
    for (int round = 0; round < 20000; ++round) {
        std::string name, format;
        for (auto length = random() % 12; length > 0; --length) {
            name += alphabet[random() % alphabet.size()];
            format += alphabet[random() % alphabet.size()];
        }
        const int number = static_cast<int>(random() % 5);
        MakeDashCopyName(name, number, format);
        EXPECT_LE(MakePrefixCopyName(name, number, format).size(),
                  2 * (name.size() + 24) + 24 + format.size() * 12);
    }
}

TEST(FindFreeCopyNameTest, SearchEndsAfterTenThousandNames) {
    for (const CopyNameStyle style : {CopyNameStyle::kDash, CopyNameStyle::kPrefix}) {
        const char* const format = style == CopyNameStyle::kDash ? kDash : kPrefix;
        int asked = 0;
        const auto takenUpTo = [&asked](int last) {
            asked = 0;
            return [&asked, last](const std::string&) { return ++asked <= last; };
        };
        EXPECT_EQ(std::nullopt, FindFreeCopyName("a.kra", style, format, takenUpTo(10000)));
        EXPECT_EQ(10000, asked);
        const auto last = FindFreeCopyName("a.kra", style, format, takenUpTo(9999));
        EXPECT_EQ(style == CopyNameStyle::kDash ? "a - copy (10000).kra" : "Copy (10000) of a.kra",
                  last);
    }
}

TEST(FindFreeCopyNameTest, EachNameIsMadeFromTheOneBefore) {
    std::string asked;
    FindFreeCopyName("Plan (7).kra", CopyNameStyle::kPrefix, kPrefix,
                     [&asked](const std::string& name) {
                         asked += name + "|";
                         return name != "Plan (4).kra";
                     });
    EXPECT_EQ("Plan (2).kra|Plan (2).kra|Plan (3).kra|Plan (4).kra|", asked);
}

TEST(MakeCopyNameTest, JapaneseNamesCountUpLikeOthers) {
    const test::CodePageScope scope(932);
    // コピー %s～ %s and %s - コピー%s, for 表.kra.
    const std::string prefix = "\x83R\x83s\x81[ %s\x81` %s", dash = "%s - \x83R\x83s\x81[%s";
    const std::string name = "\x95\\.kra", copy = "\x83R\x83s\x81[";
    EXPECT_EQ(copy + " \x81` " + name + "|" + copy + " (2) \x81` " + name + "|" + copy +
                  " (3) \x81` " + name + "|",
              Sequence(name, 3, MakePrefixCopyName, prefix.c_str()));
    EXPECT_EQ("\x95\\ - " + copy + ".kra|\x95\\ - " + copy + " (2).kra|",
              Sequence(name, 2, MakeDashCopyName, dash.c_str()));
}

TEST(MakePrefixCopyNameTest, MissingPrefixHalvesNoCharacter) {
    const test::CodePageScope scope(932);
    // Three bytes before the number would end inside of the second character.
    EXPECT_EQ("\x95\\ (2) \x95\\", MakePrefixCopyName("\x95\\\x95\\\x95\\", 2, kPrefix));
    // A format without a blank before its first text loses a whole character.
    EXPECT_EQ("a\x95\\ (2) ", MakePrefixCopyName("a\x95\\b", 2, "a\x95\\\x83R%s%s"));
    EXPECT_EQ("a (2) b", MakePrefixCopyName("a\x95\\b", 2, "a\x95\\%s%s"));
}

TEST(MakeCopyNameTest, NoCharacterIsHalvedInAnyCodePage) {
    for (const unsigned page : test::kCodePages) {
        SCOPED_TRACE(page);
        const test::CodePageScope scope(page);
        test::RandomTexts random(page);
        const std::vector<std::string> pieces = {test::Encoded(page, u"\u8868"),
                                                 test::Encoded(page, u"\u00C4"),
                                                 "a",
                                                 ".",
                                                 "(2)",
                                                 "(",
                                                 "%",
                                                 "s",
                                                 " ",
                                                 "\\"};
        for (int round = 0; round < 2000; ++round) {
            const std::string name = random.Pieces(8, pieces), format = random.Pieces(8, pieces);
            SCOPED_TRACE(testing::PrintToString(name) + " " + testing::PrintToString(format));
            const int number = static_cast<int>(random.Below(4));
            ASSERT_FALSE(HasBrokenCharacters(MakePrefixCopyName(name, number, format)));
            ASSERT_FALSE(HasBrokenCharacters(MakeDashCopyName(name, number, format)));
        }
    }
}

}  // namespace
}  // namespace depot
