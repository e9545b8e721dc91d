// Dialog templates in the font that the user has chosen for the system's own messages, and what the
// dialogs made of them show.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/win32.h"

namespace depot {

// A dialog template in memory, in the units in which it is laid out.
using DialogTemplate = std::vector<WORD>;

struct DialogFont {
    WORD points = 0;
    WORD weight = 0;
    BYTE italic = 0;
    BYTE charSet = 0;
    std::wstring face;
};

// The resolution that the system counts the screen with.
int PixelsPerInch();

// The font of the system's message boxes; nothing when the system does not say.
DialogFont SystemMessageFont();

// Returns an extended dialog template with its font replaced. The dialog's size and its controls
// are measured in units of that font and grow with it. A template without a font, and any template
// when `font` has no face, comes back as it is.
DialogTemplate WithFont(std::span<const WORD> original, const DialogFont& font);

// Returns the module's dialog resource in the system's message font; empty when it is missing.
DialogTemplate LoadDialogTemplate(HMODULE module, WORD dialog);

// Returns the whole text of a control of this thread, or the title of a window.
std::wstring TextOf(HWND control);

// Returns where a control lies in its parent, or a window on the screen.
RECT PlaceOf(HWND control);

// What a window, or the screen when it is null, is drawn on.
struct CanvasReleaser {
    HWND window;
    void operator()(HDC canvas) const { ReleaseDC(window, canvas); }
};
using UniqueCanvas = std::unique_ptr<std::remove_pointer_t<HDC>, CanvasReleaser>;

// The resolution of the screen that a window of this program is on, as far as the program can tell
// screens apart.
int PixelsPerInch(HWND window);

struct FontDeleter {
    void operator()(HFONT font) const { DeleteObject(font); }
};
using UniqueFont = std::unique_ptr<std::remove_pointer_t<HFONT>, FontDeleter>;

// The font of the system's message boxes on a screen of that resolution; null when the system does
// not say.
UniqueFont MessageFontAt(int pixelsPerInch);

// Returns dialog units in pixels, in the font that a control has now.
SIZE PixelsOf(HWND control, int across, int down);

// Returns the pixels that a label takes on one line of a control, in its font.
int TextWidth(HWND control, const std::wstring& label);

}  // namespace depot
