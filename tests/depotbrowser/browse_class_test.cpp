// The browse dialog as an object, and as a window among others.
#include <gtest/gtest.h>

#include <thread>

#include "depotbrowser/appearance.h"
#include "depotbrowser/browse_fixture.h"
#include "platform/registry_key.h"

namespace depot::test {
namespace {

constexpr char kBrowserKey[] = "Software\\Quillon\\Farrow\\13.00\\DepotBrowser";

// A window that can own the dialog, and the requests for help that it received.
class Owner {
public:
    Owner()
        : window_(CreateWindowW(L"STATIC", L"Owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300,
                                200, nullptr, nullptr, nullptr, nullptr)) {
        helpMessage = RegisterWindowMessageW(L"commdlg_help");
        topic = 0;
        before = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Owner::Receive)));
    }
    ~Owner() {
        if (IsWindow(window_)) DestroyWindow(window_);
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    HWND Get() const { return window_; }
    LONG Handle() const { return HandleToLong(window_); }

    static inline std::atomic<LPARAM> topic = 0;
    static inline std::atomic<WPARAM> asker = 0;

private:
    static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM first, LPARAM second) {
        if (message == helpMessage) {
            asker = first;
            topic = second;
        }
        return CallWindowProcW(before, window, message, first, second);
    }

    static inline UINT helpMessage = 0;
    static inline WNDPROC before = nullptr;
    HWND window_;
};

using BrowseClassTest = BrowseTest;

TEST_F(BrowseClassTest, ReservedOperationsSucceedAndDoNothing) {
    IDepotBrowseDialog3& dialog = *dialog_;
    for (const HRESULT result :
         {dialog.Reserved8(), dialog.Reserved13(), dialog.Reserved14(), dialog.Reserved16(),
          dialog.Reserved19(), dialog.Reserved20(), dialog.Reserved21(), dialog.Reserved22(),
          dialog.Reserved23(), dialog.Reserved25(), dialog.Reserved27(), dialog.Reserved29(),
          dialog.Reserved31(), dialog.Reserved33(), dialog.Reserved35()}) {
        EXPECT_EQ(S_OK, result);
    }
}

TEST_F(BrowseClassTest, NullOutputsAreRefusedAndNullTextsAreEmpty) {
    EXPECT_EQ(E_POINTER, dialog_->ShowModal(nullptr));
    EXPECT_EQ(E_POINTER, dialog_->get_ChosenPath(nullptr));
    EXPECT_EQ(E_POINTER, dialog_->get_ChosenPaths(nullptr));
    EXPECT_EQ(S_OK, dialog_->put_InitialFileName(nullptr));
    EXPECT_EQ(S_OK, dialog_->put_ResourceFolder(nullptr));
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  EXPECT_EQ(L"", browser.Text(CONTROL_NAME));
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseClassTest, BeforeAChoiceThereIsNoPath) {
    EXPECT_EQ(L"", ChosenPath());
    EXPECT_EQ(Names{}, ChosenPaths());
}

