// The window in which users see what could not be stored, and bring it back.
#pragma once

#include "depotbrowser/browse_texts.h"
#include "platform/win32.h"

namespace depot {

// Shows the window modally and waits for its user. It may be closed with its owner. What it does
// is done by a worker of its own; closing it does not wait for that.
void ShowKeptWindow(HWND owner, const BrowseTexts& texts);

}  // namespace depot
