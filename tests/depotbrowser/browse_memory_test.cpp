// What the browse dialog keeps for the next time, and how it follows its screen.
#include <gtest/gtest.h>

#include "depotbrowser/appearance.h"
#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

using BrowseMemoryTest = BrowseTest;

int ColumnWidth(const OpenBrowser& browser, int column) {
    return ListView_GetColumnWidth(browser.Control(CONTROL_LIST), column);
}

TEST_F(BrowseMemoryTest, ColumnsOrderAndPlaceAreKept) {
    MakeFile("a.kra", std::string(5000, 'x'));
    MakeFile("b.kra", "x");
    RECT place = {};
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRows({L"a.kra", L"b.kra"});
        ListView_SetColumnWidth(browser.Control(CONTROL_LIST), 1, 222);
        browser.ClickHeader(2);
        browser.WaitForRows({L"b.kra", L"a.kra"});
        SetWindowPos(browser.Window(), nullptr, 30, 40, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        GetWindowRect(browser.Window(), &place);
        browser.Press(VK_ESCAPE);
    });
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRows({L"b.kra", L"a.kra"});
        EXPECT_EQ(222, ColumnWidth(browser, 1));
        RECT now = {};
        GetWindowRect(browser.Window(), &now);
        EXPECT_TRUE(EqualRect(&place, &now));
        browser.Press(VK_ESCAPE);
    });
    dialog_->put_RememberSize(0);
    Show([](const OpenBrowser& browser) {
        browser.WaitForRows({L"a.kra", L"b.kra"});
        EXPECT_NE(222, ColumnWidth(browser, 1));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseMemoryTest, LastFolderIsKeptForEachType) {
    MakeFile("Sub\\one.kra");
    dialog_->put_FileType(64);
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.DoubleClickRow(L"Sub");
                  browser.DoubleClickRow(L"one.kra");
              }));
    Show([](const OpenBrowser& browser) {
        browser.WaitForLocation(L"Work profiles\\Sub");
        browser.WaitForRows({L"one.kra"});
        browser.SelectDepot(L"Team profiles");
        browser.WaitForLocation(L"Team profiles");
        browser.Press(VK_ESCAPE);
    });
    // A dialog that was cancelled changes nothing.
    Show([](const OpenBrowser& browser) {
        browser.WaitForLocation(L"Work profiles\\Sub");
        browser.Press(VK_ESCAPE);
    });
    dialog_->put_FileType(62);
    Show([](const OpenBrowser& browser) {
        browser.WaitForLocation(L"Work profiles");
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseMemoryTest, FolderThatIsGoneIsNotOpened) {
    MakeFile("Sub\\one.kra");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.DoubleClickRow(L"Sub");
                  browser.DoubleClickRow(L"one.kra");
              }));
    DeleteFileA(At("Sub\\one.kra").c_str());
    RemoveDirectoryA(At("Sub").c_str());
    Show([](const OpenBrowser& browser) {
        browser.WaitForLocation(L"Work profiles");
        browser.WaitForMessage(L"nothing to show");
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseMemoryTest, ValuesThatNoDialogWritesAreLeftAlone) {
    MakeFile("a.kra");
    for (const DWORD number : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        for (const char* const name : {"Left", "Top", "SortColumn", "SortDescending"}) {
            memory_.Dword("", name, number);
        }
        memory_.Text("", "Columns", std::string(250, '9'));
        memory_.Text("Folders", "depotbrowser_test.exe|0", "<No such depot>\\..\\..\\%s%n");
        Show([](const OpenBrowser& browser) {
            browser.WaitForRows({L"a.kra"});
            EXPECT_GT(ColumnWidth(browser, 0), 8);
            browser.Press(VK_ESCAPE);
        });
    }
}

TEST_F(BrowseMemoryTest, AnotherResolutionChangesFontsImagesAndColumns) {
    MakeFile("a.kra");
    dialog_->put_RememberSize(0);
    dialog_->put_HelpTopic(1);
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        const HWND window = browser.Window(), list = browser.Control(CONTROL_LIST);
        const SIZE button = SizeOf(browser.Control(IDOK));
        const int column = ColumnWidth(browser, 0);
        const LONG height = FontOf(list).lfHeight;
        for (const int resolution : {192, 96}) {
            RECT place = {0, 0, 1000 * resolution / 96, 600 * resolution / 96};
            SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(resolution, resolution),
                         reinterpret_cast<LPARAM>(&place));
            int side = 0, ignored = 0;
            ImageList_GetIconSize(ListView_GetImageList(list, LVSIL_SMALL), &side, &ignored);
            EXPECT_EQ(resolution / 6, side);
            EXPECT_EQ(height * resolution / 96, FontOf(list).lfHeight);
            EXPECT_EQ(column * resolution / 96, ColumnWidth(browser, 0));
            ExpectControlsApart(browser);
        }
        EXPECT_EQ(button.cy, SizeOf(browser.Control(IDOK)).cy);
        EXPECT_EQ(L"a.kra", browser.Rows().front());
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseMemoryTest, FailureHasASignUntilTheNextMessage) {
    MakeFile("a.kra");
    Show([](const OpenBrowser& browser) {
        browser.WaitForRow(L"a.kra");
        EXPECT_FALSE(browser.IsShown(CONTROL_MESSAGE_ICON));
        browser.TypeName(L"missing.kra");
        browser.Press(VK_RETURN);
        browser.WaitForMessage(L"was not found");
        EXPECT_TRUE(browser.IsShown(CONTROL_MESSAGE_ICON));
        ExpectControlsApart(browser);
        browser.Press(VK_F5);
        browser.WaitForText(CONTROL_MESSAGE, L"");
        EXPECT_FALSE(browser.IsShown(CONTROL_MESSAGE_ICON));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseMemoryTest, SelectedProfileIsDescribed) {
    MakeFile("a.kra", "[PROFILE]\r\nTitle=My office\r\n[Host]\r\nName=mail.example\r\n");
    MakeFile("b.kra");
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        const auto describes = [&](const std::wstring& part) {
            return browser.Text(CONTROL_DETAILS).find(part) != std::wstring::npos;
        };
        EXPECT_TRUE(Eventually([&] { return describes(L"Title: My office"); }));
        for (const wchar_t* const part : {L"Host: mail.example", L"Skein profile", L"1 KB"}) {
            EXPECT_TRUE(describes(part)) << testing::PrintToString(browser.Text(CONTROL_DETAILS));
        }
        browser.SelectRow(L"b.kra");
        EXPECT_TRUE(Eventually([&] { return !describes(L"Title") && describes(L"Skein"); }));
        browser.SelectRow(L"a.kra");
        browser.Press(VK_RETURN, VK_MENU);
        AnswerQuestion(L"<Work>\\a.kra\n\nTitle: My office\nHost: mail.example\n", IDOK);
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseMemoryTest, FileThatIsGoneIsNotDescribed) {
    MakeFile("a.kra");
    Show([this](const OpenBrowser& browser) {
        browser.WaitForRow(L"a.kra");
        DeleteFileA(At("a.kra").c_str());
        browser.SelectRow(L"a.kra");
        browser.Press(VK_RETURN, VK_MENU);
        AnswerQuestion(L"<Work>\\a.kra", IDOK);
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseMemoryTest, GripIsThereUnlessTheDialogIsMaximised) {
    dialog_->put_RememberSize(0);
    Show([](const OpenBrowser& browser) {
        browser.WaitForMessage(L"nothing to show");
        EXPECT_TRUE(browser.IsShown(CONTROL_GRIP));
        SendMessageW(browser.Window(), WM_SYSCOMMAND, SC_MAXIMIZE, 0);
        EXPECT_FALSE(browser.IsShown(CONTROL_GRIP));
        ExpectControlsApart(browser);
        SendMessageW(browser.Window(), WM_SYSCOMMAND, SC_RESTORE, 0);
        EXPECT_TRUE(browser.IsShown(CONTROL_GRIP));
        browser.Press(VK_ESCAPE);
    });
}

}  // namespace
}  // namespace depot::test
