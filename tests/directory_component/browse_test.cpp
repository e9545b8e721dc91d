// Choosing files of a directory: a client, the component, the real dialog, a person, a real server.
#include "component/component.h"
#include "depotbrowser/browse_user.h"
#include "depotbrowser/prompt_ids.h"
#include "directory_component/registered_dialog.h"
#include "support/component_depots.h"
#include "support/directory_fixture.h"
#include "support/results.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using namespace std::string_literals;

constexpr VARIANT_BOOL kYes = VARIANT_TRUE;

class BrowseDirectoryTest : public ComponentTest {
protected:
    using Script = std::function<void(const OpenBrowser& browser)>;

    BrowseDirectoryTest() {
        DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_);
        server_.AddFile("a.kra", base_, "[S]\r\nK=of a\r\n");
        server_.AddFile("b.kra", base_, "[S]\r\nK=of b\r\n");
    }

    // What the dialog returns when `script` plays the user.
    HRESULT Browse(LONG_PTR session, OutText& path, const Script& script) {
        const DialogUser user = Play(script);
        return api_->DPBrowse(session, APP_SKEIN, PROMPT_OPEN, kYes, kYes, 0, 0, path);
    }
    HRESULT BrowseMany(LONG_PTR session, OutText& list, const Script& script) {
        const DialogUser user = Play(script);
        return api_->DPBrowseMultiSel(session, APP_SKEIN, kYes, kYes, 0, 0, list, 1000);
    }
    static DialogUser Play(const Script& script) {
        return DialogUser(IsBrowser,
                          [=](const OpenDialog& dialog) { script(OpenBrowser(dialog)); });
    }

    bool Holds(const std::string& name) { return server_.Holds("cn=" + name + "," + base_); }

    DirectoryServer& server_ = SharedServer();
    std::string base_ = NewFolder();
    BoxLog boxes_;
    CleanWorkingFiles clean_;
    RegisteredDialog dialog_;
};

TEST_F(BrowseDirectoryTest, FileThatIsChosenBecomesTheCurrentFile) {
    Session session(*api_);
    OutText path;
    EXPECT_THAT(Browse(session, path,
                       [](const OpenBrowser& browser) {
                           browser.WaitForRows({L"a.kra", L"b.kra"});
                           browser.DoubleClickRow(L"b.kra");
                       }),
                IsOk());
    EXPECT_EQ(L"<Corp>\\b.kra", path.Value());
    EXPECT_EQ(L"of b", Read(session, L"S", L"K"));
}

TEST_F(BrowseDirectoryTest, CancelledDialogKeepsTheCurrentFile) {
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text("<Corp>\\a.kra")), IsOk());
    OutText path;
    EXPECT_THAT(Browse(session, path,
                       [](const OpenBrowser& browser) {
                           browser.WaitForRows({L"a.kra", L"b.kra"});
                           browser.Press(VK_ESCAPE);
                       }),
                IsRefused());
    EXPECT_TRUE(path.IsNull());
    EXPECT_EQ(L"of a", Read(session, L"S", L"K"));
}

TEST_F(BrowseDirectoryTest, CancelledDialogKeepsWhatWasChangedInTheCurrentFile) {
    OutText path;
    {
        Session session(*api_);
        ASSERT_THAT(api_->DPLoadFile(session.Address(), Text("<Corp>\\a.kra")), IsOk());
        ASSERT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text("changed")),
                    IsOk());
        EXPECT_THAT(Browse(session, path,
                           [](const OpenBrowser& browser) {
                               browser.WaitForRows({L"a.kra", L"b.kra"});
                               browser.Press(VK_ESCAPE);
                           }),
                    IsRefused());
        EXPECT_EQ(L"changed", Read(session, L"S", L"K"));
    }
    Session other(*api_);
    ASSERT_THAT(api_->DPLoadFile(other.Address(), Text("<Corp>\\a.kra")), IsOk());
    EXPECT_EQ(L"changed", Read(other, L"S", L"K"));
}

TEST_F(BrowseDirectoryTest, ItsOwnPromptShowsTheFormOfNamesThatTheServerWants) {
    DefineAskingDepot(depots_, "Asked", server_.Port(), base_);
    std::wstring example;
    Session session(*api_);
    OutText path;
    EXPECT_THAT(Browse(session, path,
                       [&](const OpenBrowser& browser) {
                           ForgetServer(server_.Port());
                           browser.SelectDepot(L"Asked");
                           const OpenDialog prompt = WaitForPrompt();
                           example = prompt.Text(CONTROL_EXAMPLE);
                           prompt.WaitForFocus(CONTROL_USER);
                           prompt.Type(Wide(kEditor));
                           prompt.Press(VK_TAB);
                           prompt.WaitForFocus(CONTROL_PASSWORD);
                           prompt.Type(Wide(kEditorPassword));
                           prompt.Press(VK_RETURN);
                           browser.WaitForRows({L"a.kra", L"b.kra"});
                           browser.Press(VK_ESCAPE);
                       }),
                IsRefused());
    EXPECT_EQ(L"The server wants names such as cn=Mary Walker,dc=farrow,dc=test", example);
    ForgetServer(server_.Port());
}

