#include "platform/file_state.h"

namespace depot {
namespace {

// In units of a FILETIME.
constexpr std::uint64_t kLongTick = 2 * 10'000'000;
// The system's own clock ticks in up to 16 ms.
constexpr std::uint64_t kSystemTick = 160'000;

std::uint64_t NumberOf(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

std::uint64_t NumberOf(const FILETIME& time) {
    return NumberOf(time.dwHighDateTime, time.dwLowDateTime);
}

std::uint64_t Now() {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return NumberOf(now);
}

// A time within the last tick.
std::uint64_t OwnTime() {
    LARGE_INTEGER counter = {};
    QueryPerformanceCounter(&counter);
    const auto count = static_cast<std::uint64_t>(counter.QuadPart);
    return Now() - (count * 7919 + GetCurrentThreadId()) % kSystemTick;
}

}  // namespace

std::optional<FileState> StateOf(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return std::nullopt;
    return FileState{NumberOf(data.nFileSizeHigh, data.nFileSizeLow),
                     NumberOf(data.ftLastWriteTime)};
}

bool IsSettled(const FileState& state) {
    return state.time + kLongTick <= Now();
}

std::optional<FileState> GiveOwnState(HANDLE file) {
    const std::uint64_t time = OwnTime();
    const FILETIME wanted = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    if (!SetFileTime(file, nullptr, nullptr, &wanted)) return std::nullopt;
    BY_HANDLE_FILE_INFORMATION info = {};
    if (!GetFileInformationByHandle(file, &info)) return std::nullopt;
    // One that rounds them gives the same to others.
    if (NumberOf(info.ftLastWriteTime) != time) return std::nullopt;
    return FileState{NumberOf(info.nFileSizeHigh, info.nFileSizeLow), time};
}

}  // namespace depot
