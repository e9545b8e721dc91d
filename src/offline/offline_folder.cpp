#include "offline/offline_folder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "directory/comparable_dn.h"
#include "offline/seen_records.h"
#include "platform/data_protection.h"
#include "platform/file_in_use.h"
#include "platform/file_search.h"
#include "platform/file_time.h"
#include "platform/held_file.h"
#include "platform/known_folders.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/private_file.h"
#include "platform/replace_file.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "platform/wide_text.h"
#include "platform/win32.h"
// Behind the system's own headers.
#include <shlobj.h>

namespace depot {
namespace {

// The names of the three kinds, by their numbers.
constexpr std::string_view kExtensions[] = {"", ".file", ".folder", ".edit"};
constexpr char kLockName[] = "edits.lock";
// Half a digest keeps names short and is still unique.
constexpr std::size_t kNameBytes = 16;
constexpr DWORD kLockPause = 10;
// Far longer than any process takes for a file, in units of 100 nanoseconds.
constexpr std::uint64_t kLeftForGood = std::uint64_t{3600} * 10'000'000;

std::string HexName(std::string_view text) {
    const Digest digest = DigestOf(text.data(), text.size());
    std::string name;
    for (std::size_t at = 0; at < kNameBytes; ++at) {
        name += "0123456789abcdef"[digest[at] >> 4];
        name += "0123456789abcdef"[digest[at] & 0xF];
    }
    return name;
}

std::string BaseFolder() {
    const std::string base = GetSpecialFolderPath(CSIDL_LOCAL_APPDATA);
    return base.empty() ? base : JoinPath(base, kOfflineFolder);
}

// Names as they are in files.
std::string Stored(const std::string& name) {
    return ExactUtf8FromAnsi(name).value_or(name);
}

// Gives a record's names the code page of this process; false where it cannot hold them.
bool TakeNames(OfflineRecord& record) {
    const auto dn = ExactAnsiFromUtf8(record.dn);
    const auto place = ExactAnsiFromUtf8(record.place);
    if (!dn || !place) return false;
    record.dn = *dn;
    record.place = *place;
    std::erase_if(record.children, [](OfflineChild& child) {
        const auto name = ExactAnsiFromUtf8(child.dn);
        if (name) child.dn = *name;
        return !name;
    });
    return true;
}

void StoreNames(OfflineRecord& record) {
    record.dn = Stored(record.dn);
    record.place = Stored(record.place);
    for (OfflineChild& child : record.children) child.dn = Stored(child.dn);
}

std::optional<OfflineRecord> Opened(const std::vector<std::uint8_t>& sealed) {
    const auto bytes = UnprotectForUser(sealed);
    return bytes ? DecodeOfflineRecord(*bytes) : std::nullopt;
}

}  // namespace

EditsLock::EditsLock(const std::string& folder, DWORD milliseconds) {
    if (folder.empty()) return;
    const std::string path = JoinPath(folder, kLockName);
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        file_ = OwnFile(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file_ || GetLastError() != ERROR_SHARING_VIOLATION || GetTickCount64() >= end) return;
        Sleep(kLockPause);
    }
}

// The number stands in the lock's file. A power cut may take it back, which leaves edits of
// different files in another order.
std::uint64_t EditsLock::TakeNumber() const {
    std::uint64_t number = 0;
    DWORD moved = 0;
    if (!ReadFile(file_.get(), &number, sizeof(number), &moved, nullptr) ||
        moved != sizeof(number)) {
        number = 0;
    }
    ++number;
    std::array<std::uint8_t, sizeof(number)> bytes = {};
    std::memcpy(bytes.data(), &number, sizeof(number));
    WriteAt(file_.get(), 0, bytes);
    return number;
}

OfflineFolder::OfflineFolder(std::string place, std::uint64_t limit)
    : place_(std::move(place)), limit_(limit) {
    const std::string base = BaseFolder();
    if (!base.empty()) path_ = JoinPath(base, HexName(Stored(place_)));
}

