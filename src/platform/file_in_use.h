// Files that another program holds for a moment: virus scanners, indexers and backups open whatever
// was just written.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot {

// Three seconds in all.
inline constexpr int kAttemptsWhileInUse = 60;
inline constexpr DWORD kPauseWhileInUse = 50;

// Whose business a file is. Of the component's own files a denied access passes, too: only somebody
// who looks into everything has them open. Elsewhere it is a matter of rights, which stays.
enum class FileUse { kOwn, kShared };

// Whether the error says that somebody else has the file.
bool IsInUse(FileUse use, DWORD error);

// Runs `attempt`, which returns whether it succeeded and leaves the system's last error, until it
// succeeds or fails otherwise than by somebody else's use of the file; for three seconds at most.
// Returns whether it succeeded; the last error is that of the last attempt.
template <class Attempt>
bool RetryWhileInUse(FileUse use, const Attempt& attempt) {
    for (int number = 1;; ++number) {
        if (attempt()) return true;
        const DWORD error = GetLastError();
        if (number == kAttemptsWhileInUse || !IsInUse(use, error)) {
            SetLastError(error);
            return false;
        }
        Sleep(kPauseWhileInUse);
    }
}

// Deletes a file of the component's own. Returns whether it was deleted.
bool DeleteOwnFile(const std::string& path) noexcept;

}  // namespace depot
