#include "platform/user_presence.h"

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

UniqueHkey OpenOfMachine(const wchar_t* path) {
    HKEY opened = nullptr;
    const LSTATUS status =
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &opened);
    return UniqueHkey(status == ERROR_SUCCESS ? opened : nullptr);
}

// What a key of quiet hosts has of this program: the first bytes of a value.
struct HostValue {
    LSTATUS status = ERROR_FILE_NOT_FOUND;
    DWORD type = REG_NONE;
    DWORD size = sizeof(number);
    std::uint32_t number = 0;
};

// Read without narrow names: a program may have a name that the code page cannot hold.
HostValue ValueOfProgram(const wchar_t* path) {
    HostValue value;
    const UniqueHkey key = OpenOfMachine(path);
    if (!key) return value;
    const ProgramName program;
    value.status = RegQueryValueExW(key.get(), program.Get(), nullptr, &value.type,
                                    reinterpret_cast<BYTE*>(&value.number), &value.size);
    return value;
}

bool IsNumber(const HostValue& value) {
    return value.status == ERROR_SUCCESS && value.type == REG_DWORD &&
           value.size == sizeof(value.number);
}

// A list of the policy editor has texts: the program is quiet unless its text is "0".
std::optional<std::uint32_t> PolicyNumber() {
    constexpr std::uint32_t kZeroAsText = L'0';
    const HostValue value = ValueOfProgram(kQuietHostsPolicy);
    if (IsNumber(value)) return value.number;
    if (value.status != ERROR_SUCCESS && value.status != ERROR_MORE_DATA) return std::nullopt;
    const bool isZero = value.status == ERROR_SUCCESS && value.number == kZeroAsText;
    return isZero ? 0 : kQuietHost;
}

std::optional<std::uint32_t> QuietHostNumber() {
    if (const auto policy = PolicyNumber()) return policy;
    const HostValue value = ValueOfProgram(kQuietHostsKey);
    return IsNumber(value) ? std::optional(value.number) : std::nullopt;
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
