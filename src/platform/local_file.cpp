#include "platform/local_file.h"

#include <algorithm>

#include "platform/handles.h"
#include "platform/not_copied.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

class LegacyFile : NotCopied {
public:
    explicit LegacyFile(HFILE file) : file_(file) {}
    ~LegacyFile() {
        if (IsOpen()) _lclose(file_);
    }

    bool IsOpen() const { return file_ != HFILE_ERROR; }
    HFILE Get() const { return file_; }

private:
    HFILE file_;
};

// Longer files are not held in memory.
constexpr LONGLONG kLongestLocalFile = 0x7FFFFFFF;

// What the system says of a name that nothing has or can have.
constexpr DWORD kAbsent[] = {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND,
                             ERROR_INVALID_DRIVE,  ERROR_INVALID_NAME,
                             ERROR_BAD_PATHNAME,   ERROR_FILENAME_EXCED_RANGE};

// Creates the folder and those above it that are missing, as far as that is possible: other
// programs may do the same at this moment.
void MakeFolders(const std::string& path) {
    if (CreateDirectoryA(path.c_str(), nullptr) || GetLastError() != ERROR_PATH_NOT_FOUND) return;
    const std::string parent = ParentFolderKeepSlash(path);
    if (parent == path) return;
    MakeFolders(parent);
    CreateDirectoryA(path.c_str(), nullptr);
}

}  // namespace

bool PathExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool PathMayExist(const std::string& path) {
    if (PathExists(path)) return true;
    const DWORD error = GetLastError();
    return std::find(std::begin(kAbsent), std::end(kAbsent), error) == std::end(kAbsent);
}

bool IsLocalFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool ReadLocalFile(const std::string& path,
                   const std::function<std::uint8_t*(std::size_t length)>& makeRoom) {
    const LegacyFile file(_lopen(path.c_str(), OF_READ));
    if (!file.IsOpen()) return false;
    const LONG length = _llseek(file.Get(), 0, FILE_END);
    if (length < 0 || _llseek(file.Get(), 0, FILE_BEGIN) != 0) return false;
    std::uint8_t* const room = makeRoom(static_cast<std::size_t>(length));
    const auto wanted = static_cast<UINT>(length);
    return wanted == 0 || _lread(file.Get(), room, wanted) == wanted;
}

std::optional<std::vector<std::uint8_t>> ReadLocalFile(const std::string& path) {
    std::vector<std::uint8_t> bytes;
    const bool whole = ReadLocalFile(path, [&](std::size_t length) {
        bytes.resize(length);
        return bytes.data();
    });
    return whole ? std::optional(std::move(bytes)) : std::nullopt;
}

std::optional<std::vector<std::uint8_t>> ReadOpenFile(HANDLE file) {
    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(file, &size) || SetFilePointer(file, 0, nullptr, FILE_BEGIN) != 0) {
        return std::nullopt;
    }
    if (size.QuadPart > kLongestLocalFile) {
        SetLastError(ERROR_FILE_TOO_LARGE);
        return std::nullopt;
    }
    const auto length = static_cast<DWORD>(size.QuadPart);
    std::vector<std::uint8_t> bytes(length);
    DWORD read = 0;
    if (length > 0 && !(ReadFile(file, bytes.data(), length, &read, nullptr) && read == length)) {
        return std::nullopt;
    }
    return bytes;
}

bool WriteLocalFile(const std::string& path, const void* bytes, std::uint32_t length) {
    bool complete = false;
    {
        const LegacyFile file(_lcreat(path.c_str(), 0));
        if (!file.IsOpen()) return false;
        complete =
            length == 0 || _lwrite(file.Get(), static_cast<const char*>(bytes), length) == length;
    }
    if (!complete) DeleteFileA(path.c_str());
    return complete;
}

bool EnsureLocalFolder(const std::string& path) {
    if (EnsureTrailingBackslash(path).size() >= kMaxPathBytes) return false;
    MakeFolders(RemoveTrailingBackslash(path));
    // A file of that name is no folder.
    return IsLocalFolder(path);
}

}  // namespace depot
