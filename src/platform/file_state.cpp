#include "platform/file_state.h"

#include "platform/file_time.h"

namespace depot {
namespace {

// In units of a FILETIME.
constexpr std::uint64_t kLongTick = std::uint64_t{2} * 10'000'000;
// The system's own clock ticks in up to 16 ms.
constexpr std::uint64_t kSystemTick = 160'000;

// A time within the last tick.
std::uint64_t OwnTime() {
    LARGE_INTEGER counter = {};
    QueryPerformanceCounter(&counter);
    const auto count = static_cast<std::uint64_t>(counter.QuadPart);
    return TimeNow() - (count * 7919 + GetCurrentThreadId()) % kSystemTick;
}

}  // namespace

std::optional<FileState> StateOf(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return std::nullopt;
    return FileState{Joined(data.nFileSizeHigh, data.nFileSizeLow), Joined(data.ftLastWriteTime)};
}

bool IsSettled(const FileState& state) {
    return state.time + kLongTick <= TimeNow();
}

std::optional<FileState> GiveOwnState(HANDLE file) {
    const std::uint64_t time = OwnTime();
    const FILETIME wanted = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    if (!SetFileTime(file, nullptr, nullptr, &wanted)) return std::nullopt;
    BY_HANDLE_FILE_INFORMATION info = {};
    if (!GetFileInformationByHandle(file, &info)) return std::nullopt;
    // One that rounds them gives the same to others.
    if (Joined(info.ftLastWriteTime) != time) return std::nullopt;
    return FileState{Joined(info.nFileSizeHigh, info.nFileSizeLow), time};
}

}  // namespace depot
