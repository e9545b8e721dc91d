#include "platform/replace_file.h"

#include "platform/code_page.h"
#include "platform/file_in_use.h"
#include "platform/handles.h"
#include "platform/local_file.h"
#include "platform/not_copied.h"
#include "platform/paths.h"
#include "platform/private_file.h"
#include "platform/same_file.h"

namespace depot {
namespace {

// Another process may be writing a file of its own in the same folder.
constexpr DWORD kMaxNames = 64;

struct Contents {
    const void* bytes;
    DWORD length;
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
    wsprintfA(name, "lda%04x.tmp", static_cast<unsigned>(number & 0xFFFF));
    return path.substr(0, folder) + name;
}

// A new file in the folder of another, gone at the end unless it took the other one's place.
class FileBeside : NotCopied {
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
        if (!exists_) return;
        const DWORD error = GetLastError();
        DeleteOwnFile(path_);
        SetLastError(error);
    }

    bool Exists() const { return exists_; }

    bool Write(const Contents& contents, Flush flush, std::optional<FileState>* state = nullptr) {
        const bool written = WriteAll(file_.get(), contents) &&
                             (flush == Flush::kLater || FlushFileBuffers(file_.get()));
        const DWORD error = GetLastError();
        if (written && state != nullptr) *state = GiveOwnState(file_.get());
        file_.reset();
        SetLastError(error);
        return written;
    }

    // Takes the place by one rename.
    bool Rename(const std::string& path, Flush flush) {
        return MoveTo(path, MOVEFILE_REPLACE_EXISTING, flush);
    }

    // Takes a place where nothing is.
    bool TakeFreePlace(const std::string& path, Flush flush) { return MoveTo(path, 0, flush); }

    bool CopyFrom(const std::string& source) {
        file_.reset();
        if (!CopyFileA(source.c_str(), path_.c_str(), FALSE)) return false;
        // The exchange takes no read-only file.
        SetFileAttributesA(path_.c_str(), FILE_ATTRIBUTE_NORMAL);
        return FlushLocalFile(path_);
    }

    // Takes the place only with everything that belongs to the file there.
    bool TakePlaceOf(const std::string& path) {
        if (!CopyOwner(path, path_)) return false;
        CopyRights(path, path_);
        const std::string old = StripExtension(path_) + ".old";
        if (GetFileAttributesA(old.c_str()) != INVALID_FILE_ATTRIBUTES) return false;
        if (ReplaceFileA(path.c_str(), path_.c_str(), old.c_str(), 0, nullptr, nullptr)) {
            exists_ = false;
            DeleteOwnFile(old);
            return true;
        }
        const DWORD error = GetLastError();
        // The system may stop between its two renames.
        MoveFileExA(old.c_str(), path.c_str(), 0);
        SetLastError(error);
        return false;
    }

private:
    bool MoveTo(const std::string& path, DWORD flags, Flush flush) {
        const DWORD through = flush == Flush::kNow ? MOVEFILE_WRITE_THROUGH : 0;
        if (!MoveFileExA(path_.c_str(), path.c_str(), flags | through)) return false;
        exists_ = false;
        return true;
    }

    std::string path_;
    UniqueHandle file_;
    bool exists_ = false;
};

bool WriteOver(HANDLE file, const Contents& contents) {
    return SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0 && WriteAll(file, contents) &&
           SetEndOfFile(file);
}

// Files whose place another one can take: a folder and a read-only file are refused, and of a link
// the file that it leads to is meant.
bool IsOrdinary(DWORD attributes) {
    constexpr DWORD kOthers =
        FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_REPARSE_POINT;
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & kOthers) == 0;
}

// Tries again where somebody else has the file. The new bytes stay beside it meanwhile.
bool Exchange(FileBeside* beside, const std::string& path, const Contents& contents) {
    return RetryWhileInUse(FileUse::kShared, [&] {
        return (beside != nullptr && beside->TakePlaceOf(path)) ||
               WriteOverLocalFile(path, contents.bytes, contents.length);
    });
}

bool ReplaceExisting(const std::string& path, const Contents& contents) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    constexpr DWORD kRefused = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
    if (attributes == INVALID_FILE_ATTRIBUTES) return false;
    if ((attributes & kRefused) != 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    bool replaced = false;
    if (IsOrdinary(attributes)) {
        FileBeside beside(path);
        // A disk that fails, or is full, is no place to write over a file.
        // What only the system's memory holds would be lost with the old file in a power cut.
        if (beside.Exists() && !beside.Write(contents, Flush::kNow)) return false;
        replaced = Exchange(beside.Exists() ? &beside : nullptr, path, contents);
    } else {
        replaced = Exchange(nullptr, path, contents);
    }
    if (replaced) SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    return replaced;
}

