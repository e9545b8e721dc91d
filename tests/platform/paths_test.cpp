#include "platform/paths.h"

#include <gtest/gtest.h>

#include "platform/code_page.h"
#include "support/code_pages.h"
#include "support/random_text.h"

namespace depot {
namespace {

using test::CodePageScope;
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

TEST(NamePartTest, NameFollowsTheLastBackslash) {
    ExpectRows(NamePart, {{"C:\\a\\b.kra", "b.kra"},
                          {"b.kra", "b.kra"},
                          {"C:\\a\\", ""},
                          {"", ""},
                          {"C:/a/b", "C:/a/b"},
                          {"\\", ""}});
}

TEST(FolderPrefixTest, PrefixKeepsItsBackslash) {
    ExpectRows(FolderPrefix, {{"C:\\a\\b.kra", "C:\\a\\"},
                              {"b.kra", ""},
                              {"C:\\a\\", "C:\\a\\"},
                              {"", ""},
                              {"\\", "\\"}});
}

TEST(ExtensionPartTest, ExtensionBeginsAtTheLastDot) {
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

TEST(JoinPathTest, SecondPartWithADriveColonIsKeptAsItIs) {
    EXPECT_EQ("D:\\b", JoinPath("C:\\a", "D:\\b"));
    EXPECT_EQ("D:b", JoinPath("C:\\a", "D:b"));
}

TEST(JoinPathTest, EmptyFirstPartGivesTheSecond) {
    EXPECT_EQ("b", JoinPath("", "b"));
    EXPECT_EQ("\\b", JoinPath("", "\\b"));
    EXPECT_EQ("", JoinPath("", ""));
}

TEST(RemoveTrailingBackslashTest, OnlyOneIsRemoved) {
    ExpectRows(
        RemoveTrailingBackslash,
        {{"C:\\a\\", "C:\\a"}, {"C:\\a\\\\", "C:\\a\\"}, {"C:\\a", "C:\\a"}, {"\\", ""}, {"", ""}});
}

TEST(ParentFolderTest, TrailingBackslashDoesNotCount) {
    ExpectRows(ParentFolder, {{"C:\\a\\b\\", "C:\\a"},
                              {"C:\\a\\b", "C:\\a"},
                              {"C:\\a", "C:"},
                              {"C:\\", "C:"},
                              {"a", "a"},
                              {"a\\", "a"},
                              {"\\", ""},
                              {"", ""}});
}

TEST(ParentFolderKeepSlashTest, PathThatEndsInABackslashLosesOnlyThatOne) {
    ExpectRows(ParentFolderKeepSlash, {{"C:\\a\\b\\", "C:\\a\\b"},
                                       {"C:\\a\\b.kra", "C:\\a"},
                                       {"b.kra", "b.kra"},
                                       {"C:\\a\\b", "C:\\a"},
                                       {"C:\\a\\b\\\\", "C:\\a\\b\\"},
                                       {"a", "a"},
                                       {"\\", ""},
                                       {"", ""}});
}

TEST(StripExtensionTest, OnlyTheLastExtensionIsRemoved) {
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

TEST(FindSeparatorTest, FirstAndLastAreFoundWithinBounds) {
    EXPECT_EQ(2u, FindSeparator("C:\\a\\b"));
    EXPECT_EQ(4u, FindSeparator("C:\\a\\b", 3));
    EXPECT_EQ(4u, FindLastSeparator("C:\\a\\b"));
    EXPECT_EQ(2u, FindLastSeparator("C:\\a\\b", 4));
    EXPECT_TRUE(EndsInSeparator("C:\\"));
    EXPECT_FALSE(EndsInSeparator("C:"));
    EXPECT_FALSE(EndsInSeparator(""));
}

// C:\予定表\ソ.十, whose second bytes are backslashes.
constexpr char kFolder[] = "C:\\\x97\\\x92\xE8\x95\\";
constexpr char kName[] = "\x83\\.\x8F\\";

TEST(PathsTest, SecondBytesSeparateNothing) {
    const CodePageScope scope(932);
    const std::string folder = kFolder, name = kName, path = folder + "\\" + name;
    EXPECT_EQ(path, JoinPath(folder, name));
    EXPECT_EQ(path, JoinPath(folder + "\\", "\\" + name));
    EXPECT_EQ(name, NamePart(path));
    EXPECT_EQ(folder, ParentFolderKeepSlash(path));
    EXPECT_EQ(folder + "\\", FolderPrefix(path));
    EXPECT_EQ(folder, ParentFolder(path + "\\"));
    EXPECT_EQ("C:", ParentFolder(folder));
    EXPECT_EQ(".\x8F\\", ExtensionPart(path));
    EXPECT_EQ(folder + "\\\x83\\", StripExtension(path));
    EXPECT_EQ(folder, RemoveTrailingBackslash(folder));
    EXPECT_EQ(folder, RemoveTrailingBackslash(folder + "\\"));
    EXPECT_EQ(path, CollapseBackslashes(folder + "\\\\" + name));
}

TEST(CollapseBackslashesTest, OnlyTwoAtTheBeginningStay) {
    ExpectRows(CollapseBackslashes, {{"\\\\server\\\\share", "\\\\server\\share"},
                                     {"C:\\\\a\\\\\\b", "C:\\a\\b"},
                                     {"\\\\\\a", "\\\\a"},
                                     {"\\", "\\"},
                                     {"", ""}});
}

TEST(PathsTest, RandomCharactersAreTakenApartAndPutTogetherAgain) {
    const std::vector<std::string> pieces = {"\x95\\", "\x83|", "\xB1", "\\", ".", "a", ":"};
    const CodePageScope scope(932);
    RandomTexts random(0x5EED05);
    for (int round = 0; round < 5000; ++round) {
        const std::string path = random.Pieces(12, pieces);
        SCOPED_TRACE(testing::PrintToString(path));
        ASSERT_EQ(path, FolderPrefix(path) + NamePart(path));
        ASSERT_FALSE(HasBrokenCharacters(ParentFolderKeepSlash(path)) ||
                     HasBrokenCharacters(NamePart(path)));
        ASSERT_FALSE(HasBrokenCharacters(ParentFolder(path)));
        ASSERT_FALSE(HasBrokenCharacters(StripExtension(path)));
        ASSERT_EQ(NamePart(path), NamePart(JoinPath("C:\\\x95\\", NamePart(path))));
    }
}

TEST(PathsTest, RandomPathsAreTakenApartAndPutTogetherAgain) {
    RandomTexts random(0x5EED03);
    for (int round = 0; round < 5000; ++round) {
        const std::string path = random.Text(16, "ab.\\:");
        SCOPED_TRACE(path);
        ASSERT_EQ(path, FolderPrefix(path) + NamePart(path));
        ASSERT_EQ(ParentFolder(path), ParentFolderKeepSlash(RemoveTrailingBackslash(path)));
        if (path.find('.') != std::string::npos) {
            ASSERT_EQ(path, StripExtension(path) + ExtensionPart(path));
        } else {
            ASSERT_EQ(path, StripExtension(path));
            ASSERT_EQ(path, ExtensionPart(path));
        }
        if (path.find('\\') != std::string::npos) {
            ASSERT_EQ(path, ParentFolderKeepSlash(path) + "\\" + NamePart(path));
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
        ASSERT_EQ(RemoveTrailingBackslash(folder), ParentFolderKeepSlash(joined));
        ASSERT_EQ(joined, JoinPath("D:\\other", joined));
    }
}

TEST(PathsTest, PlacesOfOtherMachinesAreTold) {
    for (const char* path :
         {"\\\\server\\share", "//server/share", "/\\server", "\\\\", "\\\\?\\UNC\\server\\share",
          "\\\\.\\pipe\\x", "\\\\?\\", "\\??\\UNC\\server", "\\\\?\\Volume{1}\\"}) {
        EXPECT_TRUE(NamesNetworkPlace(path)) << path;
    }
    for (const char* path :
         {"", "\\", "C:\\a", "\\a", "a\\\\b", "\\\\?\\C:\\a", "//?/c:/a", "\\??\\C:\\a"}) {
        EXPECT_FALSE(NamesNetworkPlace(path)) << path;
    }
}

}  // namespace
}  // namespace depot
