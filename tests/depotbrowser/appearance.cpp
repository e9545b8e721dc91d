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

void ThemeSwitch::WantLight(DWORD light) const {
    RegSetKeyValueA(HKEY_CURRENT_USER, kSettings, "AppsUseLightTheme", REG_DWORD, &light,
                    sizeof(light));
}

void ThemeSwitch::Report(const OpenDialog& dialog) {
    SendMessageW(dialog.Window(), WM_SETTINGCHANGE, 0,
                 reinterpret_cast<LPARAM>(L"ImmersiveColorSet"));
}

namespace {

// What the dialog answers a control that asks for its colours on that canvas.
HBRUSH AskForColours(const OpenDialog& dialog, UINT message, int control, HDC canvas) {
    return reinterpret_cast<HBRUSH>(
        SendMessageW(dialog.Window(), message, reinterpret_cast<WPARAM>(canvas),
                     reinterpret_cast<LPARAM>(dialog.Control(control))));
}

std::vector<RECT> PlacesOf(const OpenDialog& dialog) {
    std::vector<RECT> places;
    for (HWND control = GetWindow(dialog.Window(), GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        RECT place = {};
        GetWindowRect(control, &place);
        MapWindowPoints(nullptr, dialog.Window(), reinterpret_cast<POINT*>(&place), 2);
        places.push_back(place);
    }
    return places;
}

void ChangeResolution(const OpenDialog& dialog, int resolution, RECT place) {
    SendMessageW(dialog.Window(), WM_DPICHANGED, MAKEWPARAM(resolution, resolution),
                 reinterpret_cast<LPARAM>(&place));
}

}  // namespace

void ExpectColours(const OpenDialog& dialog, UINT message, int control, ColourPair colours) {
    SCOPED_TRACE(control);
    const HDC canvas = CreateCompatibleDC(nullptr);
    LOGBRUSH filled = {};
    GetObjectW(AskForColours(dialog, message, control, canvas), sizeof(filled), &filled);
    EXPECT_EQ(colours.text, GetTextColor(canvas));
    EXPECT_EQ(colours.ground, GetBkColor(canvas));
    EXPECT_EQ(colours.ground, filled.lbColor);
    DeleteDC(canvas);
}

void ExpectColoursOfSystem(const OpenDialog& dialog, UINT message, int control) {
    SCOPED_TRACE(control);
    const HDC canvas = CreateCompatibleDC(nullptr);
    AskForColours(dialog, message, control, canvas);
    EXPECT_NE(kDarkPalette.dialog.ground, GetBkColor(canvas));
    EXPECT_NE(kDarkPalette.field.ground, GetBkColor(canvas));
    DeleteDC(canvas);
}

void ExpectResolutionIsFollowed(const OpenDialog& dialog) {
    constexpr int kUsual = 96;
    RECT window = {};
    GetWindowRect(dialog.Window(), &window);
    const std::vector<RECT> before = PlacesOf(dialog);
    for (const int resolution : {120, 144, 192}) {
        SCOPED_TRACE(resolution);
        const LONG width = MulDiv(static_cast<int>(window.right - window.left), resolution, kUsual);
        const LONG height =
            MulDiv(static_cast<int>(window.bottom - window.top), resolution, kUsual);
        ChangeResolution(dialog, resolution, {0, 0, width, height});
        ExpectControlsApart(dialog);
        const std::vector<RECT> now = PlacesOf(dialog);
        ASSERT_EQ(before.size(), now.size());
        for (std::size_t index = 0; index < now.size(); ++index) {
            const RECT& was = before[index];
            EXPECT_EQ(MulDiv(static_cast<int>(was.left), resolution, kUsual), now[index].left);
            EXPECT_EQ(MulDiv(static_cast<int>(was.right), resolution, kUsual), now[index].right);
        }
    }
    ChangeResolution(dialog, kUsual, window);
    const std::vector<RECT> after = PlacesOf(dialog);
    for (std::size_t index = 0; index < before.size(); ++index) {
        EXPECT_TRUE(EqualRect(&before[index], &after[index])) << index;
    }
}

}  // namespace depot::test
