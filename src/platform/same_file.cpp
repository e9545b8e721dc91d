#include "platform/same_file.h"

#include <cstdint>
#include <optional>

#include "platform/file_names.h"
#include "platform/full_path.h"
#include "platform/handles.h"
#include "platform/paths.h"

namespace depot {
namespace {

// What the system itself distinguishes files by.
struct FileIdentity {
    DWORD volume;
    std::uint64_t number;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// File systems that distinguish their files by other means, or whose numbers do not fit, show the
// same number for all: 0 or all ones.
std::optional<FileIdentity> IdentityOf(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (!GetFileInformationByHandle(file, &facts)) return std::nullopt;
    const std::uint64_t number = std::uint64_t{facts.nFileIndexHigh} << 32 | facts.nFileIndexLow;
    if (number == 0 || number == ~std::uint64_t{0}) return std::nullopt;
    return FileIdentity{facts.dwVolumeSerialNumber, number};
}

// A file or folder that exists.
struct Place {
    std::optional<FileIdentity> identity;  // nothing where the system shows none
    std::string path;
};

std::optional<Place> PlaceAt(const std::string& path) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    // Folders open only with the flag.
    const UniqueHandle file =
        OwnFile(CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                            FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file) return std::nullopt;
    return Place{IdentityOf(file.get()), path};
}

bool AreSame(const Place& left, const Place& right) {
    if (left.identity && right.identity) return left.identity == right.identity;
    return IsSameFileName(RemoveTrailingBackslash(FullPath(left.path)),
                          RemoveTrailingBackslash(FullPath(right.path)));
}

}  // namespace

bool IsSameFile(const std::string& left, const std::string& right) {
    const std::optional<Place> place = PlaceAt(left);
    const std::optional<Place> other = place ? PlaceAt(right) : std::nullopt;
    return other && AreSame(*place, *other);
}

bool IsInsideFolder(const std::string& path, const std::string& folder) {
    const std::optional<Place> wanted = PlaceAt(folder);
    if (!wanted) return false;
    std::string current = RemoveTrailingBackslash(FullPath(path));
    for (;;) {
        const std::size_t end = FindLastSeparator(current);
        if (end == std::string::npos) return false;
        current.resize(end);
        // The root of a drive is a folder only with its backslash.
        const std::optional<Place> above = PlaceAt(current + "\\");
        if (above && AreSame(*above, *wanted)) return true;
    }
}

}  // namespace depot
