#include "manager/standard_folders.h"

#include <gtest/gtest.h>

#include "platform/module_state.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kProductKey[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";

class StandardFoldersTest : public testing::Test {
protected:
    test::ScratchKey user_{HKEY_CURRENT_USER, kProductKey};
    test::ScratchKey machine_{HKEY_LOCAL_MACHINE, kProductKey};
    StandardFolders folders_;
};

TEST_F(StandardFoldersTest, MissingBackslashIsAppended) {
    user_.Text("", "UserDir", "C:\\User");
    user_.Text("", "HomeDir64", "C:\\Home");
    EXPECT_EQ("C:\\User\\", folders_.UserFolder());
    EXPECT_EQ("C:\\Home\\", folders_.ResourceFolder());
}

TEST_F(StandardFoldersTest, PresentBackslashIsNotDoubled) {
    user_.Text("", "UserDir", "C:\\User\\");
    user_.Text("", "HomeDir64", "C:\\");
    EXPECT_EQ("C:\\User\\", folders_.UserFolder());
    EXPECT_EQ("C:\\", folders_.ResourceFolder());
}

TEST_F(StandardFoldersTest, FolderIsKeptOnceItIsKnown) {
    user_.Text("", "UserDir", "C:\\User");
    user_.Text("", "HomeDir64", "C:\\Home");
    folders_.UserFolder();
    folders_.ResourceFolder();
    user_.Text("", "UserDir", "C:\\Other");
    user_.Text("", "HomeDir64", "C:\\Other");
    EXPECT_EQ("C:\\User\\", folders_.UserFolder());
    EXPECT_EQ("C:\\Home\\", folders_.ResourceFolder());
    EXPECT_EQ("C:\\Other\\", StandardFolders().UserFolder());
}

TEST_F(StandardFoldersTest, EmptyAnswerStaysEmptyAndIsAskedForAgain) {
    // A path that fits the registry but not the lookup's 260 characters has no answer.
    user_.Text("", "UserDir", std::string(260, 'x'));
    user_.Text("", "HomeDir64", std::string(260, 'x'));
    EXPECT_EQ("", folders_.UserFolder());
    EXPECT_EQ("", folders_.ResourceFolder());
    user_.Text("", "UserDir", "C:\\User");
    user_.Text("", "HomeDir64", "C:\\Home");
    EXPECT_EQ("C:\\User\\", folders_.UserFolder());
    EXPECT_EQ("C:\\Home\\", folders_.ResourceFolder());
}

TEST_F(StandardFoldersTest, LongestAnswerGetsItsBackslash) {
    const std::string longest = "C:\\" + std::string(256, 'x');
    user_.Text("", "UserDir", longest);
    EXPECT_EQ(longest + "\\", folders_.UserFolder());
}

TEST_F(StandardFoldersTest, ResourceFolderIsTheLibrarysWithoutConfiguration) {
    EXPECT_EQ(OwnModuleFolder(), folders_.ResourceFolder());
}

}  // namespace
}  // namespace depot
