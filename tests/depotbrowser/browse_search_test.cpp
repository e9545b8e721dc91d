// Searching while one types, and the names that are offered.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

constexpr int kFolderColumn = 4;

class BrowseSearchTest : public BrowseTest {
protected:
    BrowseSearchTest() {
        dialog_->put_RememberSize(0);
        MakeFile("One\\Two\\plan deep.kra");
        MakeFile("Plan\\x.kra");
        MakeFile("old PLAN.kra");
        MakeFile("other.kra");
    }

    // Types into the search field what is searched for.
    static void Search(const OpenBrowser& browser, const std::wstring& text) {
        browser.WaitForRow(L"other.kra");
        browser.Press('E', VK_MENU);
        browser.WaitForFocus(CONTROL_SEARCH);
        browser.Type(text);
        browser.WaitForText(CONTROL_SEARCH, text);
    }

    static std::wstring FolderCell(const OpenBrowser& browser, int row) {
        wchar_t text[300] = {};
        LVITEMW item = {};
        item.iSubItem = kFolderColumn;
        item.pszText = text;
        item.cchTextMax = static_cast<int>(std::size(text));
        SendMessageW(browser.Control(CONTROL_LIST), LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&item));
        return text;
    }
};

TEST_F(BrowseSearchTest, TypingShowsWhatMatchesInTheFolderAndThenInTheDepot) {
    Show([](const OpenBrowser& browser) {
        Search(browser, L"plan");
        browser.WaitForRows({L"Plan", L"old PLAN.kra", L"plan deep.kra"});
        EXPECT_EQ(L"", FolderCell(browser, 0));
        EXPECT_EQ(L"One\\Two\\", FolderCell(browser, 2));
        browser.WaitForText(CONTROL_STATUS, L"Items: 3");
        browser.Type(L" deep");
        browser.WaitForRows({L"plan deep.kra"});
        browser.Click(IDCANCEL);
    });
}

TEST_F(BrowseSearchTest, FoundFileIsChosenWhereItLies) {
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  Search(browser, L"deep");
                  browser.WaitForRows({L"plan deep.kra"});
                  browser.Press(VK_RETURN);
                  browser.WaitForFocus(CONTROL_LIST);
                  browser.WaitForSelection({L"plan deep.kra"});
                  browser.WaitForText(CONTROL_NAME, L"plan deep.kra");
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\One\\Two\\plan deep.kra", ChosenPath());
}

