// Failures that are shown to the user whatever the caller does with them.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot {

// Takes the texts of notices in place of the message boxes.
using NoticeReceiver = void (*)(const std::string& text);

// Sends all further notices to `receiver`: a program without windows must not wait for a button.
// Null, as at the beginning, shows message boxes.
void InstallNoticeReceiver(NoticeReceiver receiver);

// Shows the text in a box of that style, owned by `owner`, that may be null, and waits until the
// user confirms it. In a process whose windows no person sees (user_presence.h) the text is written
// to the trace and to the event log instead.
void ShowNotice(const std::string& text, const char* title, HWND owner,
                UINT style = MB_ICONERROR | MB_OK);

}  // namespace depot
