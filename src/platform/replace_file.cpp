#include "platform/replace_file.h"

#include <cstdio>
#include <optional>
#include <vector>

#include "platform/code_page.h"
#include "platform/handles.h"
#include "platform/local_file.h"
#include "platform/private_file.h"
#include "platform/win32.h"

namespace depot {
namespace {

// Another process may be writing a file of its own in the same folder.
constexpr DWORD kMaxNames = 64;

struct Contents {
    const void* bytes;
    std::uint32_t length;
};

bool WriteAll(HANDLE file, const Contents& contents) {
    DWORD written = 0;
    return contents.length == 0 ||
           (WriteFile(file, contents.bytes, contents.length, &written, nullptr) &&
            written == contents.length);
}

UniqueHandle CreateNew(const std::string& path) {
    return OwnFile(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
}

// A name in the same folder. It is as long as the "8.3" names that the longest folder path leaves
// room for.
std::string NameBeside(const std::string& path, DWORD number) {
    const std::size_t separator = FindLastAnyCharacter(path, "\\/:");
    const std::size_t folder = separator == std::string::npos ? 0 : separator + 1;
    char name[16] = {};
    std::snprintf(name, sizeof(name), "lda%04x.tmp", static_cast<unsigned>(number & 0xFFFF));
    return path.substr(0, folder) + name;
}

// A new file in the folder of another, gone at the end unless it took the other one's place.
class FileBeside {
public:
    explicit FileBeside(const std::string& path) {
        const DWORD first = GetTickCount() ^ GetCurrentProcessId();
        for (DWORD number = 0; number < kMaxNames; ++number) {
            path_ = NameBeside(path, first + number);
            file_ = CreateNew(path_);
            if (file_ || GetLastError() != ERROR_FILE_EXISTS) break;
        }
        exists_ = file_ != nullptr;
    }
    ~FileBeside() {
        file_.reset();
        if (exists_) DeleteFileA(path_.c_str());
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    bool Exists() const { return exists_; }

    bool Write(const Contents& contents) {
        // What only the system's memory holds would be lost with the old file in a power cut.
        const bool written = WriteAll(file_.get(), contents) && FlushFileBuffers(file_.get());
        file_.reset();
        return written;
    }

    bool TakePlaceOf(const std::string& path) {
        CopyRights(path, path_);
        exists_ = !MoveFileExA(path_.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING);
        return !exists_;
    }

private:
    std::string path_;
    UniqueHandle file_;
    bool exists_ = false;
};

bool WriteOver(HANDLE file, const Contents& contents) {
    return SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0 && WriteAll(file, contents) &&
           SetEndOfFile(file);
}

// Writes over the file, and puts back what it held when that fails: that needs no more room.
bool OverwriteInPlace(const std::string& path, const Contents& contents) {
    const auto old = ReadLocalFile(path);
    if (!old) return false;
    constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const UniqueHandle file = OwnFile(CreateFileA(path.c_str(), GENERIC_WRITE, kShared, nullptr,
                                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return false;
    if (WriteOver(file.get(), contents)) {
        SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        return true;
    }
    WriteOver(file.get(), {old->data(), static_cast<std::uint32_t>(old->size())});
    return false;
}

bool ReplaceExisting(const std::string& path, const Contents& contents) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    constexpr DWORD kRefused = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & kRefused) != 0) return false;
    // The file that a link leads to is meant, not the link.
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        FileBeside beside(path);
        // A disk that fails, or is full, is no place to write over a file.
        if (beside.Exists() && !beside.Write(contents)) return false;
        if (beside.Exists() && beside.TakePlaceOf(path)) return true;
    }
    return OverwriteInPlace(path, contents);
}

}  // namespace

FileCreation CreateLocalFile(const std::string& path, const void* bytes, std::uint32_t length) {
    UniqueHandle file = CreateNew(path);
    if (!file) {
        const DWORD error = GetLastError();
        const bool exists = error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
        return exists ? FileCreation::kExists : FileCreation::kFailed;
    }
    const bool written = WriteAll(file.get(), {bytes, length});
    file.reset();
    if (!written) DeleteFileA(path.c_str());
    return written ? FileCreation::kDone : FileCreation::kFailed;
}

bool ReplaceLocalFile(const std::string& path, const void* bytes, std::uint32_t length) {
    const FileCreation creation = CreateLocalFile(path, bytes, length);
    if (creation == FileCreation::kExists) return ReplaceExisting(path, {bytes, length});
    return creation == FileCreation::kDone;
}

}  // namespace depot
