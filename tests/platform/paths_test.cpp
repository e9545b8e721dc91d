#include "platform/paths.h"

#include <gtest/gtest.h>

#include "support/random_text.h"

namespace depot {
namespace {

using test::RandomTexts;

struct Row {
    const char* path;
    const char* expected;
};

template <class Operation, std::size_t count>
void ExpectRows(Operation operation, const Row (&rows)[count]) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(row.expected, operation(row.path));
    }
}

TEST(NamePartTest, TheNameFollowsTheLastBackslash) {
    ExpectRows(NamePart, {{"C:\\a\\b.kra", "b.kra"},
                          {"b.kra", "b.kra"},
                          {"C:\\a\\", ""},
                          {"", ""},
                          {"C:/a/b", "C:/a/b"},
                          {"\\", ""}});
}

TEST(FolderPartTest, TheFolderEndsBeforeTheLastBackslash) {
    ExpectRows(FolderPart, {{"C:\\a\\b.kra", "C:\\a"},
                            {"b.kra", "b.kra"},
                            {"C:\\a\\", "C:\\a"},
                            {"", ""},
                            {"\\", ""}});
}

TEST(FolderPrefixTest, ThePrefixKeepsItsBackslash) {
    ExpectRows(FolderPrefix, {{"C:\\a\\b.kra", "C:\\a\\"},
                              {"b.kra", ""},
                              {"C:\\a\\", "C:\\a\\"},
                              {"", ""},
                              {"\\", "\\"}});
}

TEST(ExtensionPartTest, TheExtensionBeginsAtTheLastDot) {
    ExpectRows(ExtensionPart, {{"a.kra", ".kra"},
                               {"x.tar.gz", ".gz"},
                               {"name", "name"},
                               {"a.", "."},
                               {".kra", ".kra"},
                               {"", ""},
                               {"C:\\a.b\\c", ".b\\c"}});
}

TEST(JoinPathTest, OneBackslashStandsBetweenTheParts) {
    EXPECT_EQ("C:\\a\\b", JoinPath("C:\\a", "b"));
    EXPECT_EQ("C:\\a\\b", JoinPath("C:\\a\\", "b"));
    EXPECT_EQ("C:\\a\\b", JoinPath("C:\\a", "\\b"));
    EXPECT_EQ("C:\\a\\b", JoinPath("C:\\a\\", "\\b"));
    EXPECT_EQ("C:\\a\\", JoinPath("C:\\a", ""));
    EXPECT_EQ("C:\\a\\b\\c.kra", JoinPath("C:\\a", "b\\c.kra"));
}

TEST(JoinPathTest, ASecondPartWithADriveColonIsKeptAsItIs) {
    EXPECT_EQ("D:\\b", JoinPath("C:\\a", "D:\\b"));
    EXPECT_EQ("D:b", JoinPath("C:\\a", "D:b"));
}

TEST(JoinPathTest, AnEmptyFirstPartGivesTheSecond) {
    EXPECT_EQ("b", JoinPath("", "b"));
    EXPECT_EQ("\\b", JoinPath("", "\\b"));
    EXPECT_EQ("", JoinPath("", ""));
}

TEST(RemoveTrailingBackslashTest, OnlyOneIsRemoved) {
    ExpectRows(
        RemoveTrailingBackslash,
        {{"C:\\a\\", "C:\\a"}, {"C:\\a\\\\", "C:\\a\\"}, {"C:\\a", "C:\\a"}, {"\\", ""}, {"", ""}});
}

TEST(ParentFolderTest, ATrailingBackslashDoesNotCount) {
    ExpectRows(ParentFolder, {{"C:\\a\\b\\", "C:\\a"},
                              {"C:\\a\\b", "C:\\a"},
                              {"C:\\a", "C:"},
                              {"C:\\", "C:"},
                              {"a", "a"},
                              {"a\\", "a"},
                              {"\\", ""},
                              {"", ""}});
}

TEST(ParentFolderKeepSlashTest, APathThatEndsInABackslashLosesOnlyThatOne) {
    ExpectRows(ParentFolderKeepSlash, {{"C:\\a\\b\\", "C:\\a\\b"},
                                       {"C:\\a\\b", "C:\\a"},
                                       {"C:\\a\\b\\\\", "C:\\a\\b\\"},
                                       {"a", "a"},
                                       {"\\", ""},
                                       {"", ""}});
}

