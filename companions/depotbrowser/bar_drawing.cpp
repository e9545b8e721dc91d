#include "depotbrowser/bar_drawing.h"

#include <algorithm>
#include <array>

#include "depotbrowser/dialog_template.h"

namespace depot {
namespace {

struct PenDeleter {
    void operator()(HPEN pen) const { DeleteObject(pen); }
};
using UniquePen = std::unique_ptr<std::remove_pointer_t<HPEN>, PenDeleter>;

// Signs are drawn in a square of sixteen units.
constexpr int kUnits = 16;

COLORREF InkOf(const DRAWITEMSTRUCT& item, const Palette& palette) {
    return (item.itemState & ODS_DISABLED) != 0 ? palette.disabled.text : palette.dialog.text;
}

// What every button has: its ground, an edge while it is pressed, and the focus.
void DrawGround(const DRAWITEMSTRUCT& item, const Palette& palette) {
    RECT area = item.rcItem;
    SetDCBrushColor(item.hDC, palette.dialog.ground);
    FillRect(item.hDC, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    if ((item.itemState & ODS_SELECTED) != 0) DrawEdge(item.hDC, &area, BDR_SUNKENOUTER, BF_RECT);
    if ((item.itemState & ODS_FOCUS) != 0 && (item.itemState & ODS_NOFOCUSRECT) == 0) {
        InflateRect(&area, -1, -1);
        SetTextColor(item.hDC, palette.dialog.text);
        SetBkColor(item.hDC, palette.dialog.ground);
        DrawFocusRect(item.hDC, &area);
    }
}

// A line through points of the sixteen units, in the middle of the button.
template <std::size_t kCount>
void DrawStroke(const DRAWITEMSTRUCT& item, COLORREF colour,
                const std::array<POINT, kCount>& points) {
    const RECT& area = item.rcItem;
    const int side = static_cast<int>(std::min(area.right - area.left, area.bottom - area.top));
    const int left = static_cast<int>(area.left + area.right - side) / 2;
    const int top = static_cast<int>(area.top + area.bottom - side) / 2;
    std::array<POINT, kCount> line = points;
    for (POINT& point : line) {
        point = {left + MulDiv(static_cast<int>(point.x), side, kUnits),
                 top + MulDiv(static_cast<int>(point.y), side, kUnits)};
    }
    const LOGBRUSH ink = {BS_SOLID, colour, 0};
    const DWORD width = static_cast<DWORD>(std::max(1, side / kUnits));
    const UniquePen pen(ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND,
                                     width, &ink, 0, nullptr));
    const HGDIOBJ previous = SelectObject(item.hDC, pen.get());
    Polyline(item.hDC, line.data(), static_cast<int>(kCount));
    SelectObject(item.hDC, previous);
}

}  // namespace

void DrawSignButton(const DRAWITEMSTRUCT& item, BarSign sign, const Palette& palette) {
    DrawGround(item, palette);
    const COLORREF ink = InkOf(item, palette);
    switch (sign) {
        case BarSign::kBack:
            DrawStroke<2>(item, ink, {{{3, 8}, {13, 8}}});
            return DrawStroke<3>(item, ink, {{{7, 4}, {3, 8}, {7, 12}}});
        case BarSign::kForward:
            DrawStroke<2>(item, ink, {{{3, 8}, {13, 8}}});
            return DrawStroke<3>(item, ink, {{{9, 4}, {13, 8}, {9, 12}}});
        case BarSign::kUp:
            DrawStroke<2>(item, ink, {{{8, 3}, {8, 13}}});
            return DrawStroke<3>(item, ink, {{{4, 7}, {8, 3}, {12, 7}}});
        default:
            DrawStroke<3>(item, ink, {{{7, 5}, {4, 8}, {7, 11}}});
            return DrawStroke<3>(item, ink, {{{12, 5}, {9, 8}, {12, 11}}});
    }
}

void DrawTextButton(const DRAWITEMSTRUCT& item, const std::wstring& text, bool follows,
                    const Palette& palette) {
    DrawGround(item, palette);
    RECT area = item.rcItem;
    const auto edge = static_cast<LONG>(TextButtonEdges(item.hwndItem) / 2);
    if (follows) {
        DRAWITEMSTRUCT mark = item;
        mark.rcItem.right = area.left + edge;
        DrawStroke<3>(mark, InkOf(item, palette), {{{5, 4}, {10, 8}, {5, 12}}});
    }
    area.left += edge;
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, InkOf(item, palette));
    DrawTextW(item.hDC, text.c_str(), static_cast<int>(text.size()), &area,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

int TextButtonEdges(HWND button) {
    constexpr int kEdges = 14;
    return static_cast<int>(PixelsOf(button, kEdges, 0).cx);
}

}  // namespace depot
