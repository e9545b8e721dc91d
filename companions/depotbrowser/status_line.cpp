#include "depotbrowser/status_line.h"

#include "depotbrowser/browse_ids.h"
#include "depotbrowser/dialog_template.h"
// After the Windows headers.
#include <commctrl.h>

namespace depot {
namespace {

constexpr LPARAM kStepMilliseconds = 30;
constexpr UINT kMomentMilliseconds = 200;

// The system's sign of a warning; its own name for it depends on how it is compiled.
const LPCWSTR kWarning = MAKEINTRESOURCEW(32515);

}  // namespace

void MoveTo(HWND control, const Box& box) {
    const RECT now = PlaceOf(control);
    const RECT then = {box.x, box.y, box.Right(), box.Bottom()};
    // A place that is kept costs the system as much as another one.
    if (EqualRect(&now, &then)) return;
    SetWindowPos(control, nullptr, box.x, box.y, box.width, box.height,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

StatusLine::StatusLine(HWND dialog)
    : dialog_(dialog),
      message_(GetDlgItem(dialog, CONTROL_MESSAGE)),
      icon_(GetDlgItem(dialog, CONTROL_MESSAGE_ICON)),
      progress_(GetDlgItem(dialog, CONTROL_PROGRESS)),
      stop_(GetDlgItem(dialog, CONTROL_STOP)) {
    const HICON sign = LoadIconW(nullptr, kWarning);
    SendMessageW(icon_, STM_SETICON, reinterpret_cast<WPARAM>(sign), 0);
}

void StatusLine::ShowMessage(const std::wstring& text) {
    Show(text, false);
}

void StatusLine::Show(const std::wstring& text, bool failed) {
    KillTimer(dialog_, kBusyTimer);
    SetBusy(false);
    SetWindowTextW(message_, text.c_str());
    if (failed == failed_) return;
    failed_ = failed;
    ShowWindow(icon_, failed ? SW_SHOW : SW_HIDE);
    Place(layout_);
}

Box StatusLine::MessagePlace() const {
    if (busy_) return layout_.messageWhileBusy;
    return failed_ ? layout_.messageBehindIcon : layout_.message;
}

void StatusLine::ShowError(const std::wstring& text) {
    Show(text, true);
    NotifyWinEvent(EVENT_SYSTEM_ALERT, message_, OBJID_CLIENT, CHILDID_SELF);
}

void StatusLine::ShowBusy(const std::wstring& text) {
    busyText_ = text;
    SetTimer(dialog_, kBusyTimer, kMomentMilliseconds, nullptr);
}

void StatusLine::TimerElapsed() {
    Show({}, false);
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
    MoveTo(message_, MessagePlace());
    MoveTo(icon_, layout.messageIcon);
    MoveTo(progress_, layout.progress);
    MoveTo(stop_, layout.stop);
    InvalidateRect(message_, nullptr, TRUE);
}

}  // namespace depot
