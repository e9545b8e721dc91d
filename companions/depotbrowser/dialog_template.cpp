#include "depotbrowser/dialog_template.h"

#include <cstdlib>

namespace depot {
namespace {

// Positions in an extended template, in words.
constexpr std::size_t kStyle = 6;
constexpr std::size_t kMenuName = 13;
constexpr std::size_t kFontHeaderWords = 3;

constexpr WORD kOrdinalFollows = 0xFFFF;

std::size_t AfterText(std::span<const WORD> words, std::size_t position) {
    while (words[position] != 0) ++position;
    return position + 1;
}

// Returns the position after a name, which is a text or a number.
std::size_t AfterName(std::span<const WORD> words, std::size_t position) {
    return words[position] == kOrdinalFollows ? position + 2 : AfterText(words, position);
}

std::size_t FontPosition(std::span<const WORD> words) {
    const std::size_t className = AfterName(words, kMenuName);
    return AfterText(words, AfterName(words, className));
}

// Controls start at a multiple of four bytes.
std::size_t Aligned(std::size_t position) {
    return position + position % 2;
}

}  // namespace

int PixelsPerInch() {
    const UniqueCanvas screen(GetDC(nullptr), {nullptr});
    return GetDeviceCaps(screen.get(), LOGPIXELSY);
}

DialogFont SystemMessageFont() {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof(metrics);
    if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) return {};
    const LOGFONTW& font = metrics.lfMessageFont;
    constexpr int kPointsPerInch = 72;
    const int points =
        MulDiv(std::abs(static_cast<int>(font.lfHeight)), kPointsPerInch, PixelsPerInch());
    return {static_cast<WORD>(points), static_cast<WORD>(font.lfWeight), font.lfItalic,
            font.lfCharSet, font.lfFaceName};
}

DialogTemplate WithFont(std::span<const WORD> original, const DialogFont& font) {
    DialogTemplate result(original.begin(), original.end());
    if ((original[kStyle] & DS_SETFONT) == 0 || font.face.empty()) return result;
    const std::size_t fontPosition = FontPosition(original);
    result.resize(fontPosition);
    const auto style = static_cast<WORD>(font.charSet << 8 | font.italic);
    result.insert(result.end(), {font.points, font.weight, style});
    result.insert(result.end(), font.face.begin(), font.face.end());
    result.push_back(0);
    result.resize(Aligned(result.size()));
    const std::size_t controls = Aligned(AfterText(original, fontPosition + kFontHeaderWords));
    const std::span<const WORD> rest = original.subspan(controls);
    result.insert(result.end(), rest.begin(), rest.end());
    return result;
}

DialogTemplate LoadDialogTemplate(HMODULE module, WORD dialog) {
    const HRSRC found =
        FindResourceW(module, MAKEINTRESOURCEW(dialog), reinterpret_cast<LPCWSTR>(RT_DIALOG));
    const HGLOBAL loaded = found != nullptr ? LoadResource(module, found) : nullptr;
    if (loaded == nullptr) return {};
    const auto* const words = static_cast<const WORD*>(LockResource(loaded));
    return WithFont({words, SizeofResource(module, found) / sizeof(WORD)}, SystemMessageFont());
}

int PixelsPerInch(HWND window) {
    // Known from Windows 10 on.
    using GetDpi = UINT(WINAPI*)(HWND window);
    static const auto getDpi = reinterpret_cast<GetDpi>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
    const UINT found = getDpi != nullptr ? getDpi(window) : 0;
    return found != 0 ? static_cast<int>(found) : PixelsPerInch();
}

UniqueFont MessageFontAt(int pixelsPerInch) {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof(metrics);
    if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) return {};
    LOGFONTW font = metrics.lfMessageFont;
    font.lfHeight = MulDiv(static_cast<int>(font.lfHeight), pixelsPerInch, PixelsPerInch());
    return UniqueFont(CreateFontIndirectW(&font));
}

SIZE PixelsOf(HWND control, int across, int down) {
    // As the system measures them: by the widths of all letters, and the height of a line.
    constexpr std::wstring_view kLetters = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr int kCount = static_cast<int>(kLetters.size());
    const UniqueCanvas canvas(GetDC(control), {control});
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    const HGDIOBJ previous = SelectObject(canvas.get(), font);
    SIZE letters = {};
    TEXTMETRICW metrics = {};
    GetTextExtentPoint32W(canvas.get(), kLetters.data(), kCount, &letters);
    GetTextMetricsW(canvas.get(), &metrics);
    SelectObject(canvas.get(), previous);
    const int width = (static_cast<int>(letters.cx) / (kCount / 2) + 1) / 2;
    constexpr int kAcross = 4, kDown = 8;
    return {MulDiv(across, width, kAcross),
            MulDiv(down, static_cast<int>(metrics.tmHeight), kDown)};
}

int TextWidth(HWND control, const std::wstring& label) {
    const UniqueCanvas canvas(GetDC(control), {control});
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    const HGDIOBJ previous = SelectObject(canvas.get(), font);
    RECT area = {};
    DrawTextW(canvas.get(), label.c_str(), static_cast<int>(label.size()), &area,
              DT_CALCRECT | DT_SINGLELINE);
    SelectObject(canvas.get(), previous);
    return static_cast<int>(area.right);
}

RECT PlaceOf(HWND control) {
    RECT place = {};
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, GetAncestor(control, GA_PARENT), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

std::wstring TextOf(HWND control) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    const int length = GetWindowTextW(control, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

}  // namespace depot
