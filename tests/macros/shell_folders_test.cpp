#include "macros/shell_folders.h"

#include <gmock/gmock.h>

#include "macros/fake_macro_system.h"

namespace depot {
namespace {

constexpr char kKey[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

class ShellFoldersTest : public testing::Test {
protected:
    ShellFoldersTest() { system_.windowsFolder = "D:\\windows"; }

    void User(const char* name, const char* text) {
        system_.Store(Hive::kCurrentUser, kKey, name, text);
    }
    void Machine(const char* name, const char* text) {
        system_.Store(Hive::kLocalMachine, kKey, name, text);
    }

    test::FakeMacroSystem system_;
};

TEST_F(ShellFoldersTest, FolderOfAllUsersIsTheMachines) {
    User("Common Desktop", "own");
    Machine("Common Desktop", "common");
    EXPECT_EQ("common", GetShellFolder(system_, "Common Desktop", true));
    EXPECT_EQ("own", GetShellFolder(system_, "Common Desktop", false));
}

TEST_F(ShellFoldersTest, FolderOfAllUsersIsTheUsersOnTheOldFamily) {
    system_.ntFamily = false;
    User("Common Desktop", "own");
    Machine("Common Desktop", "common");
    EXPECT_EQ("own", GetShellFolder(system_, "Common Desktop", true));
}

TEST_F(ShellFoldersTest, MissingFolderIsEmpty) {
    EXPECT_EQ("", GetShellFolder(system_, "Desktop", false));
    EXPECT_EQ("", GetShellFolder(system_, "Desktop", true));
}

TEST_F(ShellFoldersTest, RecordedApplicationDataIsGivenAsItStands) {
    User("AppData", "C:\\own");
    Machine("Common AppData", "C:\\common");
    EXPECT_EQ("C:\\own", GetAppDataFolder(system_, false));
    EXPECT_EQ("C:\\common", GetAppDataFolder(system_, true));
    system_.ntFamily = false;
    EXPECT_EQ("C:\\own", GetAppDataFolder(system_, true));
    EXPECT_TRUE(system_.created.empty());
}

TEST_F(ShellFoldersTest, EmptyApplicationDataOfTheUserStaysEmpty) {
    User("AppData", "");
    Machine("Common Start Menu", "C:\\all\\Start Menu");
    EXPECT_EQ("", GetAppDataFolder(system_, false));
    EXPECT_TRUE(system_.created.empty());
}

TEST_F(ShellFoldersTest, MissingApplicationDataOfTheUserIsTheDriveOfWindows) {
    Machine("Common Start Menu", "C:\\all\\Start Menu");
    EXPECT_EQ("D:", GetAppDataFolder(system_, false));
    EXPECT_TRUE(system_.created.empty());
}

TEST_F(ShellFoldersTest, ApplicationDataOfAllUsersIsMadeBesideTheStartMenu) {
    Machine("Common Start Menu", "C:\\all\\Start Menu");
    EXPECT_EQ("C:\\all\\Application Data", GetAppDataFolder(system_, true));
    Machine("Common AppData", "");
    EXPECT_EQ("C:\\all\\Application Data", GetAppDataFolder(system_, true));
    EXPECT_THAT(system_.created,
                testing::ElementsAre("C:\\all\\Application Data", "C:\\all\\Application Data"));
}

TEST_F(ShellFoldersTest, ExistingFolderBesideTheStartMenuServesOnlyAnEmptyRecord) {
    system_.foldersCanBeCreated = false;
    Machine("Common Start Menu", "C:\\all\\Start Menu");
    EXPECT_EQ("D:", GetAppDataFolder(system_, true));
    Machine("Common AppData", "");
    EXPECT_EQ("C:\\all\\Application Data", GetAppDataFolder(system_, true));
}

TEST_F(ShellFoldersTest, NothingIsMadeWithoutAStartMenu) {
    EXPECT_EQ("D:", GetAppDataFolder(system_, true));
    Machine("Common AppData", "");
    EXPECT_EQ("", GetAppDataFolder(system_, true));
    for (const char* record : {"", "Start Menu"}) {
        Machine("Common Start Menu", record);
        EXPECT_EQ("", GetAppDataFolder(system_, true));
    }
    EXPECT_TRUE(system_.created.empty());
}

}  // namespace
}  // namespace depot
