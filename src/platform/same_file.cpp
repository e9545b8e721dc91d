#include "platform/same_file.h"

#include <optional>

#include "platform/full_path.h"
#include "platform/handles.h"
#include "platform/paths.h"

namespace depot {
namespace {

// What the system itself tells files apart by.
struct FileIdentity {
    DWORD volume;
    DWORD high;
    DWORD low;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

std::optional<FileIdentity> IdentityOf(const std::string& path) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    // Folders open only with the flag.
    const UniqueHandle file =
        OwnFile(CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                            FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (!file || !GetFileInformationByHandle(file.get(), &facts)) return std::nullopt;
    return FileIdentity{facts.dwVolumeSerialNumber, facts.nFileIndexHigh, facts.nFileIndexLow};
}

}  // namespace

bool IsSameFile(const std::string& left, const std::string& right) {
    const std::optional<FileIdentity> identity = IdentityOf(left);
    return identity && identity == IdentityOf(right);
}

bool IsInsideFolder(const std::string& path, const std::string& folder) {
    const std::optional<FileIdentity> wanted = IdentityOf(folder);
    if (!wanted) return false;
    std::string current = RemoveTrailingBackslash(FullPath(path));
    for (;;) {
        const std::size_t end = FindLastSeparator(current);
        if (end == std::string::npos) return false;
        current.resize(end);
        // The root of a drive is a folder only with its backslash.
        if (IdentityOf(current + "\\") == wanted) return true;
    }
}

}  // namespace depot
