#include "platform/file_in_use.h"

namespace depot {

bool IsInUse(FileUse use, DWORD error) {
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
           (use == FileUse::kOwn && error == ERROR_ACCESS_DENIED);
}

bool DeleteOwnFile(const std::string& path) noexcept {
    return RetryWhileInUse(FileUse::kOwn, [&] { return DeleteFileA(path.c_str()) != FALSE; });
}

}  // namespace depot
