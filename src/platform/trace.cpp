#include "platform/trace.h"

#include <algorithm>
#include <array>

#include "platform/object_trust.h"
#include "platform/text.h"
#include "platform/token.h"
#include "platform/trace_file.h"
#include "platform/trace_permission.h"
#include "platform/trace_settings.h"

namespace depot {

bool internal::tracing = false;

namespace {

constexpr char kVariableUnwritable[] =
    "DepotIntr: the trace cannot be written to the file of DEPOTINTR_TRACE\n";
constexpr char kSettingUnwritable[] =
    "DepotIntr: the trace cannot be written to the file that the registry names\n";
constexpr std::size_t kSubjectLimit = 200;

// Not open while the debugger gets the lines.
TraceFile& File() {
    static TraceFile file;
    return file;
}

ProcessRights RightsOfProcess() {
    const UniqueHandle token = TokenOfProcess();
    const TokenRecord<TOKEN_ELEVATION> elevation(token, TokenElevation);
    const TokenRecord<TOKEN_MANDATORY_LABEL> label(token, TokenIntegrityLevel);
    if (!elevation || !label) return {};
    const PSID level = label->Label.Sid;
    return {true, elevation->TokenIsElevated != 0,
            LevelIn({static_cast<const char*>(level), GetLengthSid(level)})};
}

void WriteTraceLine(const std::string& line) {
    if (File().IsOpen()) return File().Write(line);
    OutputDebugStringA(line.c_str());
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
    const TraceSettings settings = ReadTraceSettings();
    if (settings.target.empty()) return TraceStart::kOff;
    if (!MayFollowTheEnvironment(RightsOfProcess()) && !IsTraceAllowedForAll()) {
        return TraceStart::kIgnored;
    }
    const bool toDebugger = EqualsNoCase(settings.target, kTraceDebugger);
    internal::tracing =
        toDebugger || File().Open(settings.target, {settings.mostBytes, settings.olderFiles});
    if (internal::tracing) return TraceStart::kStarted;
    OutputDebugStringA(settings.isFromEnvironment ? kVariableUnwritable : kSettingUnwritable);
    return TraceStart::kUnwritable;
}

void StopTrace() {
    internal::tracing = false;
    File().Close();
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
