#include "depotbrowser/status_line.h"

#include "depotbrowser/browse_ids.h"
// After the Windows headers.
#include <commctrl.h>

namespace depot {
namespace {

constexpr LPARAM kStepMilliseconds = 30;
constexpr UINT kMomentMilliseconds = 200;

}  // namespace

void MoveTo(HWND control, const Box& box) {
    SetWindowPos(control, nullptr, box.x, box.y, box.width, box.height,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

StatusLine::StatusLine(HWND dialog)
    : dialog_(dialog),
      message_(GetDlgItem(dialog, CONTROL_MESSAGE)),
      progress_(GetDlgItem(dialog, CONTROL_PROGRESS)),
      stop_(GetDlgItem(dialog, CONTROL_STOP)) {}

void StatusLine::ShowMessage(const std::wstring& text) {
    KillTimer(dialog_, kBusyTimer);
    SetBusy(false);
    SetWindowTextW(message_, text.c_str());
}

void StatusLine::ShowError(const std::wstring& text) {
    ShowMessage(text);
    NotifyWinEvent(EVENT_SYSTEM_ALERT, message_, OBJID_CLIENT, CHILDID_SELF);
}

void StatusLine::ShowBusy(const std::wstring& text) {
    busyText_ = text;
    SetTimer(dialog_, kBusyTimer, kMomentMilliseconds, nullptr);
}

void StatusLine::TimerElapsed() {
    KillTimer(dialog_, kBusyTimer);
    SetBusy(true);
    SetWindowTextW(message_, busyText_.c_str());
}

void StatusLine::SetBusy(bool busy) {
    if (busy == busy_) return;
    busy_ = busy;
    // The focus must not stay on a button that is hidden.
    if (!busy && GetFocus() == stop_) {
        SendMessageW(dialog_, WM_NEXTDLGCTL,
                     reinterpret_cast<WPARAM>(GetDlgItem(dialog_, CONTROL_LIST)), TRUE);
    }
    SendMessageW(progress_, PBM_SETMARQUEE, busy ? TRUE : FALSE, kStepMilliseconds);
    ShowWindow(progress_, busy ? SW_SHOW : SW_HIDE);
    ShowWindow(stop_, busy ? SW_SHOW : SW_HIDE);
    Place(layout_);
}

void StatusLine::Place(const BrowseLayout& layout) {
    layout_ = layout;
    MoveTo(message_, busy_ ? layout.messageWhileBusy : layout.message);
    MoveTo(progress_, layout.progress);
    MoveTo(stop_, layout.stop);
    InvalidateRect(message_, nullptr, TRUE);
}

}  // namespace depot
