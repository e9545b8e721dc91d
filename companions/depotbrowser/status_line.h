// The line of the dialog that shows what is being done and what failed.
#pragma once

#include <string>

#include "depotbrowser/browse_layout.h"
#include "platform/win32.h"

namespace depot {

// Borrows the message, the progress bar and the Stop button of the dialog. The bar and the button
// are there only while something is at work.
class StatusLine {
public:
    explicit StatusLine(HWND dialog);

    void ShowMessage(const std::wstring& text);
    // The same for a failure, which has a sign before it and is read out, too.
    void ShowError(const std::wstring& text);
    // Shows the bar and the text as soon as the work has taken a moment: what is done at once does
    // not flicker. The dialog hands on its timer of this number.
    void ShowBusy(const std::wstring& text);
    static constexpr UINT_PTR kBusyTimer = 1;
    void TimerElapsed();
    void Clear() { ShowMessage({}); }

    void Place(const BrowseLayout& layout);

private:
    void Show(const std::wstring& text, bool failed);
    void SetBusy(bool busy);
    Box MessagePlace() const;

    HWND dialog_;
    HWND message_;
    HWND icon_;
    HWND progress_;
    HWND stop_;
    bool busy_ = false;
    bool failed_ = false;
    std::wstring busyText_;
    BrowseLayout layout_;
};

// Moves a control to its place, where it draws itself anew: what it showed at another place is not
// taken along, because controls do not all notice that they have to be drawn in full.
void MoveTo(HWND control, const Box& box);

}  // namespace depot