std::string OfflineFolder::FileOf(OfflineKind kind, std::string_view dn) const {
    return Concatenate({JoinPath(path_, HexName(Stored(ComparableDN(dn)))),
                        kExtensions[static_cast<std::size_t>(kind)]});
}

Digest ContentsOf(const OfflineRecord& record) {
    if (record.kind == OfflineKind::kFile) {
        return DigestOf(record.bytes.data(), record.bytes.size());
    }
    const OfflineBytes bytes = EncodeOfflineRecord({.children = record.children});
    return DigestOf(bytes.data(), bytes.size());
}

std::optional<OfflineRecord> ReadOfflineFile(const std::string& path) {
    const auto sealed = ReadOwnFile(path);
    return sealed ? Opened(*sealed) : std::nullopt;
}

std::optional<OfflineRecord> OfflineFolder::ReadFile(const std::string& path) const {
    if (!PathExists(path)) return std::nullopt;
    // One that another program holds is not damaged.
    const auto sealed = ReadOwnFile(path);
    if (!sealed) return std::nullopt;
    std::optional<OfflineRecord> record = Opened(*sealed);
    if (record && !TakeNames(*record)) return std::nullopt;
    if (record && record->place == place_) return record;
    SetAside(path);
    return std::nullopt;
}

std::optional<OfflineRecord> OfflineFolder::Read(OfflineKind kind, std::string_view dn) const {
    if (path_.empty()) return std::nullopt;
    const std::string path = FileOf(kind, dn);
    std::optional<OfflineRecord> record = ReadFile(path);
    if (!record) return std::nullopt;
    if (record->kind == kind && ComparableDN(record->dn) == ComparableDN(dn)) return record;
    SetAside(path);
    return std::nullopt;
}

