// Files that are dropped onto the browse dialog from the desktop.
#include <gtest/gtest.h>

#include "depotbrowser/browse_fixture.h"
#include "depotbrowser/drag_user.h"
#include "platform/wide_text.h"

namespace depot::test {
namespace {

class BrowseDropTest : public BrowseTest {
protected:
    BrowseDropTest() { desktop_ = folder_.MakeFolder("Desktop"); }

    // Makes a file on the desktop and returns its path.
    std::wstring OnDesktop(const std::string& name, const std::string& bytes = "new") const {
        MakeFileIn("Desktop", name, bytes);
        return WideFromAnsi(desktop_ + "\\" + name);
    }
    std::string Bytes(const std::string& name) const { return FileBytes(At(name)); }

    std::string desktop_;
};

TEST_F(BrowseDropTest, DroppedFilesAreCopiedIntoTheShownFolder) {
    MakeFile("old.kra");
    DraggedFiles files({OnDesktop("a.kra"), OnDesktop("b.kra")});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"old.kra");
        EXPECT_EQ(DROPEFFECT_COPY, DropAt(browser, files, PlaceBelowRows(browser)));
        browser.WaitForRows({L"a.kra", L"b.kra", L"old.kra"});
        browser.WaitForSelection({L"a.kra"});
        // What arrived is no choice of the user.
        EXPECT_EQ(L"", browser.Text(CONTROL_NAME));
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("new", Bytes("a.kra"));
    EXPECT_TRUE(Exists(desktop_ + "\\a.kra"));
    EXPECT_TRUE(Exists(desktop_ + "\\b.kra"));
}

TEST_F(BrowseDropTest, FolderOnWhichFilesAreDroppedTakesThem) {
    MakeFile("Sub\\inner.kra");
    DraggedFiles files({OnDesktop("a.kra")});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"Sub");
        const POINT row = PlaceOfRow(browser, L"Sub");
        HoverAt(browser, files, row, [&] { EXPECT_TRUE(IsRowMarked(browser, L"Sub")); });
        EXPECT_FALSE(IsRowMarked(browser, L"Sub"));
        EXPECT_EQ(DROPEFFECT_COPY, DropAt(browser, files, row));
        EXPECT_TRUE(Eventually([&] { return Exists(At("Sub\\a.kra")); }));
        const POINT depot = PlaceOfDepot(browser, L"Team profiles");
        HoverAt(browser, files, depot,
                [&] { EXPECT_TRUE(IsDepotMarked(browser, L"Team profiles")); });
        EXPECT_FALSE(IsDepotMarked(browser, L"Team profiles"));
        EXPECT_EQ(DROPEFFECT_COPY, DropAt(browser, files, depot));
        EXPECT_TRUE(Eventually([&] { return Exists(folder_.At("Team\\a.kra")); }));
        browser.WaitForRows({L"Sub"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_FALSE(Exists(At("a.kra")));
}

TEST_F(BrowseDropTest, DroppedFolderIsStoredWithAllItHolds) {
    OnDesktop("Tree\\one.kra");
    OnDesktop("Tree\\Deep\\two.kra", "deep");
    DraggedFiles files({WideFromAnsi(desktop_ + "\\Tree")});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForMessage(L"nothing to show");
        EXPECT_EQ(DROPEFFECT_COPY, DropAt(browser, files, PlaceBelowRows(browser)));
        browser.WaitForRows({L"Tree"});
        EXPECT_TRUE(Eventually([&] { return browser.FoldersBelowSelected() == Names{L"Tree"}; }));
        // A second time the folder is there: nothing goes into it.
        OnDesktop("Tree\\Deep\\two.kra", "other");
        DropAt(browser, files, PlaceBelowRows(browser));
        browser.WaitForMessage(L"\"Tree\" already exists.");
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("deep", Bytes("Tree\\Deep\\two.kra"));
    EXPECT_TRUE(Exists(At("Tree\\one.kra")));
}

TEST_F(BrowseDropTest, ExistingFileIsReplacedOnlyAfterAYes) {
    MakeFile("a.kra", "old");
    DraggedFiles files({OnDesktop("a.kra")});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"a.kra");
        const POINT place = PlaceBelowRows(browser);
        DropAt(browser, files, place);
        AnswerQuestionByEnter(L"\"a.kra\" already exists.");
        DropAt(browser, files, place);
        AnswerQuestion(L"\"a.kra\" already exists.", IDCANCEL);
        EXPECT_EQ("old", Bytes("a.kra"));
        DropAt(browser, files, place);
        AnswerQuestion(L"\"a.kra\" already exists.", IDYES);
        browser.WaitForSelection({L"a.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("new", Bytes("a.kra"));
}

TEST_F(BrowseDropTest, NoStoresTheOthersAndCancelNone) {
    MakeFile("a.kra", "old");
    MakeFile("b.kra", "old");
    DraggedFiles files({OnDesktop("a.kra"), OnDesktop("b.kra"), OnDesktop("c.kra")});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRows({L"a.kra", L"b.kra"});
        const POINT place = PlaceBelowRows(browser);
        DropAt(browser, files, place);
        AnswerQuestion(L"2 of these files already exist.", IDCANCEL);
        browser.WaitForRows({L"a.kra", L"b.kra"});
        EXPECT_FALSE(Exists(At("c.kra")));
        DropAt(browser, files, place);
        AnswerQuestion(L"2 of these files already exist.", IDNO);
        browser.WaitForRows({L"a.kra", L"b.kra", L"c.kra"});
        EXPECT_EQ(L"", browser.Text(CONTROL_MESSAGE));
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("old", Bytes("a.kra"));
    EXPECT_EQ("old", Bytes("b.kra"));
}

TEST_F(BrowseDropTest, FileOfAnotherTypeIsRefusedInWords) {
    dialog_->put_FileType(64);
    DraggedFiles files({OnDesktop("%s%n.txt"), OnDesktop("b.doc"), OnDesktop("c.kra")});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForMessage(L"nothing to show");
        DropAt(browser, files, PlaceBelowRows(browser));
        browser.WaitForMessage(
            L"\"%s%n.txt\" is not stored here: only files that match *.kra are shown. "
            L"Others that stayed where they are: 1.");
        browser.WaitForRows({L"c.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_FALSE(Exists(At("%s%n.txt")));
    EXPECT_FALSE(Exists(At("b.doc")));
}

TEST_F(BrowseDropTest, FolderIsPutNeitherIntoItselfNorBelow) {
    MakeFile("Sub\\Deep\\inner.kra");
    DraggedFiles files({WideFromAnsi(At("Sub"))});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"Sub");
        DropAt(browser, files, PlaceOfRow(browser, L"Sub"));
        browser.WaitForMessage(L"\"Sub\" cannot be put into itself.");
        browser.DoubleClickRow(L"Sub");
        browser.WaitForRow(L"Deep");
        DropAt(browser, files, PlaceOfRow(browser, L"Deep"));
        browser.WaitForMessage(L"\"Sub\" cannot be put into itself.");
        browser.Press(VK_ESCAPE);
    });
    EXPECT_FALSE(Exists(At("Sub\\Sub")));
    EXPECT_FALSE(Exists(At("Sub\\Deep\\Sub")));
}

TEST_F(BrowseDropTest, FileThatIsThereAlreadyStays) {
    MakeFile("a.kra", "old");
    DraggedFiles files({WideFromAnsi(At("a.kra"))});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"a.kra");
        DropAt(browser, files, PlaceBelowRows(browser));
        browser.WaitForMessage(L"\"a.kra\" already exists.");
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ("old", Bytes("a.kra"));
}

// Half of a character is in no code page.
TEST_F(BrowseDropTest, NameThatTheCodePageCannotHoldIsRefusedInWords) {
    DraggedFiles files({WideFromAnsi(desktop_) + L"\\a\xD800.kra", OnDesktop("b.kra")});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForMessage(L"nothing to show");
        DropAt(browser, files, PlaceBelowRows(browser));
        browser.WaitForMessage(L"cannot be stored: its name or its folder has characters");
        browser.WaitForRows({L"b.kra"});
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseDropTest, NamesThatAreNoneAreRefusedInWords) {
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"C:\\", L"is not a valid name."},
        {WideFromAnsi(desktop_) + L"\\gone.kra", L"\"gone.kra\" could not be put there."},
        {L"gone.kra", L"\"gone.kra\" could not be put there."},
        {L"<Nowhere>\\a.kra", L"\"a.kra\" could not be put there."},
        {WideFromAnsi(desktop_) + L"\\..", L"is not a valid name."},
        {WideFromAnsi(desktop_) + L"\\" + std::wstring(300, L'x'), L"is not a valid name."},
        {std::wstring(50000, L'\\'), L"is not a valid name."},
    };
    Show([&](const OpenBrowser& browser) {
        browser.WaitForMessage(L"nothing to show");
        for (const auto& [path, words] : rows) {
            SCOPED_TRACE(testing::PrintToString(path.substr(0, 100)));
            DraggedFiles files({path});
            DropAt(browser, files, PlaceBelowRows(browser));
            browser.WaitForMessage(words);
        }
        EXPECT_EQ(Names{}, browser.Rows());
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseDropTest, NothingIsTakenWhereChangesAreNotOffered) {
    MakeFile("Sub\\inner.kra");
    DraggedFiles files({OnDesktop("a.kra")});
    dialog_->put_AllowFileOperations(0);
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"Sub");
        const POINT row = PlaceOfRow(browser, L"Sub");
        EXPECT_EQ(DROPEFFECT_NONE, DropAt(browser, files, row));
        EXPECT_EQ(DROPEFFECT_NONE, DropAt(browser, files, PlaceBelowRows(browser)));
        HoverAt(browser, files, row, [&] { EXPECT_FALSE(IsRowMarked(browser, L"Sub")); });
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ(0, files.Requests());
    EXPECT_FALSE(Exists(At("Sub\\a.kra")));
}

