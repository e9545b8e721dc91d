// A program whose windows no person sees, and what it writes to the event log.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "platform/lock.h"
#include "support/import_patch.h"

namespace depot::test {

// What one entry of the event log holds.
struct LogEntry {
    std::wstring source;
    WORD type = 0;
    DWORD message = 0;
    std::vector<std::wstring> values;
};

// Takes a module's entries for the event log while it lives; one at a time.
class EventLogNotes {
public:
    explicit EventLogNotes(HMODULE module = GetModuleHandleA(nullptr))
        : register_("RegisterEventSourceW", &Register, module),
          report_("ReportEventW", &Report, module),
          deregister_("DeregisterEventSource", &Deregister, module) {
        Entries().clear();
        open_ = 0;
        isThere_ = true;
    }

    bool IsInPlace() const {
        return register_.IsInPlace() && report_.IsInPlace() && deregister_.IsInPlace();
    }
    std::vector<LogEntry> Taken() const {
        const std::lock_guard guard(lock_);
        return Entries();
    }
    // The log of a computer whose service is stopped.
    void Stop() { isThere_ = false; }
    int OpenSources() const { return open_; }

private:
    static std::vector<LogEntry>& Entries() {
        static std::vector<LogEntry> entries;
        return entries;
    }
    static HANDLE WINAPI Register(LPCWSTR, LPCWSTR source) {
        if (!isThere_) return nullptr;
        ++open_;
        const std::lock_guard guard(lock_);
        source_ = source;
        return &open_;
    }
    static BOOL WINAPI Deregister(HANDLE) {
        --open_;
        return TRUE;
    }
    // The signature is the system's.
    static BOOL WINAPI Report(HANDLE, WORD type, WORD, DWORD message, PSID, WORD count, DWORD,
                              LPCWSTR* values, void*) {
        const std::lock_guard guard(lock_);
        Entries().push_back({source_, type, message, {values, values + count}});
        return TRUE;
    }

    static inline Lock lock_;
    static inline std::wstring source_;
    static inline std::atomic<int> open_ = 0;
    static inline std::atomic<bool> isThere_ = true;

    const ImportPatch<decltype(&RegisterEventSourceW)> register_;
    const ImportPatch<decltype(&ReportEventW)> report_;
    const ImportPatch<decltype(&DeregisterEventSource)> deregister_;
};

// Has a module see an invisible window station while it lives. The process keeps its own one: boxes
// that are shown all the same are found by a BoxLog.
class UnseenHost : public EventLogNotes {
public:
    explicit UnseenHost(HMODULE module = GetModuleHandleA(nullptr))
        : EventLogNotes(module), flags_("GetUserObjectInformationW", &Invisible, module) {}

    bool IsInPlace() const { return EventLogNotes::IsInPlace() && flags_.IsInPlace(); }

private:
    static BOOL WINAPI Invisible(HANDLE, int, void* flags, DWORD, DWORD*) {
        *static_cast<USEROBJECTFLAGS*>(flags) = {};
        return TRUE;
    }

    const ImportPatch<decltype(&GetUserObjectInformationW)> flags_;
};

}  // namespace depot::test
