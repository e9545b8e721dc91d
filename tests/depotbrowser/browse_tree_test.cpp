// The tree of the browse dialog with very many folders.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <iostream>

#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

// What reaches a tree control while this object lives.
class TreeMessages {
public:
    explicit TreeMessages(HWND tree) : tree_(tree) {
        insertions = sorted = others = 0;
        own_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(tree, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Count)));
    }
    ~TreeMessages() { SetWindowLongPtrW(tree_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(own_)); }
    TreeMessages(const TreeMessages&) = delete;
    TreeMessages& operator=(const TreeMessages&) = delete;

    static inline std::atomic<int> insertions, sorted, others;

private:
    static LRESULT CALLBACK Count(HWND window, UINT message, WPARAM first, LPARAM second) {
        // The probes ask for the number of items.
        const bool isOther = message >= TV_FIRST && message < TV_FIRST + 0x100 &&
                             message != TVM_GETCOUNT && message != TVM_INSERTITEMW;
        if (isOther) ++others;
        if (message == TVM_INSERTITEMW) {
            ++insertions;
            const auto& insertion = *reinterpret_cast<const TVINSERTSTRUCTW*>(second);
            if (insertion.hInsertAfter == TVI_SORT) ++sorted;
        }
        return CallWindowProcW(own_, window, message, first, second);
    }

    static inline WNDPROC own_ = nullptr;
    HWND tree_;
};

class BrowseTreeTest : public BrowseTest {
protected:
    static int ChildCount(const OpenBrowser& browser) {
        return static_cast<int>(SendMessageW(browser.Control(CONTROL_TREE), TVM_GETCOUNT, 0, 0));
    }

    // How long the window took at most to answer until the tree had that many items, and after.
    static LONGLONG LongestWait(const OpenBrowser& browser, int items) {
        LARGE_INTEGER perSecond = {}, before = {}, after = {};
        QueryPerformanceFrequency(&perSecond);
        LONGLONG longest = 0;
        const auto probe = [&] {
            QueryPerformanceCounter(&before);
            SendMessageW(browser.Window(), WM_NULL, 0, 0);
            QueryPerformanceCounter(&after);
            longest = std::max(longest, after.QuadPart - before.QuadPart);
            return ChildCount(browser) == items;
        };
        EXPECT_TRUE(Eventually(probe)) << ChildCount(browser) << " items";
        constexpr int kMoreProbes = 100;
        for (int more = 0; more < kMoreProbes; ++more, Sleep(2)) probe();
        return longest * 1000 / perSecond.QuadPart;
    }
};

TEST_F(BrowseTreeTest, FoldersStandInTheOrderOfTheList) {
    for (const char* name : {"b", "a10", "a9", "A1", "c"})
        folder_.MakeFolder(std::string("Work\\") + name);
    Show([this](const OpenBrowser& browser) {
        const Names first = {L"A1", L"a9", L"a10", L"b", L"c"};
        browser.WaitForRows(first);
        EXPECT_EQ(first, browser.FoldersBelowSelected());
        folder_.MakeFolder("Work\\a2");
        RemoveDirectoryA(At("b").c_str());
        browser.Press(VK_F5);
        const Names then = {L"A1", L"a2", L"a9", L"a10", L"c"};
        browser.WaitForRows(then);
        EXPECT_TRUE(Eventually([&] { return browser.FoldersBelowSelected() == then; }));
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseTreeTest, FoldersOnTheWayStandInThatOrderToo) {
    for (const char* name : {"a10", "a9"}) folder_.MakeFolder(std::string("Work\\") + name);
    MakeFile("a9\\Deep\\x.kra");
    dialog_->put_InitialFileName(Bstr(L"<Work>\\a9\\Deep\\x.kra").Get());
    Show([](const OpenBrowser& browser) {
        browser.WaitForRow(L"x.kra");
        EXPECT_EQ(L"Deep", browser.SelectedInTree());
        browser.Press(VK_UP, VK_MENU);
        browser.WaitForRows({L"Deep"});
        browser.Press(VK_UP, VK_MENU);
        browser.WaitForRows({L"a9", L"a10"});
        EXPECT_TRUE(Eventually([&] {
            return browser.FoldersBelowSelected() == Names{L"a9", L"a10"};
        }));
        browser.Press(VK_ESCAPE);
    });
}

// An insertion that makes the control look for its place costs as much as there are folders.
TEST_F(BrowseTreeTest, FiveThousandFoldersTakeOneStepEach) {
    constexpr int kFolders = 5000, kDepots = 2, kOthers = 200;
    for (int number = 0; number < kFolders; ++number) {
        folder_.MakeFolder("Team\\Folder " + std::to_string(number));
    }
    MakeFile("a.kra");
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"a.kra");
        const TreeMessages messages(browser.Control(CONTROL_TREE));
        browser.SelectDepot(L"Team profiles");
        const LONGLONG longest = LongestWait(browser, kFolders + kDepots);
        std::cout << "[ MEASURED ] longest wait for the window while 5,000 folders of one folder "
                  << "came into the tree: " << longest << " ms\n";
        EXPECT_EQ(kFolders, messages.insertions);
        EXPECT_EQ(0, messages.sorted);
        EXPECT_LT(messages.others, kOthers);
        browser.Press(VK_F5);
        browser.WaitForText(CONTROL_STATUS, L"Items: 5000");
        EXPECT_EQ(kFolders, messages.insertions);
        EXPECT_LT(messages.others, 2 * kOthers);
        browser.Press(VK_ESCAPE);
    });
}

}  // namespace
}  // namespace depot::test
