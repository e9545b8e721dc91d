#include "macros/macro_table.h"

#include <gmock/gmock.h>

#include "macros/fake_macro_system.h"

namespace depot {
namespace {

constexpr char kWindowsKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr char kShellFolders[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr char kEnvironment[] = "SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr char kProduct[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";
constexpr char kCommons[] = "Software\\Quillon\\Farrow\\7.00\\Quillon Commons";
constexpr char kDeployment[] =
    "Software\\Classes\\CLSID\\{9a5e0c7c-2b0f-4c83-9d53-6d0f2f1f7a44}\\InprocServer32";

struct Row {
    const char* text;
    const char* expanded;
};

// A machine where every slot but the 32-bit and the transfer ones is filled, and a registry that is
// empty until a test fills it.
class MacroTableTest : public testing::Test {
protected:
    MacroTableTest() {
        system_[Slot::kApplicationFolder] = "C:\\Program Files\\Farrow\\";
        system_[Slot::kApplicationFolderX86] = "C:\\Farrow32\\";
        system_[Slot::kOrganization] = "Quillon";
        system_[Slot::kUserFolder] = "C:\\Users\\a\\";
        system_[Slot::kProfileFolder] = "C:\\Profiles\\";
        system_[Slot::kLanguageCode] = "deu";
    }

    std::string Expand(std::string text) {
        ExpandMacros({system_}, text);
        return text;
    }

    void ExpectAll(std::initializer_list<Row> rows) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.text);
            EXPECT_EQ(row.expanded, Expand(row.text));
        }
    }

    test::FakeMacroSystem system_;
};

TEST_F(MacroTableTest, StepsStandInTheOrderThatDefinitionsRelyOn) {
    constexpr const char* kOrder[] = {"$LANGUAGE_EXTENSION$",
                                      "$DOT_LANGUAGECODE_DOT$",
                                      "$LANGUAGE_CODE$",
                                      "$PROGRAMFILES$",
                                      "$DEPLOYRUNPATH$",
                                      "$RUNDLL32PATH$",
                                      "$FATUSERDIR$",
                                      "$FATHOMEDIR$",
                                      "$FATORTHINHOMEDIR$",
                                      "$USERNAME$",
                                      "$APPDIRX86$",
                                      "$APPDIR$",
                                      "$X86SUBDIR$",
                                      "$APPDIR_SHORTNAME$",
                                      "$WHARFHOMEDIR$",
                                      "$SYSDIR$",
                                      "$WINDRIVE$",
                                      "$TEMPDIR$",
                                      "$ORGANIZATION$",
                                      "$USERDIR$",
                                      "$USERDIR_PARENT$",
                                      "$USERDIRPARENT$",
                                      "$PROFILEDIR$",
                                      "$USERWINAPPDATA$",
                                      "$ALLUSERWINAPPDATA$",
                                      "$DESKTOP$",
                                      "$ALLUSER-DESKTOP$",
                                      "$STARTMENU$",
                                      "$STARTMENU-PROGRAMS$",
                                      "$ALLUSER-STARTMENU$",
                                      "$ALLUSER-STARTMENU-PROGRAMS$",
                                      "$MYDOCUMENTS$",
                                      "$APPDIRX86$",
                                      "$FTPUSERNAME$",
                                      "$WINDOWSMEDIADIR$",
                                      "$X64$"};
    ASSERT_EQ(36u, std::size(kOrder));
    std::vector<std::string> names;
    for (const MacroStep& step : MacroTable()) names.emplace_back(step.macro);
    EXPECT_THAT(names, testing::ElementsAreArray(kOrder));
}

// One search a row is the table's structure: the rows are counted above, and none is entered here.
TEST_F(MacroTableTest, EachMacroBeginsWithTheCharacterThatIsLookedForFirst) {
    for (const MacroStep& step : MacroTable())
        EXPECT_TRUE(step.macro.starts_with('$')) << step.macro;
}

TEST_F(MacroTableTest, TextWithoutMacrosAsksTheMachineForNothing) {
    ExpectAll({{"", ""}, {"C:\\plain\\path", "C:\\plain\\path"}, {"$NOSUCH$", "$NOSUCH$"}});
    EXPECT_EQ(0, system_.systemCalls);
    EXPECT_EQ(0, system_.slotReads);
}

