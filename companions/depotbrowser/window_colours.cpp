#include "depotbrowser/window_colours.h"

#include <iterator>

#include "depotbrowser/dialog_template.h"
#include "platform/registry_key.h"
// After the Windows headers.
#include <commctrl.h>
#include <uxtheme.h>
#include <vssym32.h>

namespace depot {
namespace {

constexpr char kSettings[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";
constexpr char kLightSwitch[] = "AppsUseLightTheme";

// The numbers of the title bar's switch, on systems of today and on the first that had it.
constexpr DWORD kDarkTitle = 20;
constexpr DWORD kDarkTitleBefore = 19;

bool HasHighContrast() {
    HIGHCONTRASTW contrast = {};
    contrast.cbSize = sizeof(contrast);
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof(contrast), &contrast, 0) != 0 &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

bool UserWantsDark() {
    const auto settings = RegistryKey::Open(HKEY_CURRENT_USER, kSettings);
    return WantsDark(HasHighContrast(),
                     settings ? settings->ReadDword(kLightSwitch) : std::nullopt);
}

struct ThemeCloser {
    void operator()(HTHEME theme) const { CloseThemeData(theme); }
};
using UniqueTheme = std::unique_ptr<std::remove_pointer_t<HTHEME>, ThemeCloser>;

struct CanvasDeleter {
    void operator()(HDC canvas) const { DeleteDC(canvas); }
};
using UniqueMemoryCanvas = std::unique_ptr<std::remove_pointer_t<HDC>, CanvasDeleter>;

struct BitmapDeleter {
    void operator()(HBITMAP bitmap) const { DeleteObject(bitmap); }
};
using UniqueBitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, BitmapDeleter>;

// Whether the ground that the theme has for a header takes a text of the colour. Not every system
// that has themes has dark ones, and none says so.
bool TakesText(HWND header, Colour text, Colour ground) {
    constexpr int kSide = 16;
    const UniqueTheme theme(OpenThemeData(header, L"Header"));
    if (!theme) return false;
    const UniqueCanvas screen(GetDC(header), {header});
    const UniqueMemoryCanvas canvas(CreateCompatibleDC(screen.get()));
    const UniqueBitmap bitmap(CreateCompatibleBitmap(screen.get(), kSide, kSide));
    const HGDIOBJ before = SelectObject(canvas.get(), bitmap.get());
    const RECT area = {0, 0, kSide, kSide};
    SetDCBrushColor(canvas.get(), ground);
    FillRect(canvas.get(), &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    DrawThemeBackground(theme.get(), canvas.get(), HP_HEADERITEM, HIS_NORMAL, &area, nullptr);
    const COLORREF drawn = GetPixel(canvas.get(), kSide / 2, kSide / 2);
    SelectObject(canvas.get(), before);
    return Contrast({text, drawn}) >= kReadableContrast;
}

bool IsCheckBox(HWND button) {
    const LONG_PTR kind = GetWindowLongPtrW(button, GWL_STYLE) & BS_TYPEMASK;
    return kind == BS_AUTOCHECKBOX || kind == BS_CHECKBOX;
}

bool IsTree(HWND control) {
    wchar_t kind[64] = {};
    GetClassNameW(control, kind, static_cast<int>(std::size(kind)));
    return std::wstring_view(kind) == WC_TREEVIEWW;
}

ColourPair SystemPair(int text, int ground) {
    return {GetSysColor(text), GetSysColor(ground)};
}

}  // namespace

WindowColours::WindowColours(HWND dialog) : dialog_(dialog) {
    ForEachControl([this](HWND control, const std::wstring& kind) {
        if (kind != WC_LISTVIEWW) return;
        SetWindowSubclass(control, DrawHeader, 0, reinterpret_cast<DWORD_PTR>(this));
    });
    dark_ = UserWantsDark();
    Use();
}

template <class Work>
void WindowColours::ForEachControl(Work work) const {
    for (HWND control = GetWindow(dialog_, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        wchar_t kind[64] = {};
        GetClassNameW(control, kind, static_cast<int>(std::size(kind)));
        work(control, std::wstring(kind));
    }
}

void WindowColours::Update() {
    dark_ = UserWantsDark();
    Use();
    RedrawWindow(dialog_, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
}

Palette WindowColours::Current() const {
    if (dark_) return kDarkPalette;
    return {SystemPair(COLOR_BTNTEXT, COLOR_BTNFACE), SystemPair(COLOR_GRAYTEXT, COLOR_BTNFACE),
            SystemPair(COLOR_WINDOWTEXT, COLOR_WINDOW), SystemPair(COLOR_BTNTEXT, COLOR_BTNFACE)};
}

void WindowColours::Use() {
    const Palette palette = Current();
    dialogBrush_.reset(dark_ ? CreateSolidBrush(palette.dialog.ground) : nullptr);
    fieldBrush_.reset(dark_ ? CreateSolidBrush(palette.field.ground) : nullptr);
    ForEachControl([&](HWND control, const std::wstring& kind) { UseIn(control, kind, palette); });
    wasDark_ = dark_;
    UseInTitle();
}

void WindowColours::UseIn(HWND control, const std::wstring& kind, const Palette& palette) {
    if (kind == WC_LISTVIEWW) return UseInList(control, palette);
    if (kind == WC_TREEVIEWW) {
        TreeView_SetBkColor(control, palette.field.ground);
        TreeView_SetTextColor(control, palette.field.text);
    }
    // The dark theme draws the text of a check box dark; without a theme it has the dialog's
    // colours.
    if (kind == WC_BUTTONW && IsCheckBox(control)) return UseTheme(control, nullptr, L"");
    if (kind == WC_TREEVIEWW || kind == WC_BUTTONW || kind == WC_SCROLLBARW) {
        UseTheme(control, nullptr, L"DarkMode_Explorer");
    }
    if (kind == WC_EDITW || kind == WC_COMBOBOXW) UseTheme(control, nullptr, L"DarkMode_CFD");
}

void WindowColours::UseInList(HWND list, const Palette& palette) {
    ListView_SetBkColor(list, palette.field.ground);
    ListView_SetTextBkColor(list, palette.field.ground);
    ListView_SetTextColor(list, palette.field.text);
    UseTheme(list, L"Explorer", L"DarkMode_Explorer");
    const HWND header = ListView_GetHeader(list);
    UseTheme(header, nullptr, L"DarkMode_ItemsView");
    lightHeader_ = !TakesText(header, palette.field.text, palette.field.ground);
}

// What never was dark has the system's theme.
void WindowColours::UseTheme(HWND control, const wchar_t* light, const wchar_t* dark) const {
    if (!dark_ && !wasDark_ && light == nullptr) return;
    const wchar_t* const theme = dark_ ? dark : light;
    // An empty name takes the theme away only as both.
    SetWindowTheme(control, theme, theme != nullptr && *theme == L'\0' ? theme : nullptr);
}

// Older systems have no such library.
void WindowColours::UseInTitle() {
    using Set = HRESULT(WINAPI*)(HWND, DWORD, const void*, DWORD);
    if (dark_ && !frames_) {
        frames_.reset(LoadLibraryExW(L"dwmapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    }
    if (!frames_) return;
    const auto set = reinterpret_cast<Set>(
        reinterpret_cast<void*>(GetProcAddress(frames_.get(), "DwmSetWindowAttribute")));
    const BOOL dark = dark_ ? TRUE : FALSE;
    if (set != nullptr && FAILED(set(dialog_, kDarkTitle, &dark, sizeof(dark)))) {
        set(dialog_, kDarkTitleBefore, &dark, sizeof(dark));
    }
}

std::optional<INT_PTR> WindowColours::Answer(UINT message, WPARAM first) const {
    if (!dark_) return std::nullopt;
    const bool isField = message == WM_CTLCOLOREDIT || message == WM_CTLCOLORLISTBOX;
    const bool isDialog = message == WM_CTLCOLORDLG || message == WM_CTLCOLORSTATIC ||
                          message == WM_CTLCOLORBTN || message == WM_CTLCOLORSCROLLBAR;
    if (!isField && !isDialog) return std::nullopt;
    const ColourPair pair = isField ? kDarkPalette.field : kDarkPalette.dialog;
    const auto canvas = reinterpret_cast<HDC>(first);
    SetTextColor(canvas, pair.text);
    SetBkColor(canvas, pair.ground);
    return reinterpret_cast<INT_PTR>(isField ? fieldBrush_.get() : dialogBrush_.get());
}

// The system's dark theme draws what is selected itself, and then takes the text's colour alone.
std::optional<LRESULT> WindowColours::AnswerDraw(const NMHDR& header) const {
    if (!dark_ || !IsTree(header.hwndFrom) || header.code != UINT{NM_CUSTOMDRAW}) {
        return std::nullopt;
    }
    auto& draw = reinterpret_cast<NMTVCUSTOMDRAW&>(const_cast<NMHDR&>(header));
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    const bool isSelected = (draw.nmcd.uItemState & (CDIS_SELECTED | CDIS_DROPHILITED)) != 0;
    const bool hasFocus = GetFocus() == header.hwndFrom;
    if (draw.nmcd.dwDrawStage == CDDS_ITEMPREPAINT && isSelected && !hasFocus) {
        draw.clrText = kDarkPalette.selected.text;
        draw.clrTextBk = kDarkPalette.selected.ground;
    }
    return CDRF_DODEFAULT;
}

// The dark theme of a header comes with a dark text. Where the system has none it draws all of the
// header in colours that fit.
LRESULT CALLBACK WindowColours::DrawHeader(HWND list, UINT message, WPARAM first, LPARAM second,
                                           UINT_PTR /*id*/, DWORD_PTR self) noexcept {
    const auto& colours = *reinterpret_cast<const WindowColours*>(self);
    const auto* const draw = reinterpret_cast<const NMCUSTOMDRAW*>(second);
    if (message == WM_NOTIFY && colours.dark_ && draw->hdr.code == UINT{NM_CUSTOMDRAW} &&
        draw->hdr.hwndFrom == ListView_GetHeader(list) && !colours.lightHeader_) {
        if (draw->dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
        if (draw->dwDrawStage == CDDS_ITEMPREPAINT) {
            SetTextColor(draw->hdc, kDarkPalette.field.text);
        }
        return CDRF_DODEFAULT;
    }
    if (message == WM_NCDESTROY) RemoveWindowSubclass(list, DrawHeader, 0);
    return DefSubclassProc(list, message, first, second);
}

}  // namespace depot
