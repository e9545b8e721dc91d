#include "recovery/kept_copies.h"

#include <algorithm>

#include "model/recovered_files.h"
#include "model/recovered_origins.h"
#include "offline/offline_folder.h"
#include "platform/file_search.h"
#include "platform/file_time.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

constexpr DWORD kPatience = 3000;
// What the keys of secured servers begin with.
constexpr std::string_view kSecured = "TLS ";
constexpr std::string_view kEdits = ".edit";
// So many digits of each of the two names of an edit's file name it for users.
constexpr std::size_t kShownDigits = 8;

FILETIME FileTimeOf(std::uint64_t time) {
    return {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
}

std::uint64_t SizeOf(const WIN32_FIND_DATAA& found) {
    return Joined(found.nFileSizeHigh, found.nFileSizeLow);
}

KeptCopy RecoveredCopy(const std::string& folder, const WIN32_FIND_DATAA& found) {
    KeptCopy copy;
    copy.name = Utf8FromWide(WideFromAnsi(found.cFileName));
    copy.path = JoinPath(folder, found.cFileName);
    copy.size = SizeOf(found);
    NotedOrigin noted = ReadOrigin(found.cFileName);
    copy.hasDamagedRecord = noted.isDamaged;
    copy.origin = std::move(noted.record);
    copy.time = copy.origin ? FileTimeOf(copy.origin->time) : found.ftLastWriteTime;
    return copy;
}

void AddRecovered(KeptCopies& kept) {
    SweepOrigins();
    const std::string folder = RecoveredFolder();
    if (folder.empty()) return;
    FileSearch search(JoinPath(folder, "*"));
    WIN32_FIND_DATAA found = {};
    while (search.Next(found)) {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            kept.copies.push_back(RecoveredCopy(folder, found));
        }
    }
    kept.unsafeNames = search.UnsafeNames();
    std::sort(kept.copies.begin(), kept.copies.end(),
              [](const KeptCopy& a, const KeptCopy& b) { return a.name < b.name; });
}

OriginRecord OriginOf(OfflineRecord&& edit) {
    OriginRecord origin;
    origin.place = std::move(edit.place);
    origin.dn = std::move(edit.dn);
    origin.time = edit.time;
    origin.isNew = !edit.base;
    origin.base = std::move(edit.base);
    return origin;
}

void AddWaitingIn(const std::string& folder, std::vector<KeptCopy>& copies) {
    FileSearch search(Concatenate({JoinPath(folder, "*"), kEdits}));
    WIN32_FIND_DATAA found = {};
    while (search.Next(found)) {
        const std::string name = found.cFileName;
        if (!name.ends_with(kEdits)) continue;
        KeptCopy copy;
        copy.path = JoinPath(folder, name);
        copy.isWaiting = true;
        copy.lockFolder = folder;
        copy.name = Concatenate({CutToBytes(NamePart(folder), kShownDigits), "-",
                                 CutToBytes(name, kShownDigits), kEdits});
        auto edit = ReadOfflineFile(copy.path);
        copy.hasDamagedRecord = !edit || edit->kind != OfflineKind::kEdit;
        copy.size = edit ? edit->bytes.size() : SizeOf(found);
        copy.time = edit ? FileTimeOf(edit->time) : found.ftLastWriteTime;
        if (!copy.hasDamagedRecord) copy.origin = OriginOf(*std::move(edit));
        copies.push_back(std::move(copy));
    }
}

Error SystemError(DWORD error) {
    return {Reason::kRefused, CodeKind::kSystem, error};
}

}  // namespace

std::string KeptCopy::Server() const {
    if (!origin) return {};
    // In UTF-8 no part of a character is a line's end.
    const std::string key =
        origin->server.empty() ? origin->place.substr(0, origin->place.find('\n')) : origin->server;
    return key.starts_with(kSecured) ? key.substr(kSecured.size()) : key;
}

bool KeptCopy::IsMadeFrom(const KeptBytes& bytes) const {
    if (!origin) return false;
    if (origin->base) return *origin->base == bytes;
    return origin->baseDigest && *origin->baseDigest == DigestOf(bytes.data(), bytes.size());
}

bool KeptCopy::HasKnownBase() const {
    return origin && (origin->base || origin->baseDigest || origin->isNew);
}

KeptCopies FindKeptCopies() {
    KeptCopies kept;
    AddRecovered(kept);
    for (const std::string& folder : OfflineFolders()) AddWaitingIn(folder, kept.copies);
    return kept;
}

Result ReadKept(const KeptCopy& copy, KeptBytes& bytes) {
    if (copy.isWaiting) {
        auto edit = ReadOfflineFile(copy.path);
        if (!edit) return SystemError(ERROR_INVALID_DATA);
        bytes = std::move(edit->bytes);
        return {};
    }
    auto read = ReadLocalFile(copy.path);
    if (!read) return SystemError(GetLastError());
    bytes = *std::move(read);
    return {};
}

Result DeleteKept(const KeptCopy& copy, const std::optional<KeptBytes>& bytes) {
    std::optional<EditsLock> lock;
    if (copy.isWaiting && !lock.emplace(copy.lockFolder, kPatience)) {
        return SystemError(kBeingStored);
    }
    if (bytes) {
        KeptBytes now;
        const Result read = ReadKept(copy, now);
        if (!read || now != *bytes) return Error(Reason::kChanged);
    }
    if (!DeleteFileA(copy.path.c_str())) return SystemError(GetLastError());
    if (!copy.isWaiting) ForgetOrigin(NamePart(copy.path));
    return {};
}

}  // namespace depot