// Copies onto an ordinary file. Returns nothing where only the system can do it.
std::optional<bool> CopyOntoFile(const std::string& source, const std::string& path) {
    if (!IsOrdinary(GetFileAttributesA(path.c_str())) || IsSameFile(source, path)) return {};
    FileBeside beside(path);
    if (!beside.Exists()) return {};
    if (!beside.CopyFrom(source)) return false;
    if (!beside.TakePlaceOf(path)) return {};
    const DWORD attributes = GetFileAttributesA(source.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) SetFileAttributesA(path.c_str(), attributes);
    return true;
}

bool SaysExists(DWORD error) {
    return error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
}

// Makes the file under its own name, under which it stays cut where it can be neither filled nor
// deleted.
FileCreation CreateInPlace(const std::string& path, const Contents& contents, Flush flush) {
    UniqueHandle file = CreateNew(path);
    if (!file) {
        return SaysExists(GetLastError()) ? FileCreation::kExists : FileCreation::kFailed;
    }
    const bool written =
        WriteAll(file.get(), contents) && (flush == Flush::kLater || FlushFileBuffers(file.get()));
    const DWORD error = GetLastError();
    file.reset();
    if (!written) DeleteOwnFile(path);
    SetLastError(error);
    return written ? FileCreation::kDone : FileCreation::kFailed;
}

}  // namespace

FileCreation CreateLocalFile(const std::string& path, const void* bytes, std::uint32_t length,
                             Flush flush) {
    if (PathExists(path)) return FileCreation::kExists;
    const Contents contents = {bytes, length};
    FileBeside beside(path);
    if (!beside.Exists()) return CreateInPlace(path, contents, flush);
    if (!beside.Write(contents, flush)) return FileCreation::kFailed;
    if (RetryWhileInUse(FileUse::kShared, [&] { return beside.TakeFreePlace(path, flush); })) {
        return FileCreation::kDone;
    }
    // Some folders take new files and let none be renamed.
    return SaysExists(GetLastError()) ? FileCreation::kExists
                                      : CreateInPlace(path, contents, flush);
}

bool ReplaceLocalFile(const std::string& path, const void* bytes, std::uint32_t length,
                      Flush flush) {
    const FileCreation creation = CreateLocalFile(path, bytes, length, flush);
    if (creation == FileCreation::kExists) return ReplaceExisting(path, {bytes, length});
    return creation == FileCreation::kDone;
}

bool ExchangeOwnFile(const std::string& path, std::span<const std::uint8_t> bytes, Flush flush,
                     std::optional<FileState>* state) {
    FileBeside beside(path);
    const Contents contents = {bytes.data(), static_cast<DWORD>(bytes.size())};
    if (!beside.Exists() || !beside.Write(contents, flush, state)) return false;
    return RetryWhileInUse(FileUse::kOwn, [&] { return beside.Rename(path, flush); });
}

std::optional<std::vector<std::uint8_t>> ReadOwnFile(const std::string& path) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    UniqueHandle file;
    RetryWhileInUse(FileUse::kOwn, [&] {
        file = OwnFile(CreateFileA(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
        return file != nullptr;
    });
    return file ? ReadOpenFile(file.get()) : std::nullopt;
}

bool CopyLocalFile(const std::string& source, const std::string& path, bool failIfExists,
                   Flush flush) {
    std::optional<bool> copied;
    if (!failIfExists) copied = CopyOntoFile(source, path);
    if (!copied) copied = CopyFileA(source.c_str(), path.c_str(), failIfExists) != FALSE;
    return *copied && (flush == Flush::kLater || FlushLocalFile(path));
}

bool WriteOverLocalFile(const std::string& path, const void* bytes, std::size_t length) {
    constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const UniqueHandle file =
        OwnFile(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, kShared, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && WriteOverOpenFile(file.get(), bytes, length);
}

bool WriteOverOpenFile(HANDLE file, const void* bytes, std::size_t length) {
    DWORD written = 0;
    // A device keeps nothing that could be lost.
    if (GetFileType(file) != FILE_TYPE_DISK) {
        return WriteFile(file, bytes, static_cast<DWORD>(length), &written, nullptr) &&
               written == length;
    }
    const auto old = ReadOpenFile(file);
    if (!old) return false;
    if (WriteOver(file, {bytes, static_cast<DWORD>(length)}) && FlushFileBuffers(file)) return true;
    const DWORD error = GetLastError();
    // That needs no more room than there was.
    WriteOver(file, {old->data(), static_cast<DWORD>(old->size())});
    SetLastError(error);
    return false;
}

bool FlushLocalFile(const std::string& path) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const UniqueHandle file = OwnFile(CreateFileA(path.c_str(), GENERIC_WRITE, kShareAll, nullptr,
                                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return !file || FlushFileBuffers(file.get());
}

}  // namespace depot
