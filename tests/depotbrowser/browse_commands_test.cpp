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
};

TEST_F(BrowseCommandsTest, F2RenamesTheSelectedFile) {
    MakeFile("old.kra");
    Show([&](const OpenBrowser& browser) {
        browser.SelectRow(L"old.kra");
        browser.Press(VK_F2);
        EXPECT_TRUE(WaitForEditing(browser));
        browser.Type(L"new.kra");
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
        browser.Type(L"new.kra");
        browser.Press(VK_ESCAPE);
        EXPECT_TRUE(Eventually(
            [&] { return ListView_GetEditControl(browser.Control(CONTROL_LIST)) == nullptr; }));
        browser.WaitForRows({L"old.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("old.kra")));
}

TEST_F(BrowseCommandsTest, NameThatIsTakenOrCannotBeIsRefusedInPlace) {
    MakeFile("a.kra");
    MakeFile("b.kra");
    Show([&](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.Press(VK_F2);
        EXPECT_TRUE(WaitForEditing(browser));
        browser.Type(L"B.kra");
        browser.Press(VK_RETURN);
        browser.WaitForMessage(L"\"B.kra\" already exists.");
        browser.SelectRow(L"a.kra");
        browser.Press(VK_F2);
        EXPECT_TRUE(WaitForEditing(browser));
        browser.Type(L"a:b");
        browser.Press(VK_RETURN);
        browser.WaitForMessage(L"\"a:b\" is not a valid name.");
        browser.WaitForRows({L"a.kra", L"b.kra"});
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
