#include "offline/offline_location.h"

#include <algorithm>
#include <exception>

#include "directory/comparable_dn.h"
#include "platform/not_copied.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::uint32_t kKept = 1;
constexpr std::uint64_t kMegabyte = std::uint64_t{1024} * 1024;
constexpr DWORD kPatienceWithOthers = 5000;

// Whoever waited for longer than the first is spared the next attempts for the second.
constexpr std::chrono::milliseconds kLongWait(1000);
constexpr std::chrono::seconds kPause(30);

// Holds while edits are stored, which connects as everything else does, however that ends.
class StoringScope : NotCopied {
public:
    explicit StoringScope(bool& isStoring) : isStoring_(isStoring) { isStoring_ = true; }
    ~StoringScope() { isStoring_ = false; }

private:
    bool& isStoring_;
};

}  // namespace

std::string OfflinePlaceOf(const CDepotPath& location) {
    return Concatenate({ToLower(location.host), ":", NumberText(location.port), "\n",
                        NumberText(location.security), "\n", location.username, "\n",
                        location.credentialTarget, "\n",
                        location.locationText.empty() ? location.path : location.locationText});
}

std::shared_ptr<OfflineLocation> OfflineLocation::Of(const CDepotPath& location) {
    if (location.offline != kKept) return nullptr;
    return std::make_shared<OfflineLocation>(location);
}

OfflineLocation::OfflineLocation(const CDepotPath& location)
    : folder_(OfflinePlaceOf(location), location.offlineSize * kMegabyte) {}

bool OfflineLocation::IsApart(LdapConnection& connection) {
    const auto now = std::chrono::steady_clock::now();
    if (isStoring_) return false;
    if (nextAttempt_ && now < *nextAttempt_) return true;
    nextAttempt_.reset();
    const Result reached = connection.Reach();
    if (reached.Is(Reason::kUnreachable)) {
        const auto waited = std::chrono::steady_clock::now() - now;
        if (waited > kLongWait) nextAttempt_ = std::chrono::steady_clock::now() + kPause;
        editsAreStored_ = false;
        return true;
    }
    if (!editsAreStored_) {
        const StoringScope storing(isStoring_);
        editsAreStored_ = !storeEdits_ || !folder_.HasEdits() || storeEdits_(folder_);
    }
    return !editsAreStored_;
}

void OfflineLocation::KeepFile(const std::string& dn, const void* bytes,
                               std::size_t length) noexcept try {
    const auto held = BytesAsStored({static_cast<const std::uint8_t*>(bytes), length});
    OfflineRecord record = {.kind = OfflineKind::kFile, .dn = dn};
    record.bytes.assign(held.begin(), held.end());
    folder_.Write(std::move(record));
} catch (const std::exception&) {
    return;
}

void OfflineLocation::KeepFolder(const std::string& dn, std::vector<OfflineChild> children) noexcept
    try {
    folder_.Write({.kind = OfflineKind::kFolder, .dn = dn, .children = std::move(children)});
} catch (const std::exception&) {
    return;
}

void OfflineLocation::Forget(const std::string& dn) noexcept try {
    folder_.Remove(OfflineKind::kFile, dn);
    folder_.Remove(OfflineKind::kFolder, dn);
} catch (const std::exception&) {
    return;
}

std::optional<OfflineBytes> OfflineLocation::FileOf(const std::string& dn) const {
    for (const OfflineKind kind : {OfflineKind::kEdit, OfflineKind::kFile}) {
        if (auto record = folder_.Read(kind, dn)) return std::move(record->bytes);
    }
    return std::nullopt;
}

std::optional<std::vector<OfflineChild>> OfflineLocation::FolderOf(const std::string& dn) const {
    auto record = folder_.Read(OfflineKind::kFolder, dn);
    if (!record) return std::nullopt;
    return std::move(record->children);
}

OfflineItem OfflineLocation::Look(const std::string& dn, const std::string& parent) const {
    if (FileOf(dn)) return OfflineItem::kFile;
    if (FolderOf(dn)) return OfflineItem::kFolder;
    const auto siblings = FolderOf(parent);
    if (!siblings) return OfflineItem::kUnknown;
    const std::string wanted = ComparableDN(dn);
    const auto found =
        std::find_if(siblings->begin(), siblings->end(),
                     [&](const OfflineChild& child) { return ComparableDN(child.dn) == wanted; });
    if (found == siblings->end()) return OfflineItem::kMissing;
    return found->isFolder ? OfflineItem::kFolder : OfflineItem::kFile;
}

DWORD OfflineLocation::Queue(const std::string& dn, const std::optional<OfflineBytes>& base,
                             const OfflineBytes& bytes, const MeetEdit& meets) {
    OfflineRecord edit = {.kind = OfflineKind::kEdit, .dn = dn, .bytes = bytes, .base = base};
    if (!folder_.Prepare()) return ERROR_CANNOT_MAKE;
    const EditsLock lock(folder_.Path(), kPatienceWithOthers);
    if (!lock) return ERROR_SHARING_VIOLATION;
    const auto waiting = folder_.Read(OfflineKind::kEdit, dn);
    // One that nobody can read now must not be lost under this one.
    if (!waiting && folder_.MayHold(OfflineKind::kEdit, dn)) return ERROR_SHARING_VIOLATION;
    if (waiting) {
        if (base != waiting->bytes) {
            auto met = meets ? meets(*waiting) : std::nullopt;
            if (!met) return ERROR_REVISION_MISMATCH;
            edit.bytes = *std::move(met);
        }
        // What the server is held against is still what was fetched.
        edit.base = waiting->base;
    }
    edit.number = lock.TakeNumber();
    SetLastError(ERROR_SUCCESS);
    if (folder_.Write(std::move(edit))) {
        editsAreStored_ = false;
        return ERROR_SUCCESS;
    }
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? DWORD{ERROR_CANNOT_MAKE} : error;
}

}  // namespace depot
