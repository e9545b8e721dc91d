#include "platform/trace.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/handles.h"
#include "platform/object_trust.h"
#include "platform/registry_key.h"
#include "platform/text.h"
#include "platform/trace_permission.h"

namespace depot {

bool internal::tracing = false;

namespace {

constexpr char kDebugger[] = "debugger";
constexpr std::size_t kSubjectLimit = 200;

// Null while the debugger gets the lines.
UniqueHandle& TraceFile() {
    static UniqueHandle file;
    return file;
}

std::string TraceTarget() {
    char target[MAX_PATH + 1] = {};
    const DWORD length = GetEnvironmentVariableA(kTraceVariable, target, sizeof(target));
    return length < sizeof(target) ? std::string(target, length) : std::string();
}

// Whether the machine's administrator has the environment followed in elevated processes, too.
bool IsAllowedForAll() {
    const auto key = RegistryKey::Open(HKEY_LOCAL_MACHINE, kTraceKey, KEY_QUERY_VALUE);
    return key && key->ReadDword(kTraceElevated) == 1U;
}

ProcessRights RightsOfProcess() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return {};
    const UniqueHandle owner(token);
    TOKEN_ELEVATION elevation = {};
    alignas(void*) BYTE label[sizeof(TOKEN_MANDATORY_LABEL) + SECURITY_MAX_SID_SIZE] = {};
    DWORD size = 0;
    if (!GetTokenInformation(token, TokenElevation, &elevation, sizeof(elevation), &size) ||
        !GetTokenInformation(token, TokenIntegrityLevel, label, sizeof(label), &size)) {
        return {};
    }
    const PSID level = reinterpret_cast<TOKEN_MANDATORY_LABEL*>(label)->Label.Sid;
    return {true, elevation.TokenIsElevated != 0,
            LevelIn({static_cast<const char*>(level), GetLengthSid(level)})};
}

bool IsPlain(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION found = {};
    return GetFileInformationByHandle(file, &found) &&
           IsPlainFile({GetFileType(file) == FILE_TYPE_DISK,
                        (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0,
                        found.nNumberOfLinks});
}

// Several processes may append to one file: a write to its end is not torn. A link is opened itself
// and then refused. Whoever waits at a pipe learns nothing of who opened it.
UniqueHandle OpenForAppending(const std::string& path) {
    UniqueHandle file = OwnFile(CreateFileA(path.c_str(), FILE_APPEND_DATA | FILE_READ_ATTRIBUTES,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                            nullptr, OPEN_ALWAYS,
                                            FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT |
                                                SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS,
                                            nullptr));
    if (file && !IsPlain(file.get())) file.reset();
    return file;
}

void WriteTraceLine(const std::string& line) {
    if (!TraceFile()) {
        OutputDebugStringA(line.c_str());
        return;
    }
    DWORD written = 0;
    WriteFile(TraceFile().get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

std::string Printable(std::string_view text) {
    std::string printable(CutToBytes(text, kSubjectLimit));
    std::replace_if(
        printable.begin(), printable.end(),
        [](char character) { return static_cast<unsigned char>(character) < ' '; }, '?');
    return printable;
}

std::uint64_t MicrosecondsSince(const LARGE_INTEGER& start) {
    LARGE_INTEGER now = {};
    LARGE_INTEGER frequency = {};
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    const LONGLONG ticks = now.QuadPart - start.QuadPart;
    return static_cast<std::uint64_t>(ticks * 1'000'000 / frequency.QuadPart);
}

// Time, process and thread.
std::string LinePrefix() {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    std::array<char, 80> prefix = {};
    // The system's own: the language's would bring floating point along.
    wsprintfA(prefix.data(), "%04u-%02u-%02u %02u:%02u:%02u.%03u %lu:%lu ", unsigned{now.wYear},
              unsigned{now.wMonth}, unsigned{now.wDay}, unsigned{now.wHour}, unsigned{now.wMinute},
              unsigned{now.wSecond}, unsigned{now.wMilliseconds}, GetCurrentProcessId(),
              GetCurrentThreadId());
    return prefix.data();
}

std::string DurationText(std::uint64_t microseconds) {
    std::array<char, 8> fraction = {};
    wsprintfA(fraction.data(), ".%03u", static_cast<unsigned>(microseconds % 1000));
    return Concatenate({" ", NumberText(microseconds / 1000), fraction.data(), " ms "});
}

}  // namespace

TraceStart StartTrace() {
    const std::string target = TraceTarget();
    if (target.empty()) return TraceStart::kOff;
    if (!MayFollowTheEnvironment(RightsOfProcess()) && !IsAllowedForAll()) {
        return TraceStart::kIgnored;
    }
    const bool toDebugger = EqualsNoCase(target, kDebugger);
    if (!toDebugger) TraceFile() = OpenForAppending(target);
    internal::tracing = toDebugger || TraceFile() != nullptr;
    if (internal::tracing) return TraceStart::kStarted;
    OutputDebugStringA("DepotIntr: the trace cannot be written to the file of DEPOTINTR_TRACE\n");
    return TraceStart::kUnwritable;
}

void StopTrace() {
    internal::tracing = false;
    TraceFile().reset();
}

void TraceSpan::Begin(const char* operation, std::string_view subject) {
    operation_ = operation;
    subject_ = subject;
    QueryPerformanceCounter(&start_);
}

std::string TraceSpan::ResultText(HRESULT result) {
    if (result == S_OK) return "S_OK";
    if (result == S_FALSE) return "S_FALSE";
    std::array<char, 16> text = {};
    wsprintfA(text.data(), "0x%08lX", static_cast<unsigned long>(result));
    return text.data();
}

void TraceCount(const char* what, std::string_view subject, std::uint32_t count) {
    if (!IsTracing()) return;
    // The form of all lines.
    TraceSpan(what, subject).EndWithCode(count);
}

void TraceLeftOut(std::string_view folder, std::string_view name, const char* reason) try {
    if (!IsTracing()) return;
    TraceSpan("left out", name)
        .EndWithText(Concatenate({reason, ", in \"", Printable(folder), "\""}));
} catch (...) {
    return;
}

void TraceSpan::EndWithNumber(ULONG number) const {
    End(NumberText(number));
}

// The traced operation keeps its last error and never fails for its trace.
void TraceSpan::End(const std::string& result) const try {
    const DWORD lastError = GetLastError();
    const std::string subject =
        subject_.empty() ? std::string() : Concatenate({" \"", Printable(subject_), "\""});
    WriteTraceLine(Concatenate({LinePrefix(), operation_, subject,
                                DurationText(MicrosecondsSince(start_)), result, "\r\n"}));
    SetLastError(lastError);
} catch (...) {
    return;
}

}  // namespace depot
