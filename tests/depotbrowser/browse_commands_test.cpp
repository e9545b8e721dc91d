// Changing files in the browse dialog.
#include <gtest/gtest.h>

#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

class BrowseCommandsTest : public BrowseTest {
protected:
    // Waits until the name of an entry can be edited.
    static bool WaitForEditing(const OpenBrowser& browser) {
        const HWND list = browser.Control(CONTROL_LIST);
        return Eventually([&] { return ListView_GetEditControl(list) != nullptr; });
    }
    static bool WaitForEditingEnds(const OpenBrowser& browser) {
        const HWND list = browser.Control(CONTROL_LIST);
        return Eventually([&] { return ListView_GetEditControl(list) == nullptr; });
    }

    // Waits until a name is proposed for editing, with its stem selected.
    static bool WaitForEdited(const OpenBrowser& browser, const std::wstring& name) {
        const HWND list = browser.Control(CONTROL_LIST);
        return Eventually([&] {
            return OpenDialog(ListView_GetEditControl(list)).Text(0) == name &&
                   SelectionInEdit(browser) == name.rfind(L'.');
        });
    }

    // How many characters from the first one are selected in the name that is edited.
    static std::size_t SelectionInEdit(const OpenBrowser& browser) {
        DWORD first = 0, end = 0;
        SendMessageW(ListView_GetEditControl(browser.Control(CONTROL_LIST)), EM_GETSEL,
                     reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&end));
        return first == 0 ? end : 0;
    }
};

