// The browse dialog on screens of several resolutions, and in other colours.
#include "depotbrowser/browse_window.h"
#include "depotbrowser/browse_window_parts.h"
#include "depotbrowser/dialog_template.h"

namespace depot {

// The window was moved to a screen of another resolution, or that of its screen has changed. The
// system proposes a place.
void BrowseWindow::ResolutionChanged(int pixelsPerInch, const RECT& place) {
    const int before = pixelsPerInch_;
    if (!parts_ || pixelsPerInch <= 0 || pixelsPerInch == before) return;
    pixelsPerInch_ = pixelsPerInch;
    UseFontOfResolution();
    parts_->icons.Resize(MulDiv(kSmallIcon, pixelsPerInch, kUsualResolution));
    parts_->list.ResolutionChanged(before, pixelsPerInch);
    parts_->tree.ShowIcons();
    metrics_ = Measure();
    MoveTo(window_, {static_cast<int>(place.left), static_cast<int>(place.top),
                     static_cast<int>(place.right - place.left),
                     static_cast<int>(place.bottom - place.top)});
    Place();
}

void BrowseWindow::UseFontOfResolution() {
    UniqueFont font = MessageFontAt(pixelsPerInch_);
    if (!font) return;
    const auto use = [](HWND control, LPARAM given) {
        SendMessageW(control, WM_SETFONT, static_cast<WPARAM>(given), FALSE);
        return TRUE;
    };
    const auto handle = reinterpret_cast<LPARAM>(font.get());
    use(window_, handle);
    EnumChildWindows(window_, use, handle);
    font_ = std::move(font);
}

// Controls of the common library notice only what their parent hands on.
void BrowseWindow::HandOnToControls(UINT message, WPARAM first, LPARAM second) const {
    for (const int control : {CONTROL_LIST, CONTROL_TREE, CONTROL_PROGRESS}) {
        SendMessageW(Control(control), message, first, second);
    }
    RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

}  // namespace depot
