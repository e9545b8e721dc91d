#include "manager/display_path_text.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "support/code_pages.h"
#include "support/random_text.h"

namespace depot {
namespace {

TEST(DisplayPrefixTest, NameStandsInAngleBracketsBeforeABackslash) {
    EXPECT_EQ("<Work>\\", DisplayPrefix("Work"));
    EXPECT_EQ("<My Depot>\\", DisplayPrefix("My Depot"));
    EXPECT_EQ("<>\\", DisplayPrefix(""));
    EXPECT_EQ("<%s>\\", DisplayPrefix("%s"));
}

TEST(MatchesPrefixTest, OnlyAPathThatBeginsWithThePrefixMatches) {
    const struct {
        const char* path;
        bool matches;
    } rows[] = {{"<Work>\\a.txt", true},
                {"<WORK>\\a.txt", true},
                {"<work>\\", true},
                {"<Work>", true},
                {"<WORK>", true},
                {"<Workshop>\\x", false},
                {"<Wor>\\x", false},
                {"<Workshop>", false},
                {"<Work", false},
                {"Work\\a.txt", false},
                {"Work", false},
                {"\\<Work>\\a", false},
                {" <Work>\\a", false},
                {"a\\<Work>\\a", false},
                {"<Work>a\\b", false},
                {"<Work>/a", false},
                {"<Work>>\\a", false},
                {"<<Work>\\a", false},
                {"", false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(row.matches, MatchesPrefix(row.path, "<Work>\\"));
    }
}

TEST(CompleteBareNameTest, NameWithoutItsBackslashBecomesThePrefix) {
    EXPECT_EQ("<Work>\\", CompleteBareName("<Work>", "<Work>\\"));
    EXPECT_EQ("<Work>\\", CompleteBareName("<WORK>", "<Work>\\"));
    EXPECT_EQ("C:\\", CompleteBareName("c:", "C:\\"));
}

TEST(CompleteBareNameTest, OtherPathsStayAsTheyAre) {
    for (const char* path : {"", "<Work>\\", "<WORK>\\a", "<Wor>", "<Work", "<Workshop>", "Work",
                             " <Work>", "<Work> ", "a\\<Work>", "C:"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(path, CompleteBareName(path, "<Work>\\"));
        EXPECT_EQ(path, CompleteBareName(path, ""));
    }
    EXPECT_EQ("C:\\Work", CompleteBareName("C:\\Work", "C:\\Work\\"));
}

TEST(MatchesPrefixTest, EmptyPrefixMatchesNothing) {
    EXPECT_FALSE(MatchesPrefix("", ""));
    EXPECT_FALSE(MatchesPrefix("<Work>\\a", ""));
}

TEST(MatchesPrefixTest, StorageRootIsAPrefixLikeAnyOther) {
    EXPECT_TRUE(MatchesPrefix("c:\\WORK\\a.txt", "C:\\Work\\"));
    EXPECT_FALSE(MatchesPrefix("C:\\Work", "C:\\Work\\"));
    EXPECT_FALSE(MatchesPrefix("C:\\Workshop\\a.txt", "C:\\Work\\"));
    EXPECT_TRUE(MatchesPrefix("C:", "C:\\"));
}

TEST(MatchesPrefixTest, TextBehindANulCounts) {
    EXPECT_TRUE(MatchesPrefix(std::string_view("<Work>\\a\0b", 10), "<Work>\\"));
    EXPECT_FALSE(MatchesPrefix(std::string_view("<Wo\0rk>\\a", 9), "<Work>\\"));
}

TEST(MatchesPrefixTest, PathsOfAHundredThousandCharactersAreCompared) {
    const std::string tail(100'000, 'x');
    EXPECT_TRUE(MatchesPrefix("<Work>\\" + tail, "<Work>\\"));
    EXPECT_FALSE(MatchesPrefix(tail, "<Work>\\"));
    EXPECT_FALSE(MatchesPrefix("<" + tail, "<" + tail + ">\\"));
    EXPECT_TRUE(MatchesPrefix("<" + tail + ">", "<" + tail + ">\\"));
}

TEST(MatchesPrefixTest, RandomPathsMatchTheRule) {
    test::RandomTexts random(0x5EED30);
    const std::vector<std::string> pieces = {"<",  ">", "\\", "Work", "WORK", "work>",
                                             "<W", "o", "rk", ".",    "a"};
    for (int round = 0; round < 8000; ++round) {
        const std::string path = random.Pieces(6, pieces);
        const std::string prefix = DisplayPrefix(random.Pieces(2, pieces));
        SCOPED_TRACE(path + " | " + prefix);
        std::string lower = ToLower(path);
        if (!lower.empty() && lower.find('\\') == std::string::npos) lower += '\\';
        ASSERT_EQ(lower.find(ToLower(prefix)) == 0, MatchesPrefix(path, prefix));
        ASSERT_TRUE(MatchesPrefix(prefix + path, prefix));
    }
}

TEST(FolderDisplayPathTest, FolderFollowsTheDisplayName) {
    EXPECT_EQ("<Travail>\\sub\\", FolderDisplayPath("Travail", "<Work>\\sub\\a.kra"));
    EXPECT_EQ("<Travail>\\", FolderDisplayPath("Travail", "<Work>\\a.kra"));
    EXPECT_EQ("<Travail>\\", FolderDisplayPath("Travail", "a.kra"));
    EXPECT_EQ("<Travail>\\", FolderDisplayPath("Travail", ""));
    EXPECT_EQ("<Travail>\\sub\\", FolderDisplayPath("Travail", "<Work>\\sub\\"));
    EXPECT_EQ("<Travail>b\\", FolderDisplayPath("Travail", "<Work>\\a>b\\c.kra"));
}

TEST(SplitDisplayPathTest, NameAndRelativePathAreTakenApart) {
    const struct {
        const char* path;
        const char* name;
        const char* relative;
    } rows[] = {{"<My Depot>\\x\\y", "My Depot", "x\\y"},
                {"<Work>", "Work", ""},
                {"<Work>\\", "Work", ""},
                {"Work\\a", "Work\\a", "a"},
                {"", "", ""},
                {"<<Work>\\a", "Work", "a"},
                {"<a>b>\\x", "a>b", "x"},
                {">", "", ""},
                {"<", "", ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        const DisplayPathParts parts = SplitDisplayPath(row.path);
        EXPECT_EQ(row.name, parts.depotName);
        EXPECT_EQ(row.relative, parts.relative);
    }
}

TEST(SplitDisplayPathTest, RandomDisplayPathsComeApartAsTheyWerePutTogether) {
    test::RandomTexts random(0x5EED31);
    for (int round = 0; round < 5000; ++round) {
        const std::string name = random.Text(6, "aB .%\xC4");
        const std::string relative = random.Text(8, "aB.\\");
        SCOPED_TRACE(name + " | " + relative);
        const DisplayPathParts parts = SplitDisplayPath(DisplayPrefix(name) + relative);
        ASSERT_EQ(name, parts.depotName);
        ASSERT_EQ(relative, parts.relative);
        // Any text is taken apart without harm.
        const std::string text = random.Text(10, "<>\\ab");
        ASSERT_LE(SplitDisplayPath(text).depotName.size(), text.size());
        ASSERT_TRUE(FolderDisplayPath(name, text).starts_with("<" + name + ">"));
        ASSERT_TRUE(FolderDisplayPath(name, text).ends_with('\\'));
    }
}

TEST(MatchesPrefixTest, DepotsOfDifferentCharactersStayApart) {
    const test::CodePageScope scope(932);
    // ア and ヂ, whose second bytes are A and a.
    EXPECT_FALSE(
        MatchesPrefix("<\x83"
                      "A>\\x",
                      DisplayPrefix("\x83"
                                    "a")));
    EXPECT_TRUE(
        MatchesPrefix("<\x83"
                      "A>\\X",
                      DisplayPrefix("\x83"
                                    "A")));
    // 表 holds no separator: the bare name gets its own.
    EXPECT_TRUE(MatchesPrefix("<\x95\\>", DisplayPrefix("\x95\\")));
}

TEST(MatchesPrefixTest, AccentedNamesMatchInAnyCaseUnderUtf8) {
    const test::CodePageScope scope(65001);
    EXPECT_TRUE(MatchesPrefix("<\xC3\x84>\\x", DisplayPrefix("\xC3\xA4")));
}

TEST(DisplayPathTextTest, SecondBytesSeparateNothing) {
    const test::CodePageScope scope(932);
    EXPECT_EQ("<W>\\\x95\\\\", FolderDisplayPath("W", "<W>\\\x95\\\\\x8F\\.kra"));
    EXPECT_EQ("<W>\\", FolderDisplayPath("W", "<W>\x95\\"));
    const DisplayPathParts parts = SplitDisplayPath("<\x95\\>\\\x8F\\\\x");
    EXPECT_EQ("\x95\\", parts.depotName);
    EXPECT_EQ("\x8F\\\\x", parts.relative);
}

}  // namespace
}  // namespace depot