void OfflineFolder::SetAside(const std::string& path) const {
    const TraceSpan span("SetAsideOfflineFile", path);
    const std::string aside = path + ".damaged";
    const bool done = MoveFileExA(path.c_str(), aside.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
    span.EndWithCode(done ? ERROR_SUCCESS : GetLastError());
    if (done) damaged_.push_back(aside);
}

std::vector<std::string> OfflineFolder::TakeDamaged() const {
    return std::exchange(damaged_, {});
}

bool OfflineFolder::Prepare() const {
    if (path_.empty()) return false;
    if (IsLocalFolder(path_)) return true;
    const std::string base = BaseFolder();
    EnsureLocalFolder(ParentFolderKeepSlash(base));
    CreatePrivateFolder(base);
    CreatePrivateFolder(path_);
    return IsLocalFolder(path_);
}

std::vector<OfflineFolder::KeptFile> OfflineFolder::KeptFiles() const {
    std::vector<KeptFile> files;
    for (const OfflineKind kind : {OfflineKind::kFile, OfflineKind::kFolder}) {
        const std::string_view extension = kExtensions[static_cast<std::size_t>(kind)];
        FileSearch search(Concatenate({JoinPath(path_, "*"), extension}));
        WIN32_FIND_DATAA found = {};
        while (search.Next(found)) {
            if (!std::string_view(found.cFileName).ends_with(extension)) continue;
            files.push_back({found.cFileName, Joined(found.nFileSizeHigh, found.nFileSizeLow),
                             Joined(found.ftLastWriteTime)});
        }
    }
    return files;
}

void OfflineFolder::RemoveLeftovers() const {
    FileSearch search(JoinPath(path_, "lda*.tmp"));
    WIN32_FIND_DATAA found = {};
    const std::uint64_t now = TimeNow();
    while (search.Next(found)) {
        if (Joined(found.ftLastWriteTime) + kLeftForGood > now) continue;
        DeleteFileA(JoinPath(path_, found.cFileName).c_str());
    }
}

void OfflineFolder::MakeRoom(const std::string& path, std::uint64_t bytes) {
    const auto replaced = StateOf(path);
    const std::uint64_t less = replaced ? replaced->size : 0;
    if (used_) used_ = std::max(*used_, less) - less + bytes;
    if (used_ && *used_ <= limit_) return;
    RemoveLeftovers();
    // Other processes add and delete as well.
    std::vector<KeptFile> files = KeptFiles();
    std::sort(files.begin(), files.end(),
              [](const KeptFile& one, const KeptFile& other) { return one.time < other.time; });
    const std::string own = NamePart(path);
    std::erase_if(files, [&](const KeptFile& file) { return file.name == own; });
    std::uint64_t used = bytes;
    for (const KeptFile& file : files) used += file.size;
    for (const KeptFile& file : files) {
        if (used <= limit_) break;
        if (DeleteFileA(JoinPath(path_, file.name).c_str())) used -= file.size;
    }
    used_ = used;
}

bool OfflineFolder::Write(OfflineRecord record) {
    if (!Prepare()) return false;
    record.place = place_;
    record.time = TimeNow();
    const std::string path = FileOf(record.kind, record.dn);
    const bool isEdit = record.kind == OfflineKind::kEdit;
    const Digest contents = isEdit ? Digest() : ContentsOf(record);
    if (!isEdit && Holds(record, contents)) return true;
    StoreNames(record);
    const auto sealed = ProtectForUser(EncodeOfflineRecord(record));
    if (!sealed) return false;
    if (!isEdit) {
        if (sealed->size() > limit_) {
            DeleteFileA(path.c_str());
            return false;
        }
        MakeRoom(path, sealed->size());
    }
    if (isEdit) return ExchangeOwnFile(path, *sealed, Flush::kNow);
    std::optional<FileState> state;
    if (!ExchangeOwnFile(path, *sealed, Flush::kLater, &state)) return false;
    if (state) NoteSeen(path, *state, contents);
    return true;
}

bool OfflineFolder::Remove(OfflineKind kind, std::string_view dn) const {
    if (path_.empty()) return true;
    const std::string path = FileOf(kind, dn);
    return DeleteOwnFile(path) || !PathMayExist(path);
}

bool OfflineFolder::MayHold(OfflineKind kind, std::string_view dn) const {
    return !path_.empty() && PathMayExist(FileOf(kind, dn));
}

bool OfflineFolder::Holds(const OfflineRecord& record, const Digest& contents) const {
    if (path_.empty()) return false;
    const std::string path = FileOf(record.kind, record.dn);
    // Before the file is read: what takes its place afterwards has another state.
    const auto state = StateOf(path);
    if (state && WasSeen(path, *state, contents)) return true;
    const auto kept = Read(record.kind, record.dn);
    if (!kept || kept->bytes != record.bytes || kept->children != record.children) return false;
    if (state && IsSettled(*state)) NoteSeen(path, *state, contents);
    return true;
}

bool OfflineFolder::HasEdits() const {
    if (path_.empty()) return false;
    WIN32_FIND_DATAA found = {};
    return FileSearch(JoinPath(path_, "*.edit")).Next(found);
}

std::vector<OfflineRecord> OfflineFolder::Edits() const {
    std::vector<OfflineRecord> edits;
    if (path_.empty()) return edits;
    for (const std::string& name : NamesIn(path_, ".edit")) {
        auto edit = ReadFile(JoinPath(path_, name));
        if (edit && edit->kind == OfflineKind::kEdit) edits.push_back(*std::move(edit));
    }
    std::sort(edits.begin(), edits.end(), [](const OfflineRecord& one, const OfflineRecord& other) {
        return one.number < other.number;
    });
    return edits;
}

std::vector<std::string> OfflineFolders() {
    std::vector<std::string> folders;
    const std::string base = BaseFolder();
    if (base.empty()) return folders;
    FileSearch search(JoinPath(base, "*"));
    WIN32_FIND_DATAA found = {};
    while (search.Next(found)) {
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (isFolder && !IsDotName(found)) folders.push_back(JoinPath(base, found.cFileName));
    }
    return folders;
}

}  // namespace depot
