// The texts of windows and controls.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot {

// Returns the whole text of a control of this thread, or the title of a window.
std::wstring TextOf(HWND control);

}  // namespace depot
