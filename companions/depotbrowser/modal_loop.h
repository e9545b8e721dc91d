// Showing a window modally with keys of its own.
#pragma once

#include <functional>

#include "platform/win32.h"

namespace depot {

// Disables the owner, which may be null, shows the window and handles the thread's messages until
// `ended` holds or the window is gone; then the owner is usable again. `translate` sees each
// message first and returns whether it is done with it. A request to end the program is kept for
// the caller's loop.
void RunModally(HWND window, HWND owner, const std::function<bool()>& ended,
                const std::function<bool(const MSG& message)>& translate);

}  // namespace depot
