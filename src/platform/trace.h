// The trace that support staff switch on: a line for every interface call and directory request.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/win32.h"

namespace depot {

// The environment variable that switches the trace on: the path of a file, to which lines are
// appended, or "debugger" for the debugger's output. The registry may name one, too
// (platform/trace_settings.h).
inline constexpr char kTraceVariable[] = "DEPOTINTR_TRACE";
inline constexpr char kTraceDebugger[] = "debugger";

// Both are ignored in processes that are elevated or of a high integrity level, unless this value
// of the machine, a number, is 1.
inline constexpr char kTraceKey[] = "Software\\Quillon\\Farrow\\13.00\\DepotIntr";
inline constexpr char kTraceElevated[] = "TraceElevated";

enum class TraceStart : std::uint8_t {
    kOff,  // no target is named
    kStarted,
    kIgnored,     // one is named, in a process that does not follow it
    kUnwritable,  // the file cannot be opened, is a link or no file, or has several names
};

// Reads the variable and the settings. Called once when the module is loaded; nothing is traced
// unless it returns kStarted. Where the file cannot be written, the debugger's output has a line
// that says so.
TraceStart StartTrace();

// Closes the file.
void StopTrace();

namespace internal {
extern bool tracing;
}  // namespace internal

inline bool IsTracing() {
    return internal::tracing;
}

// One traced operation: the time from its construction to the result. While nothing is traced it
// costs the test of a flag. A line holds local time, process and thread, the operation, its subject
// (cut to 200 characters, control characters as '?'), its duration in milliseconds and its result.
// The caller passes neither passwords nor values of files.
class TraceSpan {
public:
    explicit TraceSpan(const char* operation, std::string_view subject = {}) {
        if (IsTracing()) Begin(operation, subject);
    }

    // Writes the line; the operation ended with a result of the interface, or with a directory
    // result code.
    void EndWithResult(HRESULT result) const {
        if (operation_ != nullptr) End(ResultText(result));
    }
    void EndWithCode(ULONG code) const {
        if (operation_ != nullptr) EndWithNumber(code);
    }
    void EndWithText(const std::string& text) const {
        if (operation_ != nullptr) End(text);
    }

private:
    static std::string ResultText(HRESULT result);
    void Begin(const char* operation, std::string_view subject);
    void EndWithNumber(ULONG number) const;
    void End(const std::string& result) const;

    const char* operation_ = nullptr;  // null while nothing is traced
    std::string_view subject_;
    LARGE_INTEGER start_ = {};
};

// Writes a line with a count and what is counted, where there is no result to wait for.
void TraceCount(const char* what, std::string_view subject, std::uint32_t count);

// Writes a line for something that a listing of a folder leaves out, and why; `name` is its name as
// far as it can be written.
void TraceLeftOut(std::string_view folder, std::string_view name, const char* reason);

}  // namespace depot