TEST_F(MacroTableTest, SlotMacrosAskTheSystemForNothing) {
    EXPECT_EQ("C:\\Users\\a;Quillon;deu", Expand("$USERDIR$;$ORGANIZATION$;$LANGUAGE_CODE$"));
    EXPECT_EQ(0, system_.systemCalls);
    EXPECT_EQ(3, system_.slotReads);
}

TEST_F(MacroTableTest, SlotMacrosGiveTheSlots) {
    ExpectAll({
        {"$APPDIR$", "C:\\Program Files\\Farrow"},
        {"$APPDIRX86$", "C:\\Farrow32"},
        {"$ORGANIZATION$", "Quillon"},
        {"$USERDIR$\\Data", "C:\\Users\\a\\Data"},
        {"$USERDIR_PARENT$", "C:\\Users"},
        {"$USERDIRPARENT$", "C:\\Users"},
        {"$PROFILEDIR$", "C:\\Profiles"},
        {"$LANGUAGE_CODE$", "deu"},
        {"$X64$$X86SUBDIR$", "x64\\X86"},
    });
}

TEST_F(MacroTableTest, StoredTextsAreNotStripped) {
    system_[Slot::kOrganization] = "Quillon\\";
    system_[Slot::kLanguageCode] = "deu\\";
    EXPECT_EQ("Quillon\\,deu\\", Expand("$ORGANIZATION$,$LANGUAGE_CODE$"));
}

TEST_F(MacroTableTest, FoldersLoseOneTrailingBackslash) {
    for (const Slot slot : {Slot::kApplicationFolder, Slot::kApplicationFolderX86,
                            Slot::kUserFolder, Slot::kProfileFolder}) {
        system_[slot] = "C:\\x\\\\";
    }
    system_.temporaryFolder = "C:\\x\\\\";
    ExpectAll({{"$APPDIR$", "C:\\x\\"},
               {"$APPDIRX86$", "C:\\x\\"},
               {"$USERDIR$", "C:\\x\\"},
               {"$PROFILEDIR$", "C:\\x\\"},
               {"$TEMPDIR$", "C:\\x\\"}});
}

TEST_F(MacroTableTest, UserFolderOfOneWordIsItsOwnParent) {
    system_[Slot::kUserFolder] = "word";
    ExpectAll({{"$USERDIR_PARENT$", "word"}, {"$USERDIRPARENT$", "word"}});
}

TEST_F(MacroTableTest, LanguageCodeStandsBetweenDotsWhereItIsAskedFor) {
    ExpectAll({{"a$LANGUAGE_EXTENSION$", "a.deu"}, {"a$DOT_LANGUAGECODE_DOT$b", "a.deu.b"}});
}

TEST_F(MacroTableTest, EmptyLanguageCodeTakesItsDotsWithIt) {
    system_[Slot::kLanguageCode].clear();
    ExpectAll({{"a$LANGUAGE_EXTENSION$", "a"},
               {"a$DOT_LANGUAGECODE_DOT$b", "ab"},
               {"a$LANGUAGE_CODE$b", "ab"}});
}

TEST_F(MacroTableTest, EmptySlotsGiveEmptyTexts) {
    system_.slots.fill("");
    ExpectAll({{"<$APPDIR$>", "<>"},
               {"<$APPDIRX86$>", "<>"},
               {"<$APPDIR_SHORTNAME$>", "<>"},
               {"<$ORGANIZATION$>", "<>"},
               {"<$USERDIR$>", "<>"},
               {"<$USERDIR_PARENT$>", "<>"},
               {"<$PROFILEDIR$>", "<>"}});
}

TEST_F(MacroTableTest, OtherSpellingsAreNoMacros) {
    ExpectAll({{"$AppDir$", "$AppDir$"},
               {"$userdir$", "$userdir$"},
               {"$APPDIR", "$APPDIR"},
               {"APPDIR$", "APPDIR$"},
               {"$ APPDIR$", "$ APPDIR$"},
               {"$", "$"},
               {"$$$$", "$$$$"},
               {"$X64$X64$", "x64X64$"},
               {"$$X64$$", "$x64$"}});
}

TEST_F(MacroTableTest, WharfsideHomeFolderAlwaysStays) {
    EXPECT_EQ("$WHARFHOMEDIR$\\x", Expand("$WHARFHOMEDIR$\\x"));
}

