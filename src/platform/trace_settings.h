// Where the trace is to be written, and how much of it: by policy, by the environment or by what
// the user or the machine prefers.
#pragma once

#include <cstdint>
#include <string>

namespace depot {

// The values below kTraceKey, in both hives; policies win over everything.
inline constexpr char kTraceTarget[] = "Trace";      // as the variable, or "off"
inline constexpr char kTraceSize[] = "TraceSize";    // the most that a file takes, in MB
inline constexpr char kTraceFiles[] = "TraceFiles";  // how many older files are kept

struct TraceSettings {
    static constexpr std::uint32_t kDefaultSize = 10, kMostSize = 1024;
    static constexpr std::uint32_t kDefaultFiles = 1, kMostFiles = 9;

    std::string target;              // empty when nothing is traced
    bool isFromEnvironment = false;  // else from the registry
    std::uint64_t mostBytes = 0;     // of one file; 0 for any number
    std::uint32_t olderFiles = kDefaultFiles;
};

// Reads them, in this order: policies, the variable, the user's and the machine's preference.
// Variables in a target of the registry are replaced; one that is no absolute path, and not
// "debugger", counts as "off". Only a target of the registry is limited without a size.
TraceSettings ReadTraceSettings();

// Whether the machine's administrator has elevated processes follow these settings, too.
bool IsTraceAllowedForAll();

}  // namespace depot
