// Processes whose windows no person sees: services, scheduled tasks, hosts that the administrator
// named. A box or a dialog would wait there for ever.
#pragma once

#include <string>

#include "platform/event_log.h"

namespace depot {

// The key of the machine's hive, in its 64-bit view, that names quiet hosts: a REG_DWORD 1 named
// after the file of the program.
inline constexpr wchar_t kQuietHostsKey[] = L"Software\\Quillon\\DepotIntr\\QuietHosts";

// The same by policy, which wins over it. Editors of policies write texts there: any but "0" names
// a quiet host.
inline constexpr wchar_t kQuietHostsPolicy[] =
    L"Software\\Policies\\Quillon\\DepotIntr\\QuietHosts";

// Whether a person may see the windows of this process. Asked anew each time, from any thread: a
// process may change its window station. Takes no memory.
bool HasAPerson();

// Writes what was not shown to the trace and to the event log: the text of a message, or what a
// dialog was for.
void ReportUnshown(LogMessage message, const std::string& text) noexcept;

}  // namespace depot
