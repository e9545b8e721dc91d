#include "depotbrowser/appearance.h"

#include <gtest/gtest.h>

#include <vector>

namespace depot::test {
namespace {

RECT AreaOf(HWND window) {
    RECT area = {};
    GetWindowRect(window, &area);
    return area;
}

// The control's own style counts: the dialog itself may be hidden.
bool IsShown(HWND control) {
    return (GetWindowLongW(control, GWL_STYLE) & WS_VISIBLE) != 0;
}

std::vector<HWND> ShownControls(HWND dialog) {
    std::vector<HWND> controls;
    for (HWND control = GetWindow(dialog, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        if (IsShown(control)) controls.push_back(control);
    }
    return controls;
}

void SetMessageFont(NONCLIENTMETRICSW metrics) {
    EXPECT_TRUE(SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0));
}

}  // namespace

LOGFONTW FontOf(HWND window) {
    LOGFONTW font = {};
    const auto handle = reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
    GetObjectW(handle, sizeof(font), &font);
    return font;
}

SIZE SizeOf(HWND window) {
    const RECT area = AreaOf(window);
    return {area.right - area.left, area.bottom - area.top};
}

NONCLIENTMETRICSW SystemMetrics() {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof(metrics);
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
    return metrics;
}

LargerMessageFont::LargerMessageFont() {
    NONCLIENTMETRICSW larger = original_;
    larger.lfMessageFont.lfHeight *= 2;
    SetMessageFont(larger);
}

LargerMessageFont::~LargerMessageFont() {
    SetMessageFont(original_);
}

SIZE NeededSize(HWND control, const std::wstring& text, bool wrapped) {
    const HDC canvas = GetDC(nullptr);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    const HGDIOBJ previous = SelectObject(canvas, font);
    RECT area = {0, 0, wrapped ? SizeOf(control).cx : 0, 0};
    const UINT lines = wrapped ? DT_WORDBREAK | DT_NOPREFIX : DT_SINGLELINE;
    DrawTextW(canvas, text.c_str(), -1, &area, DT_CALCRECT | lines);
    SelectObject(canvas, previous);
    ReleaseDC(nullptr, canvas);
    return {area.right, area.bottom};
}

void ExpectControlsApart(const OpenDialog& dialog) {
    RECT inside = {};
    GetClientRect(dialog.Window(), &inside);
    MapWindowPoints(dialog.Window(), nullptr, reinterpret_cast<POINT*>(&inside), 2);
    const std::vector<HWND> controls = ShownControls(dialog.Window());
    EXPECT_LT(1u, controls.size());
    for (std::size_t index = 0; index < controls.size(); ++index) {
        const RECT area = AreaOf(controls[index]);
        RECT common = {};
        IntersectRect(&common, &area, &inside);
        EXPECT_TRUE(EqualRect(&common, &area)) << "control " << GetDlgCtrlID(controls[index]);
        for (std::size_t other = index + 1; other < controls.size(); ++other) {
            const RECT otherArea = AreaOf(controls[other]);
            EXPECT_FALSE(IntersectRect(&common, &area, &otherArea))
                << "controls " << GetDlgCtrlID(controls[index]) << " and "
                << GetDlgCtrlID(controls[other]);
        }
    }
}

}  // namespace depot::test
