// Entries of the list that are dragged onto folders with the mouse.
#include <gtest/gtest.h>

#include <thread>

#include "depotbrowser/browse_fixture.h"
#include "depotbrowser/drag_user.h"

namespace depot::test {
namespace {

class BrowseDragTest : public BrowseTest {
protected:
    // Whether nothing is dragged any more and nothing is marked.
    static bool HasEnded(const OpenBrowser& browser) {
        return Eventually([&] { return !IsDragging(browser); });
    }
};

TEST_F(BrowseDragTest, DraggedFileMovesToTheFolderOfTheRow) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra", "bytes");
    Show([&](const OpenBrowser& browser) {
        EXPECT_TRUE(BeginDrag(browser, L"a.kra"));
        const POINT place = PlaceOfRow(browser, L"Sub");
        DragTo(browser, place);
        EXPECT_TRUE(IsRowMarked(browser, L"Sub"));
        EXPECT_FALSE(IsRowMarked(browser, L"a.kra"));
        ReleaseAt(browser, place);
        browser.WaitForRows({L"Sub"});
        EXPECT_FALSE(IsRowMarked(browser, L"Sub"));
        EXPECT_TRUE(HasEnded(browser));
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("bytes", FileBytes(At("Sub\\a.kra")));
    EXPECT_FALSE(Exists(At("a.kra")));
}

TEST_F(BrowseDragTest, CtrlCopies) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra", "bytes");
    Show([&](const OpenBrowser& browser) {
        EXPECT_TRUE(BeginDrag(browser, L"a.kra"));
        ReleaseAt(browser, PlaceOfRow(browser, L"Sub"), MK_CONTROL);
        EXPECT_TRUE(Eventually([&] { return Exists(At("Sub\\a.kra")); }));
        browser.WaitForRows({L"Sub", L"a.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("bytes", FileBytes(At("a.kra")));
}

TEST_F(BrowseDragTest, DraggedFolderMovesToAnotherDepot) {
    MakeFile("Sub\\inner.kra", "bytes");
    MakeFile("a.kra");
    Show([&](const OpenBrowser& browser) {
        EXPECT_TRUE(BeginDrag(browser, L"Sub"));
        const POINT place = PlaceOfDepot(browser, L"Team profiles");
        DragTo(browser, place);
        EXPECT_TRUE(IsDepotMarked(browser, L"Team profiles"));
        ReleaseAt(browser, place);
        browser.WaitForRows({L"a.kra"});
        EXPECT_FALSE(IsDepotMarked(browser, L"Team profiles"));
        EXPECT_TRUE(Eventually([&] { return browser.FoldersBelowSelected().empty(); }));
        browser.SelectDepot(L"Team profiles");
        browser.WaitForRows({L"Sub"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("bytes", FileBytes(folder_.At("Team\\Sub\\inner.kra")));
    EXPECT_FALSE(Exists(At("Sub")));
}

TEST_F(BrowseDragTest, AllSelectedEntriesAreDragged) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra");
    MakeFile("b.kra");
    dialog_->put_AllowMultipleSelection(1);
    Show([&](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.Press(VK_DOWN, VK_SHIFT);
        browser.WaitForSelection({L"a.kra", L"b.kra"});
        EXPECT_TRUE(BeginDrag(browser, L"b.kra"));
        ReleaseAt(browser, PlaceOfRow(browser, L"Sub"));
        browser.WaitForRows({L"Sub"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("Sub\\a.kra")));
    EXPECT_TRUE(Exists(At("Sub\\b.kra")));
}

TEST_F(BrowseDragTest, EscapeEndsTheDragAndNotTheDialog) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra");
    Show([&](const OpenBrowser& browser) {
        EXPECT_TRUE(BeginDrag(browser, L"a.kra"));
        const POINT place = PlaceOfRow(browser, L"Sub");
        DragTo(browser, place);
        browser.Press(VK_ESCAPE);
        EXPECT_TRUE(HasEnded(browser));
        EXPECT_FALSE(IsRowMarked(browser, L"Sub"));
        ReleaseAt(browser, place);
        browser.WaitForRows({L"Sub", L"a.kra"});
        EXPECT_TRUE(IsWindow(browser.Window()));
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("a.kra")));
}

TEST_F(BrowseDragTest, EntriesStayWhereNoFolderTakesThem) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra");
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRows({L"Sub", L"a.kra"});
        const POINT places[] = {PlaceBelowRows(browser), PlaceOfDepot(browser, L"Work profiles"),
                                PlaceOfRow(browser, L"Sub")};
        for (const POINT place : places) {
            EXPECT_TRUE(BeginDrag(browser, L"Sub"));
            DragTo(browser, place);
            EXPECT_FALSE(IsRowMarked(browser, L"Sub"));
            EXPECT_FALSE(IsDepotMarked(browser, L"Work profiles"));
            ReleaseAt(browser, place);
            EXPECT_TRUE(HasEnded(browser));
        }
        browser.WaitForRows({L"Sub", L"a.kra"});
        EXPECT_EQ(L"", browser.Text(CONTROL_MESSAGE));
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("Sub\\inner.kra")));
}

TEST_F(BrowseDragTest, ExistingFileIsReplacedOnlyAfterAYes) {
    MakeFile("Sub\\a.kra", "old");
    MakeFile("a.kra", "new");
    Show([&](const OpenBrowser& browser) {
        EXPECT_TRUE(BeginDrag(browser, L"a.kra"));
        ReleaseAt(browser, PlaceOfRow(browser, L"Sub"));
        AnswerQuestion(L"\"a.kra\" already exists.", IDNO);
        EXPECT_TRUE(Exists(At("a.kra")));
        EXPECT_EQ("old", FileBytes(At("Sub\\a.kra")));
        EXPECT_TRUE(BeginDrag(browser, L"a.kra"));
        ReleaseAt(browser, PlaceOfRow(browser, L"Sub"));
        AnswerQuestion(L"\"a.kra\" already exists.", IDYES);
        browser.WaitForRows({L"Sub"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("new", FileBytes(At("Sub\\a.kra")));
    EXPECT_FALSE(Exists(At("a.kra")));
}

TEST_F(BrowseDragTest, FolderDoesNotTakeThePlaceOfAnother) {
    MakeFile("Sub\\Mine\\one.kra");
    MakeFile("Mine\\two.kra");
    Show([&](const OpenBrowser& browser) {
        EXPECT_TRUE(BeginDrag(browser, L"Mine"));
        ReleaseAt(browser, PlaceOfRow(browser, L"Sub"));
        browser.WaitForMessage(L"\"Mine\" already exists.");
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("Mine\\two.kra")));
    EXPECT_FALSE(Exists(At("Sub\\Mine\\two.kra")));
}

TEST_F(BrowseDragTest, FileThatCannotBeMovedStaysAndIsNamed) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra", "bytes");
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"a.kra");
        const UniqueHandle held =
            OwnFile(CreateFileA(At("a.kra").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_TRUE(BeginDrag(browser, L"a.kra"));
        ReleaseAt(browser, PlaceOfRow(browser, L"Sub"));
        browser.WaitForMessage(L"\"a.kra\" could not be put there.");
        browser.WaitForRows({L"Sub", L"a.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("bytes", FileBytes(At("a.kra")));
    EXPECT_FALSE(Exists(At("Sub\\a.kra")));
}

TEST_F(BrowseDragTest, NothingIsDraggedWhereChangesAreNotOffered) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra");
    dialog_->put_AllowEditing(0);
    Show([&](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        const HWND list = browser.Control(CONTROL_LIST);
        NMLISTVIEW begun = {};
        begun.hdr = {list, CONTROL_LIST, static_cast<UINT>(LVN_BEGINDRAG)};
        SendMessageW(browser.Window(), WM_NOTIFY, CONTROL_LIST, reinterpret_cast<LPARAM>(&begun));
        EXPECT_FALSE(IsDragging(browser));
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("a.kra")));
}

TEST_F(BrowseDragTest, WhatWasFoundElsewhereIsNotDragged) {
    MakeFile("Sub\\found.kra");
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"Sub");
        browser.Focus(CONTROL_SEARCH);
        browser.Type(L"found");
        browser.SelectRow(L"found.kra");
        NMLISTVIEW begun = {};
        begun.hdr = {browser.Control(CONTROL_LIST), CONTROL_LIST, static_cast<UINT>(LVN_BEGINDRAG)};
        SendMessageW(browser.Window(), WM_NOTIFY, CONTROL_LIST, reinterpret_cast<LPARAM>(&begun));
        EXPECT_FALSE(IsDragging(browser));
        browser.Press(VK_ESCAPE);
    });
}

// OLE works in single-threaded apartments only.
TEST_F(BrowseDragTest, DialogOfTheMultithreadedApartmentDragsItsOwnEntriesAlone) {
    MakeFile("Sub\\inner.kra");
    MakeFile("a.kra");
    std::thread([this] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        {
            void* made = nullptr;
            EXPECT_EQ(S_OK,
                      library_.GetClassObject(CLSID_DepotBrowseDialog, IID_IClassFactory, &made));
            const UniqueCom<IClassFactory> factory(static_cast<IClassFactory*>(made));
            EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IDepotBrowseDialog, &made));
            const UniqueCom<IDepotBrowseDialog> dialog(static_cast<IDepotBrowseDialog*>(made));
            const DialogUser user(IsBrowser, [](const OpenDialog& shown) {
                const OpenBrowser browser(shown);
                EXPECT_TRUE(BeginDrag(browser, L"a.kra"));
                ReleaseAt(browser, PlaceOfRow(browser, L"Sub"));
                browser.WaitForRows({L"Sub"});
                EXPECT_EQ(nullptr, DropTargetOf(browser.Window()));
                browser.Press(VK_ESCAPE);
            });
            LONG result = kJunk;
            EXPECT_EQ(S_OK, dialog->ShowModal(&result));
        }
        CoUninitialize();
    }).join();
    EXPECT_TRUE(Exists(At("Sub\\a.kra")));
}

TEST_F(BrowseDragTest, ListScrollsWhileSomethingIsHeldAtItsEdges) {
    constexpr int kFolders = 60;
    for (int number = 0; number < kFolders; ++number) {
        folder_.MakeFolder("Work\\Sub" + std::to_string(number));
    }
    Show([&](const OpenBrowser& browser) {
        const HWND list = browser.Control(CONTROL_LIST);
        EXPECT_TRUE(BeginDrag(browser, L"Sub0"));
        const POINT top = PlaceOfRow(browser, L"Sub0");
        DragTo(browser, PlaceBelowRows(browser));
        EXPECT_TRUE(Eventually([&] { return ListView_GetTopIndex(list) > 3; }));
        DragTo(browser, top);
        EXPECT_TRUE(Eventually([&] { return ListView_GetTopIndex(list) == 0; }));
        browser.Press(VK_ESCAPE);
        EXPECT_TRUE(HasEnded(browser));
        browser.Press(VK_ESCAPE);
    });
}

}  // namespace
}  // namespace depot::test
