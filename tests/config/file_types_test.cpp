#include "config/file_types.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <set>

#include "support/random_text.h"

namespace depot {
namespace {

const std::map<std::int32_t, std::string> kTable = {
    {1, ".kre"},  {16, ".krp"}, {29, ".krs"}, {56, ".krf"},  {57, ".krd"}, {58, ".krh"},
    {59, ".krc"}, {60, ".krk"}, {62, ".krv"}, {63, ".krcf"}, {64, ".kra"}};

TEST(ExtensionForTypeTest, EveryCodeHasTheTablesExtensionOrNone) {
    for (std::int32_t code = -70; code <= 200; ++code) {
        SCOPED_TRACE(code);
        const auto row = kTable.find(code);
        EXPECT_EQ(row == kTable.end() ? "" : row->second, ExtensionForType(code));
    }
}

TEST(ExtensionForTypeTest, CodesOutsideTheTableHaveNone) {
    for (const std::int32_t code :
         {0, 65, -1, 15, 17, 19, 20, 53, 61, 0x10001, std::numeric_limits<std::int32_t>::max(),
          std::numeric_limits<std::int32_t>::min()}) {
        SCOPED_TRACE(code);
        EXPECT_EQ("", ExtensionForType(code));
    }
}

TEST(GetExtensionTest, ExtensionBeginsAtTheLastDot) {
    EXPECT_EQ(".kra", GetExtension("a.kra"));
    EXPECT_EQ(".gz", GetExtension("x.tar.gz"));
    EXPECT_EQ(".", GetExtension("a."));
    EXPECT_EQ("", GetExtension(""));
}

TEST(GetExtensionTest, NameWithoutADotIsReturnedWhole) {
    EXPECT_EQ("office", GetExtension("office"));
    EXPECT_EQ("<Work>\\office", GetExtension("<Work>\\office"));
}

TEST(DetectFileTypeTest, EveryExtensionButTwoIsRecognised) {
    for (const auto& [code, extension] : kTable) {
        SCOPED_TRACE(extension);
        const std::int32_t expected = code == 59 || code == 60 ? 0 : code;
        EXPECT_EQ(expected, DetectFileType("<Work>\\folder\\a" + extension));
    }
}

TEST(DetectFileTypeTest, KrcAndKrkAreNotRecognised) {
    EXPECT_EQ(kUnknownFileType, DetectFileType("a.krc"));
    EXPECT_EQ(kUnknownFileType, DetectFileType("a.krk"));
}

TEST(DetectFileTypeTest, LetterCaseDoesNotMatter) {
    EXPECT_EQ(64, DetectFileType("A.KRA"));
    EXPECT_EQ(63, DetectFileType("a.KrCf"));
}

TEST(DetectFileTypeTest, OnlyTheLastExtensionCounts) {
    EXPECT_EQ(64, DetectFileType("a.kre.kra"));
    EXPECT_EQ(kUnknownFileType, DetectFileType("a.kra.txt"));
    EXPECT_EQ(kUnknownFileType, DetectFileType("C:\\folder.kra\\a"));
    EXPECT_EQ(kUnknownFileType, DetectFileType("a.kra "));
    EXPECT_EQ(kUnknownFileType, DetectFileType("a.kr"));
    EXPECT_EQ(kUnknownFileType, DetectFileType("a.kraa"));
    EXPECT_EQ(kUnknownFileType, DetectFileType("office.kr."));
}

TEST(DetectFileTypeTest, PathsShorterThanFiveCharactersAreNotRecognised) {
    EXPECT_EQ(kUnknownFileType, DetectFileType(".kra"));
    EXPECT_EQ(64, DetectFileType("a.kra"));
    EXPECT_EQ(63, DetectFileType(".krcf"));
    EXPECT_EQ(kUnknownFileType, DetectFileType(""));
}

TEST(DetectFileTypeTest, PathWithoutADotIsNotRecognised) {
    EXPECT_EQ(kUnknownFileType, DetectFileType("kre-kra"));
    EXPECT_EQ(kUnknownFileType, DetectFileType("akrcf"));
}

TEST(DetectFileTypeTest, FlagHasNoEffect) {
    for (const std::int32_t flag : {0, 1, -1, 64}) {
        EXPECT_EQ(64, DetectFileType("a.kra", flag));
        EXPECT_EQ(kUnknownFileType, DetectFileType("a.krc", flag));
    }
}

TEST(DetectFileTypeTest, RandomPathsHaveTheTypeOfTheirEnd) {
    test::RandomTexts random(0x5EED10);
    for (int round = 0; round < 5000; ++round) {
        const std::string path = random.Pieces(
            6, {".", "k", "R", "a", "e", "cf", "\\", ".kra", ".KRE", ".krc", "x", "\xC4"});
        SCOPED_TRACE(path);
        const std::int32_t code = DetectFileType(path);
        if (code == 0) continue;
        ASSERT_GE(path.size(), 5u);
        const std::string extension = ExtensionForType(code);
        ASSERT_NE("", extension);
        ASSERT_EQ(extension.size(), GetExtension(path).size());
        ASSERT_EQ(code, DetectFileType("x" + GetExtension(path)));
    }
}

TEST(IsProfileExtensionTest, EveryExtensionOfTheTableIsOneWithoutItsDot) {
    for (const auto& [code, extension] : kTable) {
        SCOPED_TRACE(extension);
        EXPECT_TRUE(IsProfileExtension(extension.substr(1)));
        EXPECT_FALSE(IsProfileExtension(extension));
    }
    EXPECT_TRUE(IsProfileExtension("KRC"));
}

TEST(IsProfileExtensionTest, OtherTextsAreNone) {
    for (const char* text : {"", "kr", "kraa", "txt", "krcf ", "."}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(IsProfileExtension(text));
    }
}

}  // namespace
}  // namespace depot
