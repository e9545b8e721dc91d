#include "model/working_copy.h"

#include <span>
#include <utility>

#include "directory/connection_scope.h"
#include "model/recovered_files.h"
#include "model/recovered_origins.h"
#include "model/working_copy_journal.h"
#include "platform/file_in_use.h"
#include "platform/local_file.h"
#include "platform/not_copied.h"
#include "platform/temp_file.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "platform/user_notice.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr std::uint32_t kDetect = 1;
constexpr std::uint32_t kMerge = 2;

WorkingCopySource SourceOf(CLDAPItems& directory, const std::string& dn) {
    const std::optional<EntryName> entry = directory.Schema().SplitEntryName(dn);
    return {entry ? entry->name : std::string(), directory.Connection().Shared().Block().Key(), dn};
}

// A working copy that is to be filled.
struct EmptyCopy {
    CLDAPItems& directory;
    const WorkingCopySource& source;
    const std::string& localPath;
};

// Fills a working copy with what an entry holds, or an empty one with the reason why that is not
// known.
WorkingCopyOrigin FillCopy(const EmptyCopy& copy, std::span<const std::uint8_t> bytes,
                           std::uint32_t code) {
    const auto length = static_cast<std::uint32_t>(bytes.size());
    // A scanner may be looking at the new file already.
    const bool written = RetryWhileInUse(
        FileUse::kOwn, [&] { return WriteLocalFile(copy.localPath, bytes.data(), length); });
    WorkingCopyOrigin origin;
    const bool isWhole = code == LDAP_SUCCESS && written;
    origin.code = code == LDAP_SUCCESS && !written ? std::uint32_t{LDAP_LOCAL_ERROR} : code;
    if (isWhole || code != LDAP_SUCCESS) {
        NoteWorkingCopy(copy.localPath, copy.source, bytes.data(), length);
    }
    if (!isWhole || !DetectsConflicts(copy.directory.Location())) return origin;
    origin.digest = DigestOf(bytes.data(), bytes.size());
    origin.bytes.emplace(bytes.begin(), bytes.end());
    return origin;
}

// Keeps the version that was stored in the entry before and lost an edit there. Returns what its
// user has to read; empty where nothing was lost.
std::string KeepLostEdit(CLDAPItems& directory, const WorkingCopySource& source,
                         std::span<const std::uint8_t> present, StoredEdits& stored) {
    const auto lost = stored.TakeLost(source.dn, present);
    if (!lost) return {};
    const TraceSpan span("KeepLostEdit", source.dn);
    const std::string kept = KeepRecovered(source.name, lost->data(), lost->size());
    span.EndWithText(kept);
    NoteRecovered(kept, {.location = &directory.Location(),
                         .dn = source.dn,
                         .code = kContentsChanged,
                         .reason = "the entry lost changes after they were stored"});
    constexpr std::string_view kLacks =
        "\" was changed by someone else after you had stored it, and lacks changes of yours";
    return Concatenate(
        {"\"", source.name, kLacks, kept.empty() ? "." : "; your version is kept here:\n", kept});
}

// Fetches one entry into a local file. `lost` receives what its user has to read of an edit that
// is not in the entry any more.
WorkingCopyOrigin FetchFile(const EmptyCopy& copy, const CopyMemory& memory, std::string& lost) {
    CLDAPItems& directory = copy.directory;
    const WorkingCopySource& source = copy.source;
    FileBuffer contents;
    const Result read = directory.Entries().ReadSeen(source.dn, contents);
    directory.AsFlag(read, nullptr);
    const std::span<const std::uint8_t> bytes(contents.bytes.get(), contents.length);
    WorkingCopyOrigin origin = FillCopy(copy, bytes, CodeOf(read));
    if (read && memory.stored) lost = KeepLostEdit(directory, source, bytes, *memory.stored);
    if (read && memory.offline) {
        memory.offline->KeepFile(source.dn, bytes.data(), bytes.size());
        origin.bytes.emplace(bytes.begin(), bytes.end());
    }
    return origin;
}