TEST_F(BrowseDirectoryTest, ChangedFileIsStoredWhenAnotherIsChosen) {
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text("<Corp>\\a.kra")), IsOk());
    ASSERT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text("changed")), IsOk());
    OutText path;
    EXPECT_THAT(Browse(session, path,
                       [](const OpenBrowser& browser) {
                           browser.WaitForRow(L"b.kra");
                           browser.DoubleClickRow(L"b.kra");
                       }),
                IsOk());
    OutText copy;
    Session other(*api_);
    ASSERT_THAT(api_->DPLoadFile(other.Address(), Text("<Corp>\\a.kra")), IsOk());
    EXPECT_EQ(L"changed", Read(other, L"S", L"K"));
}

TEST_F(BrowseDirectoryTest, ChangedFileThatIsChosenAgainIsStoredBeforeItIsFetched) {
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text("<Corp>\\a.kra")), IsOk());
    ASSERT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text("changed")), IsOk());
    OutText path;
    EXPECT_THAT(
        Browse(session, path, [](const OpenBrowser& browser) { browser.DoubleClickRow(L"a.kra"); }),
        IsOk());
    EXPECT_EQ(L"<Corp>\\a.kra", path.Value());
    EXPECT_EQ(L"changed", Read(session, L"S", L"K"));
}

TEST_F(BrowseDirectoryTest, SeveralChosenFilesStoreTheCurrentOneAndLeaveNone) {
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text("<Corp>\\a.kra")), IsOk());
    ASSERT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text("changed")), IsOk());
    OutText list;
    EXPECT_THAT(BrowseMany(session, list,
                           [](const OpenBrowser& browser) {
                               browser.WaitForRow(L"b.kra");
                               browser.Focus(CONTROL_LIST);
                               browser.Press('A', VK_CONTROL);
                               browser.WaitForSelection({L"a.kra", L"b.kra"});
                               browser.Click(IDOK);
                           }),
                IsOk());
    EXPECT_EQ(L"<Corp>\0a.kra\0a.kra\0b.kra\0\0"s, list.Value());
    EXPECT_EQ(L"(failed)", Read(session, L"S", L"K"));
    Session other(*api_);
    ASSERT_THAT(api_->DPLoadFile(other.Address(), Text("<Corp>\\a.kra")), IsOk());
    EXPECT_EQ(L"changed", Read(other, L"S", L"K"));
}

TEST_F(BrowseDirectoryTest, SavingBeginsWithTheSelectedItemAndOffersFileOperationsAnyway) {
    Session session(*api_);
    ASSERT_THAT(api_->DPSetSelItemPath(session, Text("<Corp>\\new.kra")), IsOk());
    const DialogUser user = Play([](const OpenBrowser& browser) {
        browser.WaitForRows({L"a.kra", L"b.kra"});
        EXPECT_TRUE(browser.IsShown(CONTROL_RENAME));
        browser.WaitForText(CONTROL_NAME, L"new.kra");
        browser.Click(IDOK);
    });
    OutText path;
    EXPECT_THAT(api_->DPBrowse(session, APP_SKEIN, PROMPT_SAVEAS, VARIANT_FALSE, VARIANT_FALSE, 0,
                               4711, path),
                IsOk());
    EXPECT_EQ(L"<Corp>\\new.kra", path.Value());
    // Nothing is stored before something is written.
    EXPECT_FALSE(Holds("new.kra"));
}

TEST_F(BrowseDirectoryTest, OtherApplicationsFilesAreOpenedAndSavedToo) {
    server_.AddFile("c.krk", base_, "[S]\r\nK=of c\r\n");
    for (const BROWSE_TYPE type : {PROMPT_OPEN, PROMPT_SAVEAS}) {
        Session session(*api_);
        const DialogUser user = Play([](const OpenBrowser& browser) {
            browser.WaitForLocation(L"Corp");
            browser.Press(VK_ESCAPE);
        });
        OutText path;
        EXPECT_THAT(api_->DPBrowse(session, APP_KICKOFF, type, kYes, kYes, 0, 0, path),
                    IsRefused());
        EXPECT_TRUE(path.IsNull());
    }
}

TEST_F(BrowseDirectoryTest, CommandsChangeTheDirectory) {
    Session session(*api_);
    OutText path;
    Browse(session, path, [this](const OpenBrowser& browser) {
        browser.WaitForRows({L"a.kra", L"b.kra"});
        browser.SelectRow(L"a.kra");
        browser.Click(CONTROL_MAKE_COPY);
        browser.WaitForRow(L"a - copy.kra");
        browser.SelectRow(L"b.kra");
        browser.Press(VK_F2);
        EXPECT_TRUE(Eventually(
            [&] { return ListView_GetEditControl(browser.Control(CONTROL_LIST)) != nullptr; }));
        browser.Type(L"new");
        browser.Press(VK_RETURN);
        browser.WaitForRow(L"new.kra");
        browser.SelectRow(L"a - copy.kra");
        browser.Press(VK_DELETE);
        // The log closes the question, which is no yes.
        EXPECT_TRUE(Eventually([&] { return !boxes_.Boxes().empty(); }));
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Holds("a.kra"));
    EXPECT_TRUE(Holds("a - copy.kra"));
    EXPECT_TRUE(Holds("new.kra"));
    EXPECT_FALSE(Holds("b.kra"));
    EXPECT_THAT(boxes_.Texts(), ElementsAre("Do you want to delete \"a - copy.kra\"?\n\n"
                                            "This cannot be undone."));
}

}  // namespace
}  // namespace depot::test