TEST_F(BrowseCommandsTest, F2RenamesTheSelectedFile) {
    MakeFile("old.kra");
    Show([&](const OpenBrowser& browser) {
        browser.SelectRow(L"old.kra");
        browser.Press(VK_F2);
        EXPECT_TRUE(WaitForEditing(browser));
        browser.Type(L"new");
        browser.Press(VK_RETURN);
        browser.WaitForRows({L"new.kra"});
        browser.WaitForSelection({L"new.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("new.kra")));
    EXPECT_FALSE(Exists(At("old.kra")));
}

TEST_F(BrowseCommandsTest, EscapeLeavesTheNameAndTheDialogAsTheyAre) {
    MakeFile("old.kra");
    Show([&](const OpenBrowser& browser) {
        browser.SelectRow(L"old.kra");
        browser.Click(CONTROL_RENAME);
        EXPECT_TRUE(WaitForEditing(browser));
        browser.Type(L"new");
        browser.Press(VK_ESCAPE);
        EXPECT_TRUE(Eventually(
            [&] { return ListView_GetEditControl(browser.Control(CONTROL_LIST)) == nullptr; }));
        browser.WaitForRows({L"old.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("old.kra")));
}

TEST_F(BrowseCommandsTest, RenamingSelectsTheNameWithoutItsExtension) {
    MakeFile("old.plan.kra");
    MakeFile("Sub.old\\inner.kra");
    MakeFile("README");
    const std::pair<const wchar_t*, std::size_t> rows[] = {
        {L"Sub.old", 7}, {L"old.plan.kra", 8}, {L"README", 6}};
    Show([&](const OpenBrowser& browser) {
        for (const auto& [name, selected] : rows) {
            browser.SelectRow(name);
            browser.Press(VK_F2);
            EXPECT_TRUE(WaitForEditing(browser));
            EXPECT_TRUE(Eventually([&] { return SelectionInEdit(browser) == selected; })) << name;
            browser.Press(VK_ESCAPE);
            EXPECT_TRUE(WaitForEditingEnds(browser));
        }
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseCommandsTest, NameThatIsRefusedStaysToBeEdited) {
    MakeFile("a.kra");
    MakeFile("b.kra");
    Show([&](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.Press(VK_F2);
        EXPECT_TRUE(WaitForEditing(browser));
        browser.Type(L"B");
        browser.Press(VK_RETURN);
        browser.WaitForMessage(L"\"B.kra\" already exists.");
        EXPECT_TRUE(WaitForEdited(browser, L"B.kra"));
        browser.Type(L"c:d");
        browser.Press(VK_RETURN);
        browser.WaitForMessage(L"\"c:d.kra\" is not a valid name.");
        EXPECT_TRUE(WaitForEdited(browser, L"c:d.kra"));
        browser.WaitForRows({L"a.kra", L"b.kra"});
        browser.Type(L"c");
        browser.Press(VK_RETURN);
        browser.WaitForRows({L"b.kra", L"c.kra"});
        browser.WaitForSelection({L"c.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("c.kra")));
}

TEST_F(BrowseCommandsTest, RefusedNameIsLeftByAClickElsewhere) {
    MakeFile("a.kra");
    Show([&](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.Press(VK_F2);
        EXPECT_TRUE(WaitForEditing(browser));
        browser.Type(L"a:b");
        const HWND list = browser.Control(CONTROL_LIST);
        EXPECT_TRUE(Eventually(
            [&] { return OpenDialog(ListView_GetEditControl(list)).Text(0) == L"a:b.kra"; }));
        browser.Focus(CONTROL_NAME);
        browser.WaitForMessage(L"\"a:b.kra\" is not a valid name.");
        EXPECT_TRUE(WaitForEditingEnds(browser));
        browser.WaitForFocus(CONTROL_NAME);
        browser.WaitForRows({L"a.kra"});
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseCommandsTest, DeleteAsksAndDeletesAfterAYesOnly) {
    MakeFile("a.kra");
    Show([&](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.Press(VK_DELETE);
        AnswerQuestion(L"delete \"a.kra\"?", IDNO);
        EXPECT_TRUE(Exists(At("a.kra")));
        browser.Press(VK_DELETE);
        AnswerQuestion(L"delete \"a.kra\"?", IDYES);
        browser.WaitForRows({});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_FALSE(Exists(At("a.kra")));
}

TEST_F(BrowseCommandsTest, SeveralFilesAndAFolderAreDeletedAfterOneQuestion) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra");
    dialog_->put_AllowMultipleSelection(1);
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.Press('A', VK_CONTROL);
        browser.WaitForSelection({L"Sub", L"a.kra"});
        browser.Click(CONTROL_DELETE);
        AnswerQuestion(L"delete these 2 items?", IDYES);
        browser.WaitForRows({});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_FALSE(Exists(At("Sub")));
    EXPECT_FALSE(Exists(At("a.kra")));
}

TEST_F(BrowseCommandsTest, MakeACopyNamesAndSelectsTheCopy) {
    MakeFile("a.kra", "bytes");
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.Click(CONTROL_MAKE_COPY);
        browser.WaitForSelection({L"a - copy.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("bytes", FileBytes(At("a - copy.kra")));
}

TEST_F(BrowseCommandsTest, NewFolderIsMadeAndItsNameCanBeTyped) {
    MakeFile("New folder\\inner.kra");
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"New folder");
        browser.Click(CONTROL_NEW_FOLDER);
        EXPECT_TRUE(WaitForEditing(browser));
        EXPECT_TRUE(Exists(At("New folder (2)")));
        browser.Type(L"Mine");
        browser.Press(VK_RETURN);
        browser.WaitForRows({L"Mine", L"New folder"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("Mine")));
}

TEST_F(BrowseCommandsTest, ButtonsCanBeUsedAsFarAsTheSelectionAllows) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra");
    Show([](const OpenBrowser& browser) {
        browser.WaitForRow(L"a.kra");
        EXPECT_TRUE(browser.IsUsable(CONTROL_NEW_FOLDER));
        EXPECT_FALSE(browser.IsUsable(CONTROL_RENAME));
        EXPECT_FALSE(browser.IsUsable(CONTROL_DELETE));
        browser.SelectRow(L"Sub");
        EXPECT_TRUE(browser.IsUsable(CONTROL_RENAME));
        EXPECT_TRUE(browser.IsUsable(CONTROL_DELETE));
        EXPECT_FALSE(browser.IsUsable(CONTROL_MAKE_COPY));
        browser.SelectRow(L"a.kra");
        EXPECT_TRUE(browser.IsUsable(CONTROL_MAKE_COPY));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseCommandsTest, WithoutPermissionNothingCanBeChanged) {
    MakeFile("a.kra");
    for (const bool editing : {true, false}) {
        dialog_->put_AllowEditing(editing ? 1 : 0);
        dialog_->put_AllowFileOperations(editing ? 0 : 1);
        Show([&](const OpenBrowser& browser) {
            browser.SelectRow(L"a.kra");
            for (const int control :
                 {CONTROL_NEW_FOLDER, CONTROL_RENAME, CONTROL_MAKE_COPY, CONTROL_DELETE}) {
                EXPECT_FALSE(browser.IsShown(control));
            }
            browser.Press(VK_DELETE);
            browser.Press(VK_F2);
            // A question or an edit field would take the key.
            browser.Press(VK_ESCAPE);
        });
        EXPECT_TRUE(Exists(At("a.kra")));
    }
}

}  // namespace
}  // namespace depot::test
