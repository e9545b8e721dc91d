// A thread that reads and dismisses the message box that a test makes appear.
#pragma once

#include <functional>
#include <string>

#include "platform/win32.h"

namespace depot::test {

// What a message box showed.
struct BoxContents {
    bool appeared = false;
    std::string text;
    HICON icon = nullptr;
    HWND owner = nullptr;
    int buttons = 0;
};

// Runs `call`, that shows a message box with this caption, and returns what the box showed. The box
// is dismissed at once. The watching ends after a while, also when no box appears; a box with
// another caption is dismissed then, so that no test hangs on it.
BoxContents WatchBox(const std::string& caption, const std::function<void()>& call);

}  // namespace depot::test
