// How the buttons of the bar above the list look: in the colours of the dialog, at any resolution.
#pragma once

#include <string>

#include "depotbrowser/dark_palette.h"
#include "platform/win32.h"

namespace depot {

enum class BarSign { kBack, kForward, kUp, kMore };

// Draws a button with a sign, or with a text and, where `follows` is set, the mark between two
// folders before it.
void DrawSignButton(const DRAWITEMSTRUCT& item, BarSign sign, const Palette& palette);
void DrawTextButton(const DRAWITEMSTRUCT& item, const std::wstring& text, bool follows,
                    const Palette& palette);

// The room beside a button's text.
int TextButtonEdges(HWND button);

}  // namespace depot