TEST_F(MacroTableTest, TransferUserNameStaysWhileItsSlotIsEmpty) {
    EXPECT_EQ("<$FTPUSERNAME$>", Expand("<$FTPUSERNAME$>"));
    system_[Slot::kTransferUserName] = "upload";
    EXPECT_EQ("<upload>", Expand("<$FTPUSERNAME$>"));
}

TEST_F(MacroTableTest, SystemMacrosGiveTheFoldersOfTheSystem) {
    ExpectAll({{"$SYSDIR$", "C:\\windows\\system32"},
               {"$WINDRIVE$", "C:"},
               {"$TEMPDIR$", "C:\\temp"},
               {"$MYDOCUMENTS$", "C:\\users\\ann\\Documents"},
               {"$WINDOWSMEDIADIR$", "C:\\windows\\media"},
               {"$USERNAME$", "ann"},
               {"$RUNDLL32PATH$", "C:\\windows\\system32\\rundll32.exe"},
               {"$APPDIR_SHORTNAME$", "short:C:\\Program Files\\Farrow"}});
}

TEST_F(MacroTableTest, OldFamilyRunsLibrariesFromTheWindowsFolder) {
    system_.ntFamily = false;
    system_.windowsFolder = "C:\\";
    EXPECT_EQ("C:\\rundll32.exe", Expand("$RUNDLL32PATH$"));
}

TEST_F(MacroTableTest, SystemFolderIsGivenAsTheSystemGivesIt) {
    system_.systemFolder = "C:\\sys\\";
    EXPECT_EQ("C:\\sys\\", Expand("$SYSDIR$"));
}

TEST_F(MacroTableTest, WindowsFolderWithoutADriveIsItsOwnDrive) {
    system_.windowsFolder = "\\\\host\\windows";
    EXPECT_EQ("\\\\host\\windows", Expand("$WINDRIVE$"));
}

TEST_F(MacroTableTest, MissingUserNameIsUser) {
    system_.userName.reset();
    EXPECT_EQ("User", Expand("$USERNAME$"));
}

TEST_F(MacroTableTest, MissingShortFormIsEmpty) {
    system_.hasShortForms = false;
    EXPECT_EQ("<>", Expand("<$APPDIR_SHORTNAME$>"));
}

TEST_F(MacroTableTest, ProgramFilesStayOnlyWithoutTheirKey) {
    EXPECT_EQ("$PROGRAMFILES$", Expand("$PROGRAMFILES$"));
    system_.registry[{Hive::kLocalMachine, kWindowsKey}];
    EXPECT_EQ("<>", Expand("<$PROGRAMFILES$>"));
    system_.Store(Hive::kLocalMachine, kWindowsKey, "ProgramFilesDir", "C:\\Program Files\\");
    EXPECT_EQ("C:\\Program Files\\", Expand("$PROGRAMFILES$"));
}

TEST_F(MacroTableTest, DeploymentPathStaysOnlyWithoutItsKeys) {
    EXPECT_EQ("$DEPLOYRUNPATH$", Expand("$DEPLOYRUNPATH$"));
    system_.registry[{Hive::kLocalMachine, kDeployment}];
    EXPECT_EQ("<>", Expand("<$DEPLOYRUNPATH$>"));
    system_.Store(Hive::kLocalMachine, kDeployment, "", "C:\\deploy.dll");
    EXPECT_EQ("short:C:\\deploy.dll", Expand("$DEPLOYRUNPATH$"));
}

TEST_F(MacroTableTest, DeploymentPathOfTheUserComesFirstEvenWhenItIsEmpty) {
    system_.Store(Hive::kLocalMachine, kDeployment, "", "C:\\machine.dll");
    system_.Store(Hive::kCurrentUser, kDeployment, "", "C:\\user.dll");
    EXPECT_EQ("short:C:\\user.dll", Expand("$DEPLOYRUNPATH$"));
    system_.registry[{Hive::kCurrentUser, kDeployment}].clear();
    EXPECT_EQ("<>", Expand("<$DEPLOYRUNPATH$>"));
}

TEST_F(MacroTableTest, DeploymentPathWithoutAShortFormKeepsItsLongOne) {
    system_.hasShortForms = false;
    system_.Store(Hive::kCurrentUser, kDeployment, "", "C:\\user.dll");
    EXPECT_EQ("C:\\user.dll", Expand("$DEPLOYRUNPATH$"));
}