// Fills it with what was kept of the entry; false where nothing was.
bool TakeKept(const EmptyCopy& copy, const OfflineLocation& offline, WorkingCopyOrigin& origin) {
    const TraceSpan span("LoadKeptFile", copy.source.dn);
    std::optional<OfflineBytes> kept = offline.FileOf(copy.source.dn);
    span.EndWithText(kept ? "kept" : "not kept");
    if (!kept) return false;
    origin = FillCopy(copy, *kept, LDAP_SUCCESS);
    origin.isKept = true;
    origin.digest = DigestOf(kept->data(), kept->size());
    origin.bytes = std::move(kept);
    return true;
}

// A temporary file that is deleted unless it is handed out.
class NewWorkingCopy : NotCopied {
public:
    explicit NewWorkingCopy(std::string path) : path_(std::move(path)) {}
    ~NewWorkingCopy() {
        if (!path_.empty()) DeleteWorkingCopy(path_);
    }

    const std::string& Path() const { return path_; }
    std::string Release() { return std::exchange(path_, {}); }

private:
    std::string path_;
};

}  // namespace

bool DetectsConflicts(const CDepotPath& location) {
    return location.detectConflicts == kDetect || MergesConflicts(location);
}

bool MergesConflicts(const CDepotPath& location) {
    return location.detectConflicts == kMerge;
}

std::string FetchToLocal(CLDAPItems& directory, const std::string& dn, WorkingCopyOrigin* origin,
                         CopyMemory memory) {
    NewWorkingCopy copy(MakeTempFileName());
    // Before anything waits for the server: users end programs that hang there.
    const WorkingCopySource source = SourceOf(directory, dn);
    NoteWorkingCopy(copy.Path(), source, nullptr, 0);
    const EmptyCopy empty = {directory, source, copy.Path()};
    WorkingCopyOrigin fetched;
    std::string lost;
    OfflineLocation* const offline = memory.offline.get();
    const bool isApart = offline && offline->IsApart(directory.Connection());
    bool isMade = isApart && TakeKept(empty, *offline, fetched);
    if (!isMade) {
        const ConnectionScope connection(directory, nullptr);
        isMade = connection.Outcome().IsDone();
        fetched.code = CodeOf(connection.Outcome());
        if (isMade) fetched = FetchFile(empty, memory, lost);
    }
    // A server may be lost at any moment.
    const bool isLost =
        offline && isMade && directory.Connection().Outcome(fetched.code).Is(Reason::kUnreachable);
    if (isLost) TakeKept(empty, *offline, fetched);
    // Nothing else says so before the user fills in what looks empty.
    if (fetched.code == LDAP_NO_SUCH_ATTRIBUTE) {
        ShowNotice(UnseenContentsText(source.name));
    }
    if (!lost.empty()) ShowNotice(lost);
    fetched.memory = std::move(memory);
    if (origin != nullptr) *origin = std::move(fetched);
    return isMade ? copy.Release() : std::string();
}

std::string CopyOfKnown(CLDAPItems& directory, const std::string& dn,
                        std::span<const std::uint8_t> bytes, WorkingCopyOrigin& origin) {
    NewWorkingCopy copy(MakeTempFileName());
    const WorkingCopySource source = SourceOf(directory, dn);
    WorkingCopyOrigin made = FillCopy({directory, source, copy.Path()}, bytes, LDAP_SUCCESS);
    if (made.code != LDAP_SUCCESS) return {};
    made.memory = std::move(origin.memory);
    if (made.memory.offline) made.bytes.emplace(bytes.begin(), bytes.end());
    origin = std::move(made);
    return copy.Release();
}

void KeepWorkingCopy(const std::string& localPath, const std::string& name,
                     const std::string& folder, const RefusedEdits& refused) {
    const auto bytes = ReadLocalFile(localPath);
    if (!bytes) return;
    const auto& whole = refused.whole ? *refused.whole : *bytes;
    if (KeepRecoveredProfile(folder, name, whole, refused.edits).empty()) return;
    // What is kept already must not be kept once more by the next process.
    ForgetWorkingCopy(localPath);
    DeleteFileA(localPath.c_str());
}

void DropWorkingCopy(const std::string& localPath) noexcept {
    if (DeleteFileA(localPath.c_str())) ForgetWorkingCopy(localPath);
}

}  // namespace depot
