#include "api/chosen_files.h"

#include <gtest/gtest.h>

#include <climits>

#include "support/code_pages.h"

namespace depot {
namespace {

using std::string_literals::operator""s;

TEST(ChosenFileListTest, FolderAndNamesAreSeparatedByNuls) {
    EXPECT_EQ("C:\\p\0a.kra\0b.kra\0\0"s,
              ChosenFileList({"C:\\p\\a.kra", "C:\\p\\b.kra"}, SHRT_MAX));
}

TEST(ChosenFileListTest, OnlyTheFirstPathGivesItsFolder) {
    EXPECT_EQ("<Work>\\x\0a\0b\0\0"s, ChosenFileList({"<Work>\\x\\a", "<Team>\\y\\b"}, SHRT_MAX));
}

TEST(ChosenFileListTest, FilesOfARootKeepItsPrefix) {
    EXPECT_EQ("<Work>\0a\0\0"s, ChosenFileList({"<Work>\\a"}, SHRT_MAX));
}

TEST(ChosenFileListTest, PathWithoutABackslashHasNoFolder) {
    EXPECT_EQ("\0a.kra\0\0"s, ChosenFileList({"a.kra"}, SHRT_MAX));
}

TEST(ChosenFileListTest, NoPathsMakeAnEmptyText) {
    EXPECT_EQ("", ChosenFileList({}, SHRT_MAX));
}

// "C:\p" and its NUL take 5, each of the names 6 more.
TEST(ChosenFileListTest, NameThatReachesTheSizeEndsTheList) {
    const std::vector<std::string> paths = {"C:\\p\\a.kra", "C:\\p\\b.kra"};
    EXPECT_EQ("C:\\p\0a.kra\0b.kra\0\0"s, ChosenFileList(paths, 18));
    EXPECT_EQ("C:\\p\0a.kra\0\0"s, ChosenFileList(paths, 17));
    EXPECT_EQ("C:\\p\0a.kra\0\0"s, ChosenFileList(paths, 12));
    EXPECT_EQ("C:\\p\0\0"s, ChosenFileList(paths, 11));
    EXPECT_EQ("C:\\p\0\0"s, ChosenFileList(paths, 0));
    EXPECT_EQ("C:\\p\0\0"s, ChosenFileList(paths, -1));
}

TEST(ChosenFileListTest, NameThatDoesNotFitEndsTheListForShorterOnesToo) {
    EXPECT_EQ("C:\\p\0a\0\0"s, ChosenFileList({"C:\\p\\a", "C:\\p\\long name", "C:\\p\\b"}, 10));
}

TEST(ChosenFileListTest, LengthWrapsAtSixteenBits) {
    const std::string longName(32760, 'n');
    // The folder takes 5 and the first name 32,761: that makes 32,766, and the next 2 wrap.
    const std::string list = ChosenFileList({"C:\\p\\" + longName, "C:\\p\\b"}, SHRT_MAX);
    EXPECT_EQ("C:\\p\0"s + longName + "\0b\0\0"s, list);
}

TEST(ChosenFileListTest, LengthOfATextOverSixtyFourKilobytesStartsAgain) {
    const std::string folder(70000, 'f');
    const std::string list = ChosenFileList({folder + "\\a"}, SHRT_MAX);
    EXPECT_EQ(folder + "\0a\0\0"s, list);
}

TEST(ChosenFileListTest, SecondBytesSeparateNothing) {
    const test::CodePageScope scope(932);
    EXPECT_EQ("<W>\\\x95\\\0\x8F\\.kra\0\0"s,
              ChosenFileList({"<W>\\\x95\\\\\x8F\\.kra"}, SHRT_MAX));
}

}  // namespace
}  // namespace depot