TEST_F(BrowseSearchTest, EscapeEndsTheSearchBeforeItCancels) {
    Show([](const OpenBrowser& browser) {
        Search(browser, L"deep");
        browser.WaitForRows({L"plan deep.kra"});
        browser.Press(VK_ESCAPE);
        browser.WaitForRows({L"One", L"Plan", L"old PLAN.kra", L"other.kra"});
        browser.WaitForText(CONTROL_SEARCH, L"");
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseSearchTest, FolderThatIsOpenedEndsTheSearch) {
    Show([](const OpenBrowser& browser) {
        Search(browser, L"two");
        browser.DoubleClickRow(L"Two");
        browser.WaitForRows({L"plan deep.kra"});
        browser.WaitForLocation(L"Work profiles\\One\\Two");
        browser.WaitForText(CONTROL_SEARCH, L"");
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseSearchTest, NothingFoundIsSaid) {
    Show([](const OpenBrowser& browser) {
        Search(browser, L"nowhere");
        browser.WaitForMessage(L"Nothing in this depot contains \"nowhere\".");
        browser.WaitForRows({});
        browser.Click(IDCANCEL);
    });
}

TEST_F(BrowseSearchTest, FilesOfOtherTypesAreNotFound) {
    MakeFile("One\\deep.krv");
    dialog_->put_FileType(64);
    Show([](const OpenBrowser& browser) {
        Search(browser, L"deep");
        browser.WaitForRows({L"plan deep.kra"});
        browser.Click(IDCANCEL);
    });
}

TEST_F(BrowseSearchTest, FoundFilesAreChangedInTheirOwnFolderOnly) {
    Show([](const OpenBrowser& browser) {
        Search(browser, L"deep");
        browser.SelectRow(L"plan deep.kra");
        EXPECT_FALSE(browser.IsUsable(CONTROL_RENAME) || browser.IsUsable(CONTROL_DELETE) ||
                     browser.IsUsable(CONTROL_MAKE_COPY));
        browser.Press(VK_F10, VK_SHIFT);
        EXPECT_TRUE(Eventually([] { return FindWindowW(L"#32768", nullptr) != nullptr; }));
        browser.Press('G');
        browser.WaitForLocation(L"Work profiles\\One\\Two");
        browser.WaitForSelection({L"plan deep.kra"});
        EXPECT_TRUE(browser.IsUsable(CONTROL_RENAME));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseSearchTest, RefreshRepeatsTheSearch) {
    Show([this](const OpenBrowser& browser) {
        Search(browser, L"deep");
        browser.WaitForRows({L"plan deep.kra"});
        MakeFile("Plan\\deep 2.kra");
        browser.Press(VK_F5);
        browser.WaitForRow(L"deep 2.kra");
        browser.Click(IDCANCEL);
    });
}

TEST_F(BrowseSearchTest, LettersOutsideAsciiMatchInEitherCase) {
    MakeFile("B\xDCRO.kra");
    Show([](const OpenBrowser& browser) {
        Search(browser, L"b\xFCro");
        browser.WaitForRows({L"B\xDCRO.kra"});
        browser.Click(IDCANCEL);
    });
}

// How long the window took at most to answer, in milliseconds, until the list had that many rows.
LONGLONG LongestWait(const OpenBrowser& browser, int rows) {
    LARGE_INTEGER perSecond = {}, before = {}, after = {};
    QueryPerformanceFrequency(&perSecond);
    LONGLONG longest = 0;
    const auto probe = [&] {
        QueryPerformanceCounter(&before);
        SendMessageW(browser.Window(), WM_NULL, 0, 0);
        QueryPerformanceCounter(&after);
        longest = std::max(longest, after.QuadPart - before.QuadPart);
        return ListView_GetItemCount(browser.Control(CONTROL_LIST)) == rows;
    };
    EXPECT_TRUE(Eventually(probe)) << rows << " rows";
    // What follows from it is done by then, too.
    constexpr int kMoreProbes = 100;
    for (int more = 0; more < kMoreProbes; ++more, Sleep(2)) EXPECT_TRUE(probe());
    return longest * 1000 / perSecond.QuadPart;
}

// Times are told and not judged: they are the machine's as well.
void Report(const char* what, LONGLONG milliseconds) {
    std::cout << "[ MEASURED ] longest wait for the window while " << what << ": " << milliseconds
              << " ms\n";
}

TEST_F(BrowseSearchTest, TenThousandFilesAreListedSearchedAndSorted) {
    constexpr int kFiles = 10000, kWithNine = 3439;  // numbers of four digits that have a 9
    for (int number = 0; number < kFiles; ++number) {
        const std::string digits = std::to_string(kFiles + number).substr(1);
        folder_.MakeFile("Team\\" + digits + ".kra", "");
    }
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"other.kra");
        browser.SelectDepot(L"Team profiles");
        Report("listing", LongestWait(browser, kFiles));
        browser.Focus(CONTROL_SEARCH);
        browser.Type(L"9");
        Report("searching", LongestWait(browser, kWithNine));
        browser.ClickHeader(3);
        Report("sorting", LongestWait(browser, kWithNine));
        browser.WaitForText(CONTROL_STATUS, L"Items: 3439");
        browser.Click(IDCANCEL);
    });
}

// The list of names over the dialog.
HWND Suggestions(const OpenBrowser& browser) {
    for (HWND list = nullptr;
         (list = FindWindowExW(nullptr, list, L"ListBox", nullptr)) != nullptr;) {
        if (GetWindow(list, GW_OWNER) == browser.Window() && IsWindowVisible(list)) return list;
    }
    return nullptr;
}

TEST_F(BrowseSearchTest, NamesThatBeginAsTypedAreOffered) {
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"other.kra");
                  browser.TypeName(L"o");
                  EXPECT_TRUE(Eventually([&] { return Suggestions(browser) != nullptr; }));
                  EXPECT_EQ(3, SendMessageW(Suggestions(browser), LB_GETCOUNT, 0, 0));
                  browser.Type(L"T");
                  EXPECT_TRUE(Eventually(
                      [&] { return SendMessageW(Suggestions(browser), LB_GETCOUNT, 0, 0) == 1; }));
                  browser.Press(VK_DOWN);
                  browser.WaitForText(CONTROL_NAME, L"other.kra");
                  browser.Press(VK_DOWN);
                  browser.WaitForText(CONTROL_NAME, L"oT");
                  browser.Press(VK_UP);
                  browser.WaitForText(CONTROL_NAME, L"other.kra");
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\other.kra", ChosenPath());
}

TEST_F(BrowseSearchTest, EscapeTakesTheOfferBackBeforeItCancels) {
    Show([](const OpenBrowser& browser) {
        browser.WaitForRow(L"other.kra");
        browser.TypeName(L"ot");
        browser.Press(VK_DOWN);
        browser.WaitForText(CONTROL_NAME, L"other.kra");
        browser.Press(VK_ESCAPE);
        browser.WaitForText(CONTROL_NAME, L"ot");
        EXPECT_TRUE(Eventually([&] { return Suggestions(browser) == nullptr; }));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseSearchTest, OfferedNameIsTakenByAClick) {
    Show([](const OpenBrowser& browser) {
        browser.WaitForRow(L"other.kra");
        browser.TypeName(L"ot");
        EXPECT_TRUE(Eventually([&] { return Suggestions(browser) != nullptr; }));
        for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP}) {
            PostMessageW(Suggestions(browser), message, 0, MAKELPARAM(3, 3));
        }
        browser.WaitForText(CONTROL_NAME, L"other.kra");
        EXPECT_TRUE(Eventually([&] { return Suggestions(browser) == nullptr; }));
        browser.WaitForFocus(CONTROL_NAME);
        browser.Press(VK_ESCAPE);
    });
}

}  // namespace
}  // namespace depot::test
