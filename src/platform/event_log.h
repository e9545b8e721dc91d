// The event log of Windows, for what no person can be shown.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot {

// The source, below the application log. The installer registers it; without that the log holds the
// values of an entry and no sentence around them.
inline constexpr wchar_t kEventSource[] = L"DepotIntr";

// The numbers of the messages in the plain library of texts (resources/events.mc). %1 is the
// program; %2 is what follows here.
enum class LogMessage : DWORD {
    kNoticeNotShown = 1,  // the text of the message
    kPromptNotShown = 2,  // the server
    kDialogNotShown = 3,  // what the dialog was for
};

// Writes an entry, from any thread. Returns whether it was written; a process that writes too many
// of them is kept from it for a while.
bool WriteToEventLog(LogMessage message, const std::string& text);

}  // namespace depot
