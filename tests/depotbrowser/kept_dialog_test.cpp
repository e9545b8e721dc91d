// The browse dialog where edits could not be stored: its line, and the window with the way back.
#include "depotbrowser/silent_server.h"
// The sockets come first.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "depotbrowser/appearance.h"
#include "depotbrowser/kept_fixture.h"
#include "platform/system_code_page.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr wchar_t kEntry[] = L"<Dir>\\Sessions\\office.kre";

TEST_F(KeptDialogTest, LineIsHiddenWhereNothingIsKept) {
    Show([](const OpenBrowser& browser) {
        browser.WaitForLocation(L"Work profiles");
        EXPECT_FALSE(browser.IsShown(CONTROL_KEPT_LINE));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(KeptDialogTest, LineCountsWhatIsKeptOfTheShownDepots) {
    world_.Keep();
    world_.Queue();
    const std::string dn = world_.Dn();
    KeptWorld::KeepOf(kKeptOurs, {.server = "elsewhere.example.test:389", .dn = dn});
    KeepRecovered("x.kre", "x", 1);
    Show([](const OpenBrowser& browser) {
        EXPECT_TRUE(Eventually([&] { return browser.IsShown(CONTROL_KEPT_LINE); }));
        EXPECT_EQ(L"Files that co&uld not be stored: 2", browser.Text(CONTROL_KEPT_LINE));
        ExpectControlsApart(browser);
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(KeptDialogTest, LineIsOpenedByItsKeyAndGoesWithTheLastFile) {
    world_.Keep();
    Show([](const OpenBrowser& browser) {
        EXPECT_TRUE(Eventually([&] { return browser.IsShown(CONTROL_KEPT_LINE); }));
        browser.Press('U', VK_MENU);
        const OpenKept kept = WaitForKept();
        kept.WaitForCount(1);
        kept.Press('M', VK_MENU);
        kept.WaitForMessage(L"was stored.");
        kept.WaitForCount(0);
        kept.Press(VK_ESCAPE);
        EXPECT_TRUE(Eventually([&] { return !browser.IsShown(CONTROL_KEPT_LINE); }));
        ExpectControlsApart(browser);
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ(kKeptOurs, world_.Entry());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(KeptDialogTest, WindowShowsWhereAFileBelongsAndWhy) {
    const std::string path = world_.Keep();
    ShowKept([&](const OpenKept& kept) {
        EXPECT_EQ(L"Files that could not be stored", kept.Text(0));
        kept.WaitForCount(1);
        kept.WaitUntilUsable(CONTROL_KEPT_MERGE);
        const Names row = kept.Rows()[0];
        EXPECT_EQ(WideFromAnsi(NamePart(path)), row[0]);
        EXPECT_EQ(kEntry, row[1]);
        EXPECT_NE(L"", row[2]);
        EXPECT_EQ(L"Recovered", row[3]);
        EXPECT_EQ(L"no rights", row[4]);
    });
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(KeptDialogTest, MergePutsBothTogether) {
    world_.Keep();
    world_.StoreByOthers(kKeptTheirs);
    ShowKept([](const OpenKept& kept) {
        kept.Use(CONTROL_KEPT_MERGE);
        kept.WaitForMessage(L"was stored.");
        kept.WaitForCount(0);
    });
    EXPECT_EQ(kKeptBoth, world_.Entry());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(KeptDialogTest, ValuesThatBothChangedAreStoredOnlyWhenTheUserSaysSo) {
    const std::string path = world_.Keep();
    const std::string theirs = "[Host]\r\nName=other\r\nPort=22\r\n";
    world_.StoreByOthers(theirs);
    ShowKept([&](const OpenKept& kept) {
        kept.Use(CONTROL_KEPT_MERGE);
        AnswerQuestionByEnter(L"[Host] Name");
        kept.WaitUntilUsable(CONTROL_KEPT_MERGE);
        EXPECT_EQ(theirs, world_.Entry());
        EXPECT_TRUE(KeptWorld::IsKept(path));
        kept.Use(CONTROL_KEPT_MERGE);
        AnswerQuestion(L"[Host] Name", IDYES);
        kept.WaitForCount(0);
    });
    EXPECT_EQ(kKeptBoth, world_.Entry());
}

TEST_F(KeptDialogTest, ReplacementAsksAndNoIsWhatEnterSays) {
    const std::string path = world_.Keep();
    world_.StoreByOthers(kKeptTheirs);
    ShowKept([&](const OpenKept& kept) {
        kept.Use(CONTROL_KEPT_REPLACE);
        AnswerQuestionByEnter(L"replace what \"<Dir>\\Sessions\\office.kre\" holds");
        EXPECT_EQ(kKeptTheirs, world_.Entry());
        EXPECT_TRUE(KeptWorld::IsKept(path));
        kept.Use(CONTROL_KEPT_REPLACE);
        AnswerQuestion(L"replace what", IDYES);
        kept.WaitForCount(0);
    });
    EXPECT_EQ(kKeptOurs, world_.Entry());
}

TEST_F(KeptDialogTest, DeletionAsksAndNoIsWhatEnterSays) {
    const std::string path = world_.Keep();
    ShowKept([&](const OpenKept& kept) {
        kept.Use(CONTROL_KEPT_DISCARD);
        AnswerQuestionByEnter(L"cannot be undone");
        EXPECT_TRUE(KeptWorld::IsKept(path));
        kept.Use(CONTROL_KEPT_DISCARD);
        AnswerQuestion(L"cannot be undone", IDYES);
        kept.WaitForMessage(L"was deleted.");
        kept.WaitForCount(0);
    });
    EXPECT_FALSE(Exists(path));
    EXPECT_FALSE(Exists(KeptWorld::RecordOf(path)));
    EXPECT_EQ(kKeptBase, world_.Entry());
}

TEST_F(KeptDialogTest, WaitingEditIsNotStoredFromHere) {
    world_.Queue();
    ShowKept([](const OpenKept& kept) {
        kept.WaitForCount(1);
        kept.WaitUntilUsable(CONTROL_KEPT_DISCARD);
        EXPECT_FALSE(kept.IsUsable(CONTROL_KEPT_MERGE));
        EXPECT_FALSE(kept.IsUsable(CONTROL_KEPT_REPLACE));
        EXPECT_TRUE(kept.IsUsable(CONTROL_KEPT_EXPORT));
        EXPECT_EQ(L"Waiting", kept.Rows()[0][3]);
        kept.Use(CONTROL_KEPT_DIFFERENCES);
        kept.WaitForCount(1, CONTROL_KEPT_VALUES);
    });
    EXPECT_THAT(WaitingEdits(), SizeIs(1));
    EXPECT_EQ(kKeptBase, world_.Entry());
}

TEST_F(KeptDialogTest, EditThatWasReplacedMeanwhileIsNotDeleted) {
    world_.Queue();
    ShowKept([this](const OpenKept& kept) {
        kept.WaitUntilUsable(CONTROL_KEPT_DISCARD);
        for (const std::string& path : FilesIn(OfflineFolders().front(), "*.edit")) {
            DeleteFileA(path.c_str());
        }
        world_.Queue(kKeptTheirs);
        kept.Use(CONTROL_KEPT_DISCARD);
        AnswerQuestion(L"cannot be undone", IDYES);
        kept.WaitForMessage(L"changed just now");
    });
    EXPECT_THAT(WaitingEdits(), SizeIs(1));
}

TEST_F(KeptDialogTest, DifferencesAreShownByValue) {
    world_.Keep();
    world_.StoreByOthers(kKeptTheirs);
    ShowKept([](const OpenKept& kept) {
        kept.Use(CONTROL_KEPT_DIFFERENCES);
        kept.WaitForCount(2, CONTROL_KEPT_VALUES);
        kept.WaitUntilUsable(CONTROL_KEPT_DIFFERENCES);
        EXPECT_THAT(kept.Rows(CONTROL_KEPT_VALUES),
                    ElementsAre(Names{L"Host", L"Name", L"mail", L"mail", L"post"},
                                Names{L"Host", L"Port", L"", L"22", L""}));
    });
}

TEST_F(KeptDialogTest, EntryThatIsGoneIsMadeAnewByReplacementAlone) {
    const std::string path = world_.Keep();
    world_.RemoveEntry();
    ShowKept([&](const OpenKept& kept) {
        kept.Use(CONTROL_KEPT_MERGE);
        kept.WaitForMessage(L"is not there any more");
        EXPECT_TRUE(KeptWorld::IsKept(path));
        kept.Use(CONTROL_KEPT_REPLACE);
        AnswerQuestion(L"replace what", IDYES);
        kept.WaitForCount(0);
    });
    EXPECT_EQ(kKeptOurs, world_.Entry());
}

TEST_F(KeptDialogTest, CopyThatIsInUseStaysAndTheFailureIsShown) {
    const std::string path = world_.Keep();
    ShowKept([&](const OpenKept& kept) {
        kept.WaitUntilUsable(CONTROL_KEPT_MERGE);
        const OpenFile held(path);
        kept.Use(CONTROL_KEPT_MERGE);
        kept.WaitForMessage(L"Nothing could be done with");
        kept.WaitForCount(1);
    });
    EXPECT_TRUE(KeptWorld::IsKept(path));
    EXPECT_EQ(kKeptBase, world_.Entry());
}

TEST_F(KeptDialogTest, CopyThatCannotBeDeletedIsReportedAsStored) {
    const std::string path = world_.Keep();
    ShowKept([&](const OpenKept& kept) {
        kept.WaitUntilUsable(CONTROL_KEPT_MERGE);
        const UniqueHandle read = OwnFile(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ,
                                                      nullptr, OPEN_EXISTING, 0, nullptr));
        kept.Use(CONTROL_KEPT_MERGE);
        kept.WaitForMessage(L"was stored, but its copy stays");
        kept.WaitForCount(1);
    });
    EXPECT_EQ(kKeptOurs, world_.Entry());
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(KeptDialogTest, OwnerThatIsDestroyedClosesTheWindowAndItsQuestion) {
    const std::string path = world_.Keep();
    const HWND owner = CreateWindowW(L"STATIC", L"Owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                                     300, 200, nullptr, nullptr, nullptr, nullptr);
    dialog_->put_OwnerWindow(HandleToLong(owner));
    EXPECT_EQ(kNotConfirmed, Show([&](const OpenBrowser& browser) {
                  const OpenKept kept = OpenKeptFrom(browser);
                  kept.Use(CONTROL_KEPT_DISCARD);
                  EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() != kept.Window(); }));
                  PostMessageW(owner, WM_CLOSE, 0, 0);
                  EXPECT_TRUE(Eventually([&] { return IsWindow(kept.Window()) == FALSE; }));
              }));
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(KeptDialogTest, ServerThatIsAwayIsReportedAndTheWindowStaysUsable) {
    CDepotPath location = world_.Location();
    location.port = ClosedPort();
    world_.Define(location.port);
    const std::string dn = world_.Dn();
    const std::string path = KeptWorld::KeepOf(
        kKeptOurs, {.location = &location, .dn = dn, .base = KeptWorld::BytesOf(kKeptBase)});
    ShowKept([](const OpenKept& kept) {
        kept.Use(CONTROL_KEPT_MERGE);
        GiveUpLogOn(kept);
        kept.WaitForMessage(L"Nothing could be done with");
        kept.Use(CONTROL_KEPT_DIFFERENCES);
        GiveUpLogOn(kept);
        kept.WaitForMessage(L"cannot be opened");
        kept.WaitForCount(1, CONTROL_KEPT_VALUES);
        kept.WaitUntilUsable(CONTROL_KEPT_DISCARD);
    });
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(KeptDialogTest, LineIsCountedAnewWithTheFolder) {
    Show([this](const OpenBrowser& browser) {
        browser.WaitForLocation(L"Work profiles");
        world_.Keep();
        browser.Press(VK_F5);
        EXPECT_TRUE(Eventually([&] { return browser.IsShown(CONTROL_KEPT_LINE); }));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(KeptDialogTest, CopyIsSavedWhereTheUserWantsIt) {
    const std::string path = world_.Keep();
    const std::string target = folder_.At("saved.kre");
    ShowKept([&](const OpenKept& kept) {
        kept.Use(CONTROL_KEPT_EXPORT);
        EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() != kept.Window(); }));
        kept.Type(WideFromAnsi(target));
        kept.Press(VK_RETURN);
        kept.WaitForMessage(L"was saved.");
    });
    EXPECT_EQ(kKeptOurs, FileBytes(target));
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(KeptDialogTest, FileThatIsInUseIsNotReplacedByACopy) {
    const std::string path = world_.Keep();
    const std::string target = folder_.MakeFile("saved.kre", "before");
    ShowKept([&](const OpenKept& kept) {
        kept.WaitUntilUsable(CONTROL_KEPT_EXPORT);
        const OpenFile held(target);
        kept.Use(CONTROL_KEPT_EXPORT);
        EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() != kept.Window(); }));
        kept.Type(WideFromAnsi(target));
        kept.Press(VK_RETURN);
        AnswerQuestion(L"already exists", IDYES);
        kept.WaitForMessage(L"Nothing could be done with");
    });
    EXPECT_EQ("before", FileBytes(target));
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

using KeptSlowTest = KeptDialogTest;

TEST_F(KeptSlowTest, LineComesAndTheWindowClosesWhileAServerDoesNotAnswer) {
    SilentServer server;
    CDepotPath location = world_.Location();
    location.port = server.Port();
    world_.Define(server.Port());
    depots_.Dword("Dir", "Authentication1", 2);
    depots_.Dword("Dir", "OrderIndex", 0);
    const std::string dn = world_.Dn();
    KeptWorld::KeepOf(kKeptOurs,
                      {.location = &location, .dn = dn, .base = KeptWorld::BytesOf(kKeptBase)});
    ShowKept([](const OpenKept& kept) {
        kept.WaitForCount(1);
        kept.Use(CONTROL_KEPT_MERGE);
        kept.WaitForMessage(L"Working...");
        EXPECT_TRUE(Eventually([&] { return !kept.IsUsable(CONTROL_KEPT_DISCARD); }));
    });
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
    // The workers release the library once the server closes the connections.
    server.HangUp();
    EXPECT_TRUE(Eventually([this] {
        dialog_.reset();
        return library_.CanUnloadNow() == S_OK;
    }));
}

using KeptCharactersTest = KeptDialogTest;

TEST_F(KeptCharactersTest, FileComesBackByItsOwnName) {
    InstallSystemCodePage();
    const std::string letter = LetterOfCodePage();
    const std::wstring wide = WideFromAnsi(letter);
    const std::string ours = "[A]\r\nB=" + letter + "\r\n";
    world_.AddFile(Utf8FromWide(wide) + ".kre", kKeptBase);
    world_.Keep(ours, letter + ".kre");
    ShowKept([&](const OpenKept& kept) {
        kept.WaitForCount(1);
        kept.WaitUntilUsable(CONTROL_KEPT_DIFFERENCES);
        EXPECT_TRUE(kept.Rows()[0][0].starts_with(wide));
        EXPECT_EQ(L"<Dir>\\Sessions\\" + wide + L".kre", kept.Rows()[0][1]);
        kept.Use(CONTROL_KEPT_DIFFERENCES);
        kept.WaitForCount(2, CONTROL_KEPT_VALUES);
        EXPECT_EQ(wide, kept.Rows(CONTROL_KEPT_VALUES)[0][4]);
        kept.Use(CONTROL_KEPT_MERGE);
        kept.WaitForCount(0);
    });
    EXPECT_EQ(ours, world_.Entry(letter + ".kre"));
}

}  // namespace
}  // namespace depot::test
