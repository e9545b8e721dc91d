// What the browse dialog draws anew when its size changes.
#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <set>
#include <vector>

#include "depotbrowser/appearance.h"
#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

// What can be seen of a window's inside: the header of a list may be wider than the list.
RECT ShownArea(HWND window) {
    RECT area = {};
    GetClientRect(window, &area);
    const HWND parent = GetAncestor(window, GA_PARENT);
    if (parent == nullptr || parent == GetDesktopWindow()) return area;
    RECT around = {};
    GetClientRect(parent, &around);
    MapWindowPoints(parent, window, reinterpret_cast<POINT*>(&around), 2);
    RECT shown = {};
    IntersectRect(&shown, &area, &around);
    return shown;
}

// The windows of one thread that were told to draw all that they show, while it lives.
class DrawnWindows {
public:
    explicit DrawnWindows(DWORD thread) {
        Forget();
        queued_.reset(SetWindowsHookExW(WH_GETMESSAGE, WatchQueued, nullptr, thread));
        sent_.reset(SetWindowsHookExW(WH_CALLWNDPROC, WatchSent, nullptr, thread));
        EXPECT_TRUE(queued_ && sent_);
    }

    static bool Holds(HWND window) {
        const std::scoped_lock lock(mutex_);
        return drawn_.contains(window);
    }
    static void Forget() {
        const std::scoped_lock lock(mutex_);
        drawn_.clear();
    }

private:
    struct Unhook {
        void operator()(HHOOK hook) const { UnhookWindowsHookEx(hook); }
    };

    static LRESULT CALLBACK WatchQueued(int code, WPARAM removed, LPARAM parameter) {
        const auto& message = *reinterpret_cast<const MSG*>(parameter);
        if (code == HC_ACTION && removed == PM_REMOVE) Note(message.hwnd, message.message);
        return CallNextHookEx(nullptr, code, removed, parameter);
    }
    // A control that has its parts drawn at once sends them the message.
    static LRESULT CALLBACK WatchSent(int code, WPARAM sender, LPARAM parameter) {
        const auto& message = *reinterpret_cast<const CWPSTRUCT*>(parameter);
        if (code == HC_ACTION) Note(message.hwnd, message.message);
        return CallNextHookEx(nullptr, code, sender, parameter);
    }
    static void Note(HWND window, UINT message) {
        if (message != WM_PAINT) return;
        const RECT whole = ShownArea(window);
        RECT outdated = {};
        GetUpdateRect(window, &outdated, FALSE);
        const std::scoped_lock lock(mutex_);
        if (EqualRect(&whole, &outdated)) drawn_.insert(window);
    }

    static inline std::mutex mutex_;
    static inline std::set<HWND> drawn_;
    using UniqueHook = std::unique_ptr<std::remove_pointer_t<HHOOK>, Unhook>;
    UniqueHook queued_, sent_;
};

std::wstring Described(HWND window) {
    wchar_t name[80] = {};
    GetClassNameW(window, name, static_cast<int>(std::size(name)));
    return name + (L" " + std::to_wstring(GetDlgCtrlID(window)));
}

std::vector<HWND> VisibleParts(HWND dialog) {
    std::vector<HWND> parts = {dialog};
    EnumChildWindows(
        dialog,
        [](HWND part, LPARAM list) {
            const RECT area = ShownArea(part);
            const bool shows = IsWindowVisible(part) && !IsRectEmpty(&area);
            if (shows) reinterpret_cast<std::vector<HWND>*>(list)->push_back(part);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&parts));
    return parts;
}

class BrowseDrawingTest : public BrowseTest {
protected:
    BrowseDrawingTest() {
        dialog_->put_RememberSize(0);
        dialog_->put_HelpTopic(1);
    }

    // The dialog and all its controls, with what these are made of, draw themselves in full.
    static void ExpectAllIsDrawn(HWND dialog) {
        Names missing;
        EXPECT_TRUE(Eventually([&] {
            missing.clear();
            for (const HWND part : VisibleParts(dialog)) {
                if (!DrawnWindows::Holds(part)) missing.push_back(Described(part));
            }
            return missing.empty();
        })) << "not drawn: "
            << testing::PrintToString(missing);
    }
};

TEST_F(BrowseDrawingTest, EveryControlDrawsItselfAnewWhenTheSizeChanges) {
    MakeFile("a.kra");
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        const HWND window = browser.Window();
        const SIZE size = SizeOf(window);
        const DrawnWindows drawn(GetWindowThreadProcessId(window, nullptr));
        for (const LONG change : {40, -3, 1}) {
            SCOPED_TRACE(change);
            UpdateWindow(window);
            DrawnWindows::Forget();
            SetWindowPos(window, nullptr, 0, 0, size.cx + change, size.cy + change,
                         SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
            ExpectAllIsDrawn(window);
        }
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseDrawingTest, EveryControlDrawsItselfAnewWhenMaximisedAndRestored) {
    MakeFile("a.kra");
    Show([](const OpenBrowser& browser) {
        browser.SelectRow(L"a.kra");
        const HWND window = browser.Window();
        const DrawnWindows drawn(GetWindowThreadProcessId(window, nullptr));
        for (const WPARAM command : {SC_MAXIMIZE, SC_RESTORE}) {
            SCOPED_TRACE(command);
            DrawnWindows::Forget();
            SendMessageW(window, WM_SYSCOMMAND, command, 0);
            ExpectAllIsDrawn(window);
        }
        browser.Press(VK_ESCAPE);
    });
}

}  // namespace
}  // namespace depot::test