TEST_F(MacroTableTest, ShellFoldersComeFromTheUsersKey) {
    for (const char* name : {"Desktop", "Start Menu", "Programs"}) {
        system_.Store(Hive::kCurrentUser, kShellFolders, name, std::string("own ") + name);
        system_.Store(Hive::kLocalMachine, kShellFolders, name, "wrong");
    }
    ExpectAll({{"$DESKTOP$", "own Desktop"},
               {"$STARTMENU$", "own Start Menu"},
               {"$STARTMENU-PROGRAMS$", "own Programs"},
               {"$ALLUSER-DESKTOP$", "own Desktop"},
               {"$ALLUSER-STARTMENU$", "own Start Menu"},
               {"$ALLUSER-STARTMENU-PROGRAMS$", "own Programs"}});
}

TEST_F(MacroTableTest, ShellFoldersOfAllUsersComeFromTheMachinesKey) {
    for (const char* name : {"Common Desktop", "Common Start Menu", "Common Programs"}) {
        system_.Store(Hive::kLocalMachine, kShellFolders, name, name);
        system_.Store(Hive::kCurrentUser, kShellFolders, name, "wrong");
    }
    ExpectAll({{"$ALLUSER-DESKTOP$", "Common Desktop"},
               {"$ALLUSER-STARTMENU$", "Common Start Menu"},
               {"$ALLUSER-STARTMENU-PROGRAMS$", "Common Programs"},
               {"<$DESKTOP$>", "<>"}});
}

TEST_F(MacroTableTest, ApplicationDataMacrosGiveTheirFolders) {
    system_.Store(Hive::kCurrentUser, kShellFolders, "AppData", "C:\\own");
    system_.Store(Hive::kLocalMachine, kShellFolders, "Common AppData", "C:\\common");
    ExpectAll({{"$USERWINAPPDATA$", "C:\\own"}, {"$ALLUSERWINAPPDATA$", "C:\\common"}});
}

TEST_F(MacroTableTest, EnvironmentIsExpandedFirst) {
    EXPECT_EQ("Acme\\deu", Expand("%COMPANY%\\$LANGUAGE_CODE$"));
    system_.company = "$X64$";
    EXPECT_EQ("x64", Expand("%COMPANY%"));
    system_[Slot::kOrganization] = "%COMPANY%";
    EXPECT_EQ("%COMPANY%", Expand("$ORGANIZATION$"));
}

TEST_F(MacroTableTest, ValuesAreExpandedByLaterStepsOnly) {
    system_.Store(Hive::kCurrentUser, kProduct, "UserDir", "$TEMPDIR$\\$LANGUAGE_CODE$");
    EXPECT_EQ("C:\\temp\\$LANGUAGE_CODE$", Expand("$FATUSERDIR$"));
    system_[Slot::kOrganization] = "$USERDIR$ $SYSDIR$";
    EXPECT_EQ("C:\\Users\\a $SYSDIR$", Expand("$ORGANIZATION$"));
}

TEST_F(MacroTableTest, ProductUserFolderIsEmptyWhenNoProcessHasOne) {
    EXPECT_EQ("\\x", Expand("$FATUSERDIR$\\x"));
    EXPECT_EQ(18u, system_.keysRead.size());
}

TEST_F(MacroTableTest, ProductHomeFolderStaysWhenNoProcessHasOne) {
    EXPECT_EQ("$FATHOMEDIR$\\x", Expand("$FATHOMEDIR$\\x"));
    EXPECT_EQ(44u, system_.keysRead.size());
    EXPECT_EQ("C:\\Program Files\\Farrow\\x", Expand("$FATORTHINHOMEDIR$\\x"));
}

TEST_F(MacroTableTest, ProductHomeFolderIsFoundInTheLastKey) {
    system_.Store(Hive::kLocalMachine, kCommons, "HomeDir64", "C:\\home\\");
    ExpectAll({{"$FATHOMEDIR$", "C:\\home"}, {"$FATORTHINHOMEDIR$", "C:\\home"}});
}

