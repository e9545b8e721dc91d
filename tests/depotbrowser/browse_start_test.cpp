// How long it takes until the browse dialog is seen, and what it does before.
#include <gtest/gtest.h>

#include <iostream>

#include "depotbrowser/browse_fixture.h"
#include "depotbrowser/drag_user.h"

namespace depot::test {
namespace {

LONGLONG Now() {
    LARGE_INTEGER now = {};
    QueryPerformanceCounter(&now);
    return now.QuadPart;
}

// Watches the messages of this thread until the dialog has been drawn, and cancels it then. No
// other thread looks for it meanwhile, which would hold it up.
class FirstPicture {
public:
    FirstPicture() {
        last_ = drawn = 0;
        isListDrawn_ = tookDrops = false;
        listMoves = 0;
        sent_ = SetWindowsHookExW(WH_CALLWNDPROC, WatchSent, nullptr, GetCurrentThreadId());
        got_ = SetWindowsHookExW(WH_GETMESSAGE, WatchGot, nullptr, GetCurrentThreadId());
    }
    ~FirstPicture() {
        UnhookWindowsHookEx(got_);
        UnhookWindowsHookEx(sent_);
    }
    FirstPicture(const FirstPicture&) = delete;
    FirstPicture& operator=(const FirstPicture&) = delete;

    static inline LONGLONG drawn;  // 0 until then
    static inline bool tookDrops;  // already then
    static inline int listMoves;   // how often the list was placed until then

private:
    // Everything is asked to draw itself, one after the other, before any other message comes.
    static LRESULT CALLBACK WatchGot(int code, WPARAM removes, LPARAM parameter) {
        const MSG& message = *reinterpret_cast<const MSG*>(parameter);
        if (message.message == WM_PAINT && drawn == 0) {
            isListDrawn_ |= GetDlgCtrlID(message.hwnd) == CONTROL_LIST;
            last_ = Now();
        } else if (isListDrawn_ && drawn == 0) {
            drawn = last_;
            const HWND dialog = GetAncestor(message.hwnd, GA_ROOT);
            tookDrops = DropTargetOf(dialog) != nullptr;
            PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        }
        return CallNextHookEx(nullptr, code, removes, parameter);
    }
    static LRESULT CALLBACK WatchSent(int code, WPARAM current, LPARAM parameter) {
        const CWPSTRUCT& message = *reinterpret_cast<const CWPSTRUCT*>(parameter);
        if (message.message == WM_WINDOWPOSCHANGED && drawn == 0 &&
            GetDlgCtrlID(message.hwnd) == CONTROL_LIST) {
            constexpr UINT kStays = SWP_NOMOVE | SWP_NOSIZE;
            const auto& place = *reinterpret_cast<const WINDOWPOS*>(message.lParam);
            if ((place.flags & kStays) != kStays) ++listMoves;
        }
        return CallNextHookEx(nullptr, code, current, parameter);
    }

    static inline LONGLONG last_;
    static inline bool isListDrawn_;
    HHOOK sent_, got_;
};

class BrowseStartTest : public BrowseTest {};

// Times are told and not judged: they are the machine's as well.
TEST_F(BrowseStartTest, ControlsArePlacedOnceAndDrawnBeforeOleBegins) {
    LARGE_INTEGER perSecond = {};
    QueryPerformanceFrequency(&perSecond);
    for (int call = 1; call <= 3; ++call) {
        const FirstPicture picture;
        const LONGLONG start = Now();
        LONG result = kJunk;
        EXPECT_EQ(S_OK, dialog_->ShowModal(&result));
        EXPECT_NE(0, FirstPicture::drawn);
        EXPECT_EQ(1, FirstPicture::listMoves);
        EXPECT_FALSE(FirstPicture::tookDrops);
        std::cout << "[ MEASURED ] first picture after call " << call << ": "
                  << (FirstPicture::drawn - start) * 1000 / perSecond.QuadPart << " ms\n";
    }
}

}  // namespace
}  // namespace depot::test
