// File operations done by the shell on lists of paths.
#pragma once

#include <string>
#include <vector>

#include "platform/result.h"
#include "platform/win32.h"
// After the Windows headers.
#include <shellapi.h>

namespace depot {

// No confirmation, and no question about folders that must be created.
inline constexpr FILEOP_FLAGS kQuietFlags = FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR;

// The bytes, terminating NUL included, that one path may take in a list of several and in the
// rename or move of a single file.
inline constexpr std::size_t kShellListPathBytes = 261;
inline constexpr std::size_t kShellSinglePathBytes = 520;

// Returns the paths one after another, each with its NUL, and one more NUL, as the shell takes
// them; empty when a path is empty or takes more than `pathBytes`. A list that was cut could name
// other files than the caller meant.
std::string ShellPathList(const std::vector<std::string>& paths, std::size_t pathBytes);

struct ShellRequest {
    UINT operation;  // FO_COPY, FO_MOVE, FO_DELETE or FO_RENAME
    std::vector<std::string> sources;
    const std::string* target = nullptr;  // null for none
    FILEOP_FLAGS flags = 0;
    HWND window = nullptr;  // owns what the shell shows; may be null
    std::size_t pathBytes = kShellListPathBytes;
};

// Has the shell do one operation on the sources. Succeeds when the shell reports success and
// nothing was aborted. Without sources, with a path that does not fit, or with an empty target, it
// fails without calling the shell, which would take the process's current folder for an empty one.
// So it does when a source would be copied or moved onto itself or a folder into itself, by
// whatever names the two go: some shells would copy what they have just copied, and so on. A
// folder that would be moved to the place of a file fails with ERROR_ALREADY_EXISTS. A
// deletion has no target: one that is given makes no difference. The system's last error is that of
// the shell, or 0.
bool RunShellOperation(const ShellRequest& request);

// Returns the failure of the operation before, with the system's text led by `path`; without code
// and text where the shell did not say why.
Error ShellError(const std::string& path);

// Removes folders with all that they hold, as a destructor may do it. Returns whether they are
// gone.
bool RemoveFoldersQuietly(const std::vector<std::string>& folders, HWND window) noexcept;

}  // namespace depot