TEST_F(MacroTableTest, HomeFolderWithAMacroIsExpandedOnBothWays) {
    system_.Store(Hive::kLocalMachine, kCommons, "HomeDir64", "$APPDIR$\\home");
    const std::string home = "C:\\Program Files\\Farrow\\home";
    EXPECT_EQ(home, Expand("$FATHOMEDIR$"));
    EXPECT_EQ(home, Expand("$FATORTHINHOMEDIR$"));
}

TEST_F(MacroTableTest, HomeFolderThatNamesItselfEnds) {
    system_.Store(Hive::kLocalMachine, kCommons, "HomeDir64", "$FATHOMEDIR$");
    EXPECT_EQ("$FATHOMEDIR$", Expand("$FATHOMEDIR$"));
    EXPECT_EQ("C:\\Program Files\\Farrow", Expand("$FATORTHINHOMEDIR$"));
    system_.Store(Hive::kLocalMachine, kCommons, "HomeDir64", "$FATORTHINHOMEDIR$!");
    EXPECT_EQ("$FATORTHINHOMEDIR$!", Expand("$FATORTHINHOMEDIR$"));
}

TEST_F(MacroTableTest, SlotThatHoldsItsOwnMacroIsInsertedOnce) {
    system_[Slot::kApplicationFolder] = "$APPDIR$";
    system_[Slot::kOrganization] = "$ORGANIZATION$$ORGANIZATION$";
    ExpectAll({{"$APPDIR$", "$APPDIR$"},
               {"$FATORTHINHOMEDIR$", "$APPDIR$"},
               {"$ORGANIZATION$", "$ORGANIZATION$$ORGANIZATION$"}});
}

TEST_F(MacroTableTest, Folder32ThatHoldsItsMacroFollowsTheApplicationFolder) {
    system_[Slot::kApplicationFolderX86] = "$APPDIRX86$\\32";
    EXPECT_EQ("C:\\Program Files (x86)\\Farrow\\32;C:\\Program Files (x86)\\y",
              Expand("$APPDIRX86$;C:\\Program Files\\y"));
    EXPECT_EQ("C:\\Program Files\\y", Expand("C:\\Program Files\\y"));
}

TEST_F(MacroTableTest, Folder32StaysInProgramFilesOn32BitMachinesOnly) {
    system_[Slot::kApplicationFolderX86] = "$APPDIRX86$";
    const Row kRows[] = {{"x86", "C:\\Program Files\\Farrow"},
                         {"AMD64", "C:\\Program Files (x86)\\Farrow"},
                         {"X86", "C:\\Program Files (x86)\\Farrow"},
                         {"x86 ", "C:\\Program Files (x86)\\Farrow"},
                         {"", "C:\\Program Files (x86)\\Farrow"}};
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.text);
        system_.Store(Hive::kLocalMachine, kEnvironment, "PROCESSOR_ARCHITECTURE", row.text);
        EXPECT_EQ(row.expanded, Expand("$APPDIRX86$"));
    }
}

TEST_F(MacroTableTest, LongTextsAreExpandedWhole) {
    const std::string filler(100000, 'x');
    EXPECT_EQ(filler, Expand(filler));
    EXPECT_EQ(filler + "x64" + filler, Expand(filler + "$X64$" + filler));
    EXPECT_EQ(std::string(100000, '$'), Expand(std::string(100000, '$')));
    std::string many;
    for (int i = 0; i < 20000; ++i) many += "$X64$";
    EXPECT_EQ(60000u, Expand(many).size());
}

TEST_F(MacroTableTest, ValuesThatMultiplyEachOtherStayWithinTheBound) {
    const auto repeated = [](const std::string& macro) {
        std::string text;
        while (text.size() + macro.size() < 520) text += macro;
        return text;
    };
    system_[Slot::kLanguageCode] = repeated("$APPDIRX86$");
    system_[Slot::kApplicationFolderX86] = repeated("$APPDIR$");
    system_[Slot::kApplicationFolder] = repeated("$ORGANIZATION$");
    system_[Slot::kOrganization] = repeated("$USERDIR$");
    system_[Slot::kUserFolder] = repeated("$PROFILEDIR$");
    system_[Slot::kProfileFolder] = repeated("$X64$");
    const std::size_t size = Expand("$LANGUAGE_CODE$").size();
    EXPECT_GT(size, 1000u);
    EXPECT_LE(size, kMaxExpandedBytes);
}

}  // namespace
}  // namespace depot
