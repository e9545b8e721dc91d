#include "depotbrowser/dialog_look.h"

#include <iterator>
#include <string_view>
#include <utility>
// After the Windows headers.
#include <commctrl.h>

namespace depot {
namespace {

bool IsList(HWND control) {
    wchar_t kind[64] = {};
    GetClassNameW(control, kind, static_cast<int>(std::size(kind)));
    return std::wstring_view(kind) == WC_LISTVIEWW;
}

std::vector<int> ColumnsOf(HWND control) {
    std::vector<int> widths;
    if (!IsList(control)) return widths;
    const int count = Header_GetItemCount(ListView_GetHeader(control));
    for (int index = 0; index < count; ++index) {
        widths.push_back(ListView_GetColumnWidth(control, index));
    }
    return widths;
}

}  // namespace

DialogLook::DialogLook(HWND dialog)
    : dialog_(dialog), firstResolution_(PixelsPerInch(dialog)), colours_(dialog) {
    for (HWND control = GetWindow(dialog, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        controls_.push_back({control, PlaceOf(control), ColumnsOf(control)});
    }
}

std::optional<INT_PTR> DialogLook::HandleMessage(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
        case WM_DPICHANGED:
            ResolutionChanged(LOWORD(first), *reinterpret_cast<const RECT*>(second));
            return TRUE;
        case WM_SYSCOLORCHANGE:
        case WM_THEMECHANGED:
            HandOn(message, first, second);
            colours_.Update();
            return TRUE;
        case WM_SETTINGCHANGE:
            colours_.Update();
            return TRUE;
        default:
            return colours_.Answer(message, first);
    }
}

// Each place is counted from the first one: what is rounded does not add up.
void DialogLook::ResolutionChanged(int pixelsPerInch, const RECT& place) {
    if (pixelsPerInch <= 0 || firstResolution_ <= 0) return;
    UniqueFont font = MessageFontAt(pixelsPerInch);
    const auto scaled = [&](LONG pixels) {
        return MulDiv(static_cast<int>(pixels), pixelsPerInch, firstResolution_);
    };
    SetWindowPos(dialog_, nullptr, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    for (const Placed& one : controls_) {
        if (font) SendMessageW(one.control, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), 0);
        const int left = scaled(one.place.left), top = scaled(one.place.top);
        SetWindowPos(one.control, nullptr, left, top, scaled(one.place.right) - left,
                     scaled(one.place.bottom) - top, SWP_NOZORDER | SWP_NOACTIVATE);
        int column = 0;
        for (const int width : one.columns) {
            ListView_SetColumnWidth(one.control, column++, scaled(width));
        }
    }
    if (font) font_ = std::move(font);
    RedrawWindow(dialog_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

// Controls of the common library notice only what their parent hands on.
void DialogLook::HandOn(UINT message, WPARAM first, LPARAM second) const {
    for (const Placed& one : controls_) {
        if (IsList(one.control)) SendMessageW(one.control, message, first, second);
    }
}

}  // namespace depot