TEST_F(BrowseClassTest, F1AndTheHelpButtonNotifyTheOwner) {
    const Owner owner;
    dialog_->put_OwnerWindow(owner.Handle());
    dialog_->put_HelpTopic(4711);
    HWND shown = nullptr;
    Show([&](const OpenBrowser& browser) {
        shown = browser.Window();
        EXPECT_TRUE(browser.IsShown(CONTROL_HELP));
        EXPECT_FALSE(IsWindowEnabled(owner.Get()));
        browser.Press(VK_F1);
        EXPECT_TRUE(Eventually([] { return Owner::topic == 4711; }));
        Owner::topic = 0;
        browser.Click(CONTROL_HELP);
        EXPECT_TRUE(Eventually([] { return Owner::topic == 4711; }));
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ(reinterpret_cast<WPARAM>(shown), Owner::asker);
    EXPECT_TRUE(IsWindowEnabled(owner.Get()));
}

TEST_F(BrowseClassTest, WithoutATopicThereIsNoHelp) {
    const Owner owner;
    dialog_->put_OwnerWindow(owner.Handle());
    Show([](const OpenBrowser& browser) {
        EXPECT_FALSE(browser.IsShown(CONTROL_HELP));
        browser.Press(VK_F1);
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ(0, Owner::topic);
}

TEST_F(BrowseClassTest, OwnerThatIsGoneDoesNotKeepTheDialogAway) {
    LONG closed = 0;
    {
        const Owner owner;
        closed = owner.Handle();
    }
    dialog_->put_OwnerWindow(closed);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) { browser.Press(VK_ESCAPE); }));
}

TEST_F(BrowseClassTest, OwnerThatIsDestroyedWhileTheDialogIsOpenCancels) {
    const Owner owner;
    dialog_->put_OwnerWindow(owner.Handle());
    EXPECT_EQ(kNotConfirmed,
              Show([&](const OpenBrowser&) { PostMessageW(owner.Get(), WM_CLOSE, 0, 0); }));
}

TEST_F(BrowseClassTest, SizeIsRememberedUnlessTheClientDoesNotWantIt) {
    const ScratchKey size(HKEY_CURRENT_USER, kBrowserKey);
    const auto widthShown = [this] {
        LONG width = 0;
        Show([&](const OpenBrowser& browser) {
            RECT area = {};
            GetWindowRect(browser.Window(), &area);
            width = area.right - area.left;
            browser.Press(VK_ESCAPE);
        });
        return width;
    };
    const LONG first = widthShown();
    Show([&](const OpenBrowser& browser) {
        SetWindowPos(browser.Window(), nullptr, 0, 0, static_cast<int>(first) + 60, 500,
                     SWP_NOMOVE | SWP_NOZORDER);
        browser.Press(VK_ESCAPE);
    });
    EXPECT_EQ(first + 60, widthShown());
    dialog_->put_RememberSize(0);
    EXPECT_EQ(first, widthShown());
}

TEST_F(BrowseClassTest, RememberedSizeThatNoScreenHasIsMadeToFit) {
    const ScratchKey size(HKEY_CURRENT_USER, kBrowserKey);
    for (const DWORD side : {1u, 30000u, 0xFFFFFFFFu}) {
        size.Dword("", "Width", side);
        size.Dword("", "Height", side);
        Show([](const OpenBrowser& browser) {
            RECT area = {};
            GetWindowRect(browser.Window(), &area);
            EXPECT_GT(area.right - area.left, 200);
            EXPECT_LE(area.right - area.left, GetSystemMetrics(SM_CXSCREEN));
            EXPECT_LE(area.bottom - area.top, GetSystemMetrics(SM_CYSCREEN));
            browser.Press(VK_ESCAPE);
        });
    }
}

TEST_F(BrowseClassTest, TwoDialogsAtOnceKeepTheirChoicesApart) {
    MakeFile("one.kra");
    MakeFile("two.kra");
    dialog_->put_InitialFileName(Bstr(L"one.kra").Get());
    std::wstring innerChoice;
    const auto showInner = [&] {
        const ComApartment apartment;
        const auto inner = CreateBrowseObject();
        inner->put_InitialFileName(Bstr(L"two.kra").Get());
        const DialogUser user(BrowserWithName(L"two.kra"), [](const OpenDialog& dialog) {
            OpenBrowser(dialog).WaitForRow(L"two.kra");
            dialog.Press(VK_RETURN);
        });
        LONG result = 0;
        EXPECT_EQ(S_OK, inner->ShowModal(&result));
        Bstr path;
        inner->get_ChosenPath(path.Receive());
        innerChoice = path.Text();
    };
    EXPECT_EQ(kConfirmed, Show([&](const OpenBrowser& browser) {
                  browser.WaitForRow(L"one.kra");
                  std::thread(showInner).join();
                  SetForegroundWindow(browser.Window());
                  browser.Click(IDOK);
              }));
    EXPECT_EQ(L"<Work>\\two.kra", innerChoice);
    EXPECT_EQ(L"<Work>\\one.kra", ChosenPath());
}

// What a screen reader says for a control: its own text, else the label before it.
std::wstring AccessibleName(const OpenBrowser& browser, HWND control) {
    wchar_t kind[40] = {};
    GetClassNameW(control, kind, static_cast<int>(std::size(kind)));
    const bool showsContents = std::wstring(kind) == L"Edit" || std::wstring(kind) == L"ComboBox";
    const std::wstring own = browser.Text(GetDlgCtrlID(control));
    if (!showsContents && !own.empty()) return own;
    const HWND label = GetWindow(control, GW_HWNDPREV);
    GetClassNameW(label, kind, static_cast<int>(std::size(kind)));
    return std::wstring(kind) == L"Static" ? browser.Text(GetDlgCtrlID(label)) : std::wstring();
}

TEST_F(BrowseClassTest, EveryControlHasANameForScreenReaders) {
    const Owner owner;
    dialog_->put_OwnerWindow(owner.Handle());
    dialog_->put_HelpTopic(1);
    Show([](const OpenBrowser& browser) {
        for (const int control :
             {CONTROL_NEW_FOLDER, CONTROL_RENAME, CONTROL_MAKE_COPY, CONTROL_DELETE, CONTROL_TREE,
              CONTROL_LIST, CONTROL_PROGRESS, CONTROL_STOP, CONTROL_NAME, CONTROL_TYPE,
              static_cast<int>(IDOK), static_cast<int>(IDCANCEL), CONTROL_HELP}) {
            EXPECT_NE(L"", AccessibleName(browser, browser.Control(control))) << control;
        }
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseClassTest, ControlsLieInsideTheSmallestDialogAndDoNotOverlap) {
    const Owner owner;
    dialog_->put_OwnerWindow(owner.Handle());
    dialog_->put_HelpTopic(1);
    dialog_->put_RememberSize(0);
    Show([](const OpenBrowser& browser) {
        SetWindowPos(browser.Window(), nullptr, 0, 0, 1, 1, SWP_NOMOVE | SWP_NOZORDER);
        ExpectControlsApart(browser);
        browser.Press(VK_ESCAPE);
    });
}

}  // namespace
}  // namespace depot::test
