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

// What a window, or the screen when it is null, is drawn on.
struct CanvasReleaser {
    HWND window;
    void operator()(HDC canvas) const { ReleaseDC(window, canvas); }
};
using UniqueCanvas = std::unique_ptr<std::remove_pointer_t<HDC>, CanvasReleaser>;

}  // namespace depot