TEST_F(BrowseDropTest, NothingIsTakenBesideListAndTreeOrWithoutFiles) {
    DraggedFiles files({OnDesktop("a.kra")});
    DraggedFiles nothing{std::string()};
    Show([&](const OpenBrowser& browser) {
        browser.WaitForMessage(L"nothing to show");
        RECT field = {};
        GetWindowRect(browser.Control(CONTROL_NAME), &field);
        EXPECT_EQ(DROPEFFECT_NONE, DropAt(browser, files, {field.left + 3, field.top + 3}));
        const POINT place = PlaceBelowRows(browser);
        EXPECT_EQ(DROPEFFECT_NONE, DropAt(browser, nothing, place));
        // The other program keeps its files: only copies are made.
        EXPECT_EQ(DROPEFFECT_NONE, DropAt(browser, files, place, DROPEFFECT_MOVE));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseDropTest, BlocksThatAreNoListsOfFilesDoNothing) {
    const std::string whole = FileBlock({OnDesktop("a.kra")});
    Show([&](const OpenBrowser& browser) {
        browser.WaitForMessage(L"nothing to show");
        for (const std::size_t size : {std::size_t{1}, std::size_t{19}, std::size_t{20},
                                       std::size_t{30}, whole.size() - 4}) {
            DraggedFiles cut(whole.substr(0, size));
            DropAt(browser, cut, PlaceBelowRows(browser));
        }
        DraggedFiles junk(std::string(5000, '\xFF'));
        DropAt(browser, junk, PlaceBelowRows(browser));
        DraggedFiles last({OnDesktop("last.kra")});
        DropAt(browser, last, PlaceBelowRows(browser));
        browser.WaitForRows({L"last.kra"});
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseDropTest, TargetThatAnotherProgramKeepsTakesNothingAfterTheEnd) {
    IDropTarget* kept = nullptr;
    DraggedFiles files({OnDesktop("a.kra")});
    Show([&](const OpenBrowser& browser) {
        EXPECT_TRUE(WaitForDropTarget(browser.Window()));
        CallOnThreadOf(browser.Window(), [&] {
            kept = DropTargetOf(browser.Window());
            kept->AddRef();
        });
        browser.Press(VK_ESCAPE);
    });
    const UniqueCom<IDropTarget> owned(kept);
    DWORD effect = kOffered;
    EXPECT_EQ(S_OK, kept->DragEnter(&files, 0, {}, &effect));
    EXPECT_EQ(DWORD{DROPEFFECT_NONE}, effect);
    effect = kOffered;
    EXPECT_EQ(S_OK, kept->Drop(&files, 0, {}, &effect));
    EXPECT_EQ(DWORD{DROPEFFECT_NONE}, effect);
    EXPECT_EQ(E_POINTER, kept->DragOver(0, {}, nullptr));
    EXPECT_EQ(S_OK, kept->DragLeave());
    EXPECT_EQ(E_POINTER, kept->QueryInterface(IID_IDropTarget, nullptr));
}

}  // namespace
}  // namespace depot::test
