#include "platform/user_presence.h"

#include <iterator>

#include "platform/presence_rule.h"
#include "platform/program_name.h"
#include "platform/registry_key.h"
#include "platform/trace.h"

namespace depot {
namespace {

static_assert(kVisibleStation == WSF_VISIBLE);

std::optional<std::uint32_t> StationFlags() {
    USEROBJECTFLAGS flags = {};
    DWORD size = 0;
    if (!GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof(flags),
                                   &size)) {
        return std::nullopt;
    }
    return flags.dwFlags;
}

// Read without narrow names: a program may have a name that the code page cannot hold.
std::optional<std::uint32_t> QuietHostNumber() {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kQuietHostsKey, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY,
                      &opened) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    const UniqueHkey key(opened);
    const ProgramName program;
    DWORD number = 0, type = REG_NONE, size = sizeof(number);
    const LSTATUS status = RegQueryValueExW(key.get(), program.Get(), nullptr, &type,
                                            reinterpret_cast<BYTE*>(&number), &size);
    if (status != ERROR_SUCCESS || type != REG_DWORD || size != sizeof(number)) return std::nullopt;
    return number;
}

const char* TracedAs(LogMessage message) {
    switch (message) {
        case LogMessage::kPromptNotShown:
            return "prompt not shown";
        case LogMessage::kDialogNotShown:
            return "dialog not shown";
        default:
            return "message not shown";
    }
}

}  // namespace

bool HasAPerson() {
    return MayAPersonSee({StationFlags(), QuietHostNumber()});
}

void ReportUnshown(LogMessage message, const std::string& text) noexcept try {
    const TraceSpan span(TracedAs(message), text);
    const bool isLogged = WriteToEventLog(message, text);
    if (IsTracing()) span.EndWithText(isLogged ? "in the event log" : "not in the event log");
} catch (...) {
    // Without memory there is no one left to inform.
}

}  // namespace depot
