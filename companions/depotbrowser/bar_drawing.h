// How the buttons of the bar above the list look: in the system's colours, at any resolution.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot {

enum class BarSign { kBack, kForward, kUp, kMore };

// Draws a button with a sign, or with a text and, where `follows` is set, the mark between two
// folders before it.
void DrawSignButton(const DRAWITEMSTRUCT& item, BarSign sign);
void DrawTextButton(const DRAWITEMSTRUCT& item, const std::wstring& text, bool follows);

// The room beside a button's text.
int TextButtonEdges(HWND button);

}  // namespace depot
