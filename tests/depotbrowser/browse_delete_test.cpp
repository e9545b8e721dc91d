// What the browse dialog says before it deletes, and where deleted files go.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "depotbrowser/browse_fixture.h"
// After the Windows headers.
#include <shlobj.h>
#include <shlwapi.h>

namespace depot::test {
namespace {

struct TaskMemory {
    void operator()(void* memory) const { CoTaskMemFree(memory); }
};
using UniqueItem = std::unique_ptr<ITEMIDLIST, TaskMemory>;

// The names of what lies in the recycle bin, as the shell shows them.
Names NamesInRecycleBin() {
    PIDLIST_ABSOLUTE place = nullptr;
    IShellFolder *desktop = nullptr, *bin = nullptr;
    IEnumIDList* list = nullptr;
    Names names;
    EXPECT_EQ(S_OK, SHGetSpecialFolderLocation(nullptr, CSIDL_BITBUCKET, &place));
    const UniqueItem ownedPlace(place);
    EXPECT_EQ(S_OK, SHGetDesktopFolder(&desktop));
    const UniqueCom<IShellFolder> ownedDesktop(desktop);
    EXPECT_EQ(S_OK, desktop->BindToObject(place, nullptr, IID_IShellFolder,
                                          reinterpret_cast<void**>(&bin)));
    const UniqueCom<IShellFolder> ownedBin(bin);
    EXPECT_EQ(S_OK, bin->EnumObjects(nullptr, SHCONTF_FOLDERS | SHCONTF_NONFOLDERS, &list));
    const UniqueCom<IEnumIDList> ownedList(list);
    PITEMID_CHILD item = nullptr;
    while (list->Next(1, &item, nullptr) == S_OK) {
        const UniqueItem ownedItem(item);
        STRRET name = {};
        wchar_t text[MAX_PATH] = {};
        EXPECT_EQ(S_OK, bin->GetDisplayNameOf(item, SHGDN_INFOLDER, &name));
        EXPECT_EQ(S_OK, StrRetToBufW(&name, item, text, MAX_PATH));
        names.emplace_back(text);
    }
    return names;
}

class BrowseDeleteTest : public BrowseTest {};

TEST_F(BrowseDeleteTest, QuestionAboutAFolderSaysHowMuchIsInIt) {
    MakeFile("Sub\\one.kra");
    MakeFile("Sub\\two.txt");
    MakeFile("Sub\\Deep\\three.kra");
    dialog_->put_FileType(64);
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"Sub");
        browser.Press(VK_DELETE);
        AnswerQuestion(
            L"delete \"Sub\"?\n\nFolders are deleted with everything in them. "
            L"Files: 3, folders: 1.\nYou can restore it from the recycle bin.",
            IDNO);
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("Sub\\Deep\\three.kra")));
}

TEST_F(BrowseDeleteTest, QuestionAboutVeryManyFoldersSaysThatAllGoes) {
    for (int number = 0; number < 1001; ++number) {
        folder_.MakeFolder("Work\\Sub\\" + std::to_string(number));
    }
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"Sub");
        browser.Press(VK_DELETE);
        AnswerQuestion(L"A folder is deleted with everything in it.", IDNO);
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseDeleteTest, QuestionAboutAFileIsAboutItAlone) {
    MakeFile("a.kra");
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.Press(VK_DELETE);
        AnswerQuestion(L"delete \"a.kra\"?\n\nYou can restore it", IDNO);
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseDeleteTest, EnterAnswersNo) {
    MakeFile("Sub\\inner.kra");
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"Sub");
        browser.Press(VK_DELETE);
        AnswerQuestionByEnter(L"delete \"Sub\"?");
        browser.WaitForRows({L"Sub"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("Sub\\inner.kra")));
}

TEST_F(BrowseDeleteTest, KeyThatIsPressedAgainAsksOnce) {
    MakeFile("a.kra");
    MakeFile("b.kra");
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.Press(VK_DELETE);
        browser.Press(VK_DELETE);
        AnswerQuestion(L"delete \"a.kra\"?", IDYES);
        browser.WaitForRows({L"b.kra"});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(Exists(At("b.kra")));
}

TEST_F(BrowseDeleteTest, RowBesideTheDeletedOneIsSelectedAndNotChosen) {
    for (const char* name : {"a.kra", "b.kra", "c.kra"}) MakeFile(name);
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"b.kra");
        EXPECT_EQ(L"b.kra", browser.Text(CONTROL_NAME));
        browser.Press(VK_DELETE);
        AnswerQuestion(L"delete \"b.kra\"?", IDYES);
        EXPECT_TRUE(browser.WaitForRows({L"a.kra", L"c.kra"}));
        EXPECT_TRUE(browser.WaitForSelection({L"c.kra"}));
        EXPECT_TRUE(browser.WaitForText(CONTROL_NAME, L""));
        browser.Press(VK_DELETE);
        AnswerQuestion(L"delete \"c.kra\"?", IDYES);
        EXPECT_TRUE(browser.WaitForSelection({L"a.kra"}));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseDeleteTest, TypedNameStaysWhenASelectedFileIsDeleted) {
    for (const char* name : {"a.kra", "b.kra"}) MakeFile(name);
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        browser.TypeName(L"typed.kra");
        browser.Focus(CONTROL_LIST);
        browser.Press(VK_DELETE);
        AnswerQuestion(L"delete \"a.kra\"?", IDYES);
        EXPECT_TRUE(browser.WaitForSelection({L"b.kra"}));
        EXPECT_EQ(L"typed.kra", browser.Text(CONTROL_NAME));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseDeleteTest, DeletedFilesAndFoldersLieInTheRecycleBin) {
    MakeFile("Kept folder\\inner.kra");
    MakeFile("kept file.kra");
    dialog_->put_AllowMultipleSelection(1);
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"kept file.kra");
        browser.Press('A', VK_CONTROL);
        browser.WaitForSelection({L"Kept folder", L"kept file.kra"});
        browser.Press(VK_DELETE);
        AnswerQuestion(L"delete these 2 items?", IDYES);
        browser.WaitForRows({});
        browser.Press(VK_ESCAPE);
    });
    EXPECT_THAT(NamesInRecycleBin(), testing::IsSupersetOf({testing::StartsWith(L"Kept folder"),
                                                            testing::StartsWith(L"kept file")}));
}

}  // namespace
}  // namespace depot::test
