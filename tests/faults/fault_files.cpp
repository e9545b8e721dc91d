// Files that cannot be written whole, and profiles that cannot be read.
#include <algorithm>
#include <cstring>

#include "faults/fault_state.h"

namespace depot::test {
namespace {

// A disk that becomes full takes the first bytes.
BOOL WINAPI WriteToFile(HANDLE file, LPCVOID bytes, DWORD length, LPDWORD written,
                        LPOVERLAPPED overlapped) {
    if (!IsWatched() || !FailsMidway(FaultKind::kFile)) {
        return real<&WriteFile>(file, bytes, length, written, overlapped);
    }
    real<&WriteFile>(file, bytes, length / 2, written, overlapped);
    EndIfLast();
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

UINT WINAPI WriteToLegacyFile(HFILE file, LPCSTR bytes, UINT length) {
    if (!IsWatched() || !FailsNow(FaultKind::kFile)) return real<&_lwrite>(file, bytes, length);
    // A length of 0 would cut the file.
    return length < 2 ? 0 : real<&_lwrite>(file, bytes, length / 2);
}

// A profile that cannot be read is one without values.
DWORD WINAPI ReadText(LPCSTR section, LPCSTR key, LPCSTR defaultText, LPSTR buffer, DWORD size,
                      LPCSTR file) {
    if (!IsWatched() || !FailsNow(FaultKind::kFile) || size == 0) {
        return real<&GetPrivateProfileStringA>(section, key, defaultText, buffer, size, file);
    }
    const char* const text = defaultText != nullptr ? defaultText : "";
    const std::size_t length = std::min<std::size_t>(std::strlen(text), size - 1);
    std::copy_n(text, length, buffer);
    buffer[length] = '\0';
    SetLastError(ERROR_SHARING_VIOLATION);
    return static_cast<DWORD>(length);
}

UINT WINAPI ReadNumber(LPCSTR section, LPCSTR key, INT defaultNumber, LPCSTR file) {
    if (!IsWatched() || !FailsNow(FaultKind::kFile)) {
        return real<&GetPrivateProfileIntA>(section, key, defaultNumber, file);
    }
    SetLastError(ERROR_SHARING_VIOLATION);
    return static_cast<UINT>(defaultNumber);
}

// What waits for a file that never comes free would take three seconds for each fault.
void WINAPI Pause(DWORD milliseconds) {
    real<&Sleep>(IsWatched() ? 0 : milliseconds);
}

}  // namespace

FARPROC FileStandIn(const char* name, FARPROC genuine) {
    DEPOT_STAND_IN(WriteFile, WriteToFile)
    DEPOT_STAND_IN(_lwrite, WriteToLegacyFile)
    DEPOT_STAND_IN(GetPrivateProfileStringA, ReadText)
    DEPOT_STAND_IN(GetPrivateProfileIntA, ReadNumber)
    DEPOT_STAND_IN(Sleep, Pause)
    return nullptr;
}

}  // namespace depot::test