TEST(StripExtensionTest, OnlyTheLastExtensionGoes) {
    ExpectRows(StripExtension,
               {{"x.tar.gz", "x.tar"}, {"x", "x"}, {"x.", "x"}, {".kra", ""}, {"", ""}});
}

TEST(IsFileSystemPathTest, DriveAndUncPathsAreFileSystemPaths) {
    EXPECT_TRUE(IsFileSystemPath("C:\\"));
    EXPECT_TRUE(IsFileSystemPath("c:\\a.kra"));
    EXPECT_TRUE(IsFileSystemPath("\\\\server\\share"));
    EXPECT_TRUE(IsFileSystemPath("\\\\"));
}

TEST(IsFileSystemPathTest, OtherTextsAreNot) {
    for (const char* path :
         {"", "C:", "C:a", "<Work>\\a", "\\a", "a.kra", "CC:\\a", ":\\", "<Work>\\C:\\a", "C:/a"}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(IsFileSystemPath(path));
    }
}

TEST(IsAbsolutePathTest, PathThatNoCurrentFolderChangesIsAbsolute) {
    for (const char* path :
         {"C:\\", "c:\\a.kra", "z:/a/b.kra", "C:\\a\\..\\b", "C:\\a:stream", "\\\\server\\share\\a",
          "//server/share", "\\/s", "\\\\?\\C:\\a", "\\\\?\\UNC\\server\\share",
          "\\\\?\\Volume{1}\\a", "\\\\\x95\x5C\\s"}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(IsAbsolutePath(path));
    }
}

TEST(IsAbsolutePathTest, PathOfTheCurrentFolderOrDriveIsNotAbsolute) {
    for (const char* path :
         {"",         "a",           "a.kra",    "sub\\a.kra",    ".",      "..",
          ".\\a.kra", "..\\a.kra",   "\\",       "\\a.kra",       "/a.kra", "C:",
          "C:a.kra",  "c:..\\a.kra", "C::\\",    "1:\\a",         ":\\a",   "CC:\\a",
          " C:\\a",   "\xC4:\\a",    "\x83\x5C", "<Work>\\a.kra", "<Work>", "a\\C:\\b"}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(IsAbsolutePath(path));
    }
}

TEST(IsAbsolutePathTest, DevicesAndHalfServersAreNotAbsolute) {
    for (const char* path : {"\\\\", "\\\\\\a", "\\\\.", "\\\\.\\NUL", "\\\\.\\C:\\a", "//./C:/a",
                             "\\\\?", "\\\\?\\", "\\\\?a\\b", "\\??\\C:\\a", "NUL"}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(IsAbsolutePath(path));
    }
}

TEST(PathsTest, RandomPathsAreTakenApartAndPutTogetherAgain) {
    RandomTexts random(0x5EED03);
    for (int round = 0; round < 5000; ++round) {
        const std::string path = random.Text(16, "ab.\\:");
        SCOPED_TRACE(path);
        ASSERT_EQ(path, FolderPrefix(path) + NamePart(path));
        ASSERT_EQ(FolderPart(path), ParentFolderKeepSlash(path));
        ASSERT_EQ(ParentFolder(path), ParentFolderKeepSlash(RemoveTrailingBackslash(path)));
        if (path.find('.') != std::string::npos) {
            ASSERT_EQ(path, StripExtension(path) + ExtensionPart(path));
        } else {
            ASSERT_EQ(path, StripExtension(path));
            ASSERT_EQ(path, ExtensionPart(path));
        }
        if (path.find('\\') != std::string::npos) {
            ASSERT_EQ(path, FolderPart(path) + "\\" + NamePart(path));
        }
    }
}

TEST(PathsTest, RandomJoinsAreUndoneByTakingTheFolderOff) {
    RandomTexts random(0x5EED04);
    for (int round = 0; round < 5000; ++round) {
        const std::string folder = "C:\\" + random.Text(8, "ab.\\");
        const std::string name = "n" + random.Text(8, "ab.");
        SCOPED_TRACE(folder + " | " + name);
        const std::string joined = JoinPath(folder, name);
        ASSERT_EQ(name, NamePart(joined));
        ASSERT_EQ(RemoveTrailingBackslash(folder), FolderPart(joined));
        ASSERT_EQ(joined, JoinPath("D:\\other", joined));
    }
}

}  // namespace
}  // namespace depot
