// Times and sizes of files, which the system hands out in two halves, as numbers.
#pragma once

#include <cstdint>

#include "platform/win32.h"

namespace depot {

constexpr std::uint64_t Joined(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

// A FILETIME: units of 100 nanoseconds since 1601.
constexpr std::uint64_t Joined(const FILETIME& time) {
    return Joined(time.dwHighDateTime, time.dwLowDateTime);
}

inline std::uint64_t TimeNow() {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return Joined(now);
}

}  // namespace depot
