// The ways through the folders, and what the user can see and do on them.
#include <gtest/gtest.h>

#include "depotbrowser/appearance.h"
#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

constexpr int kDepotCrumb = CONTROL_FIRST_CRUMB + 1;

class BrowseNavigationTest : public BrowseTest {
protected:
    BrowseNavigationTest() {
        dialog_->put_RememberSize(0);
        MakeFile("One\\Two\\deep.kra");
        MakeFile("top.kra");
    }

    // Goes down to the innermost folder.
    static void GoDown(const OpenBrowser& browser) {
        browser.DoubleClickRow(L"One");
        browser.WaitForRows({L"Two"});
        browser.DoubleClickRow(L"Two");
        browser.WaitForRows({L"deep.kra"});
    }
};

TEST_F(BrowseNavigationTest, ButtonsLeadBackForwardAndUp) {
    Show([](const OpenBrowser& browser) {
        browser.WaitForRows({L"One", L"top.kra"});
        EXPECT_FALSE(browser.IsUsable(CONTROL_BACK) || browser.IsUsable(CONTROL_FORWARD) ||
                     browser.IsUsable(CONTROL_UP));
        GoDown(browser);
        EXPECT_FALSE(browser.IsUsable(CONTROL_FORWARD));
        browser.Click(CONTROL_BACK);
        browser.WaitForLocation(L"Work profiles\\One");
        browser.Click(CONTROL_BACK);
        browser.WaitForLocation(L"Work profiles");
        EXPECT_FALSE(browser.IsUsable(CONTROL_BACK));
        browser.Click(CONTROL_FORWARD);
        browser.WaitForLocation(L"Work profiles\\One");
        browser.Click(CONTROL_UP);
        browser.WaitForLocation(L"Work profiles");
        // The way up is a visit, too.
        EXPECT_FALSE(browser.IsUsable(CONTROL_FORWARD));
        browser.Click(CONTROL_BACK);
        browser.WaitForLocation(L"Work profiles\\One");
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseNavigationTest, AltWithAnArrowLeadsBackForwardAndUp) {
    Show([](const OpenBrowser& browser) {
        GoDown(browser);
        browser.Press(VK_LEFT, VK_MENU);
        browser.WaitForLocation(L"Work profiles\\One");
        browser.Press(VK_RIGHT, VK_MENU);
        browser.WaitForLocation(L"Work profiles\\One\\Two");
        browser.Press(VK_UP, VK_MENU);
        browser.WaitForSelection({L"Two"});
        SendMessageW(browser.Window(), WM_APPCOMMAND, 0,
                     MAKELPARAM(0, APPCOMMAND_BROWSER_BACKWARD));
        browser.WaitForLocation(L"Work profiles\\One\\Two");
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseNavigationTest, DepotThatWasShownBeforeIsReachedBack) {
    Show([](const OpenBrowser& browser) {
        browser.WaitForRows({L"One", L"top.kra"});
        browser.SelectDepot(L"Team profiles");
        browser.WaitForLocation(L"Team profiles");
        browser.Press(VK_LEFT, VK_MENU);
        browser.WaitForLocation(L"Work profiles");
        EXPECT_EQ(L"Work profiles", browser.SelectedInTree());
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseNavigationTest, EveryFolderOnTheWayHasAButton) {
    Show([](const OpenBrowser& browser) {
        GoDown(browser);
        browser.WaitForText(kDepotCrumb, L"Work profiles");
        EXPECT_EQ(L"One", browser.Text(kDepotCrumb + 1));
        EXPECT_EQ(L"Two", browser.Text(kDepotCrumb + 2));
        browser.Click(kDepotCrumb + 1);
        browser.WaitForRows({L"Two"});
        EXPECT_FALSE(browser.IsShown(kDepotCrumb + 2));
        browser.Focus(kDepotCrumb);
        browser.Press(VK_RIGHT);
        browser.WaitForFocus(kDepotCrumb + 1);
        browser.Press(VK_LEFT);
        browser.WaitForFocus(kDepotCrumb);
        browser.Press(VK_RETURN);
        browser.WaitForRows({L"One", L"top.kra"});
        browser.Press(VK_ESCAPE);
    });
}

// The window of the menu that is open.
HWND OpenMenu() {
    HWND menu = nullptr;
    EXPECT_TRUE(Eventually([&] {
        menu = FindWindowW(L"#32768", nullptr);
        return menu != nullptr && IsWindowVisible(menu);
    }));
    return menu;
}

TEST_F(BrowseNavigationTest, FoldersWithoutRoomStandInAMenu) {
    const std::string longName(40, 'n');
    MakeFile(longName + "\\" + longName + "x\\deep.kra");
    const std::wstring wide(longName.begin(), longName.end());
    Show([&](const OpenBrowser& browser) {
        browser.DoubleClickRow(wide);
        browser.DoubleClickRow(wide + L"x");
        browser.WaitForRows({L"deep.kra"});
        SetWindowPos(browser.Window(), nullptr, 0, 0, 1, 1, SWP_NOMOVE | SWP_NOZORDER);
        ExpectControlsApart(browser);
        EXPECT_TRUE(browser.IsShown(CONTROL_FIRST_CRUMB));
        browser.WaitForText(kDepotCrumb, wide + L"x");
        browser.Click(CONTROL_FIRST_CRUMB);
        OpenMenu();
        browser.Press(VK_DOWN);
        browser.Press(VK_RETURN);
        browser.WaitForLocation(L"Work profiles");
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseNavigationTest, NamesWithAnAmpersandAreShownWhole) {
    MakeFile("R&D\\x.kra");
    Show([](const OpenBrowser& browser) {
        browser.DoubleClickRow(L"R&D");
        browser.WaitForRows({L"x.kra"});
        EXPECT_EQ(L"R&&D", browser.Text(kDepotCrumb + 1));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseNavigationTest, StatusLineCountsRowsAndSelection) {
    MakeFile("other.kra");
    dialog_->put_AllowMultipleSelection(1);
    Show([](const OpenBrowser& browser) {
        browser.WaitForText(CONTROL_STATUS, L"Items: 3");
        browser.SelectRow(L"top.kra");
        browser.WaitForText(CONTROL_STATUS, L"Items: 3, selected: 1");
        browser.Press('A', VK_CONTROL);
        browser.WaitForText(CONTROL_STATUS, L"Items: 3, selected: 3");
        browser.SelectDepot(L"Team profiles");
        browser.WaitForText(CONTROL_STATUS, L"Items: 0");
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseNavigationTest, ContextMenuActsOnTheSelection) {
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"top.kra");
        browser.Press(VK_F10, VK_SHIFT);
        OpenMenu();
        browser.Press('C');
        browser.WaitForSelection({L"top - copy.kra"});
        browser.SelectRow(L"One");
        PostMessageW(browser.Window(), WM_CONTEXTMENU,
                     reinterpret_cast<WPARAM>(browser.Control(CONTROL_LIST)), -1);
        OpenMenu();
        browser.Press('O');
        browser.WaitForRows({L"Two"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(At("top - copy.kra").c_str()));
}

TEST_F(BrowseNavigationTest, ContextMenuOffersNoChangeWithoutPermission) {
    dialog_->put_AllowFileOperations(0);
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"top.kra");
        browser.Press(VK_F10, VK_SHIFT);
        const HWND window = OpenMenu();
        const auto menu = reinterpret_cast<HMENU>(SendMessageW(window, MN_GETHMENU, 0, 0));
        for (const UINT command :
             {CONTROL_RENAME, CONTROL_MAKE_COPY, CONTROL_DELETE, CONTROL_NEW_FOLDER}) {
            EXPECT_EQ(static_cast<UINT>(-1), GetMenuState(menu, command, MF_BYCOMMAND));
        }
        EXPECT_NE(static_cast<UINT>(-1), GetMenuState(menu, COMMAND_REFRESH, MF_BYCOMMAND));
        browser.Press(VK_ESCAPE);
        EXPECT_TRUE(Eventually([] { return FindWindowW(L"#32768", nullptr) == nullptr; }));
        browser.Press(VK_ESCAPE);
    });
}

}  // namespace
}  // namespace depot::test
