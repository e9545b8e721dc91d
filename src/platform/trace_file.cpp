#include "platform/trace_file.h"

#include <mutex>
#include <utility>

#include "platform/not_copied.h"
#include "platform/text.h"
#include "platform/trace_permission.h"
#include "platform/win32.h"

namespace depot {
namespace {

bool IsPlain(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION found = {};
    return GetFileInformationByHandle(file, &found) &&
           IsPlainFile({GetFileType(file) == FILE_TYPE_DISK,
                        (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0,
                        found.nNumberOfLinks});
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

bool IsSameFile(HANDLE left, HANDLE right) {
    BY_HANDLE_FILE_INFORMATION one = {}, other = {};
    return GetFileInformationByHandle(left, &one) && GetFileInformationByHandle(right, &other) &&
           one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
           one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

// Whether the path still leads to the file: another process may have renamed it.
bool IsAt(const std::string& path, HANDLE file) {
    const UniqueHandle found =
        OwnFile(CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    return found && IsSameFile(found.get(), file);
}

// The right to rename one file, wherever it was renamed to meanwhile: a byte far behind its end is
// locked. Nothing waits for it, because a process may be stopped while it has it.
class RenamingRight : NotCopied {
public:
    explicit RenamingRight(HANDLE file) : file_(file) {
        OVERLAPPED place = Place();
        isTaken_ = LockFileEx(file_, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                              &place) != FALSE;
    }
    ~RenamingRight() {
        OVERLAPPED place = Place();
        if (isTaken_) UnlockFileEx(file_, 0, 1, 0, &place);
    }

    bool IsTaken() const { return isTaken_; }

private:
    static OVERLAPPED Place() {
        OVERLAPPED place = {};
        place.OffsetHigh = 0x3FFFFFFF;
        return place;
    }

    HANDLE file_;
    bool isTaken_ = false;
};

std::string OlderName(const std::string& path, std::uint32_t number) {
    return Concatenate({path, ".", NumberText(number)});
}

bool Rename(const std::string& from, const std::string& to) {
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

}  // namespace

bool TraceFile::Open(const std::string& path, const TraceLimit& limit) {
    path_ = path;
    limit_ = limit;
    file_ = OpenForAppending();
    return IsOpen();
}

void TraceFile::Close() {
    file_.reset();
}

// Several processes may append to one file: a write to its end is not torn. A link is opened itself
// and then refused. Whoever waits at a pipe learns nothing of who opened it. A lock takes the right
// to read.
UniqueHandle TraceFile::OpenForAppending() const {
    const DWORD access = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES |
                         (limit_.mostBytes != 0 ? DWORD{FILE_READ_DATA} : DWORD{0});
    UniqueHandle file = OwnFile(CreateFileA(path_.c_str(), access, kShareAll, nullptr, OPEN_ALWAYS,
                                            FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT |
                                                SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS,
                                            nullptr));
    if (file && !IsPlain(file.get())) file.reset();
    return file;
}

void TraceFile::Append(const std::string& line) const {
    DWORD written = 0;
    WriteFile(file_.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

std::uint64_t TraceFile::Size() const {
    LARGE_INTEGER size = {};
    return GetFileSizeEx(file_.get(), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

void TraceFile::Write(const std::string& line) {
    if (limit_.mostBytes == 0) return Append(line);
    const std::lock_guard guard(lock_);
    if (Size() + line.size() > limit_.mostBytes) Rotate();
    if (Size() + line.size() <= 2 * limit_.mostBytes) Append(line);
}

// A process that finds the file renamed by another one continues with the new one.
void TraceFile::Rotate() {
    UniqueHandle former;  // closed last
    const RenamingRight right(file_.get());
    if (!right.IsTaken()) return;
    if (IsAt(path_, file_.get())) {
        for (std::uint32_t number = limit_.olderFiles; number > 1; --number) {
            Rename(OlderName(path_, number - 1), OlderName(path_, number));
        }
        if (!Rename(path_, OlderName(path_, 1))) return;
    }
    UniqueHandle opened = OpenForAppending();
    if (!opened) return;
    former = std::move(file_);
    file_ = std::move(opened);
}

}  // namespace depot
