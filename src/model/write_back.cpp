// The way of a changed working copy back into its entry.
#include <new>
#include <span>
#include <vector>

#include "directory/connection_scope.h"
#include "model/depot_paths.h"
#include "model/guarded_store.h"
#include "model/recovered_files.h"
#include "model/recovered_origins.h"
#include "model/working_copy.h"
#include "model/working_copy_journal.h"
#include "platform/error_text.h"
#include "platform/file_in_use.h"
#include "platform/local_file.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "platform/user_notice.h"
#include "platform/win32.h"

namespace depot {
namespace {

class WriteBack {
public:
    WriteBack(CLDAPItems& directory, const std::string& dn, const std::string& localPath)
        : directory_(directory), entries_(directory.Entries()), dn_(dn), localPath_(localPath) {}

    // `origin` is what the working copy was made from.
    Result Run(const WorkingCopyOrigin& origin) {
        RetryWhileInUse(FileUse::kOwn, [&] {
            bytes_ = ReadLocalFile(localPath_);
            return bytes_.has_value();
        });
        localError_ = bytes_ ? origin.refused.error : GetLastError();
        reason_ = origin.code;
        // What cannot be read, or is not all that was written, replaces nothing.
        const bool whole = bytes_ && localError_ == ERROR_SUCCESS;
        wasUnread_ = origin.code != LDAP_SUCCESS && origin.code != LDAP_NO_SUCH_OBJECT;
        Result stored = whole ? StoreOrQueue(origin) : Failure(LDAP_LOCAL_ERROR);
        isReplaced_ = stored && !kept_.empty();
        if (stored) return stored;
        reason_ = stored.Why().code;
        if (reason_ == LDAP_ADMIN_LIMIT_EXCEEDED) limitText_ = stored.Text();
        KeepWorkingCopy(origin, stored);
        return stored;
    }

    // Whether the only copy of the user's bytes is the working copy itself.
    bool MustStay() const { return mustStay_; }

    // Shows what was kept and returns the text; empty when nothing had to be. What was done stays
    // done also when memory runs out here.
    std::string Report() try {
        if (kept_.empty() && reason_ != kContentsChanged) return {};
        std::string text = Reason();
        if (!text.empty() && !kept_.empty()) text += "\n";
        text += kept_;
        ShowNotice(text);
        return text;
    } catch (const std::bad_alloc&) {
        return {};
    }

private:
    Result Failure(std::uint32_t code) { return directory_.Connection().Outcome(code); }

    // Has the edit wait where its server is away and the location wants that.
    Result StoreOrQueue(const WorkingCopyOrigin& origin) {
        OfflineLocation* const offline = origin.memory.offline.get();
        const bool mayWait = offline != nullptr && origin.code == LDAP_SUCCESS && origin.bytes;
        if (mayWait && offline->IsApart(directory_.Connection())) return Queue(origin);
        Result stored = Store(origin);
        if (mayWait && stored.Is(Reason::kUnreachable)) return Queue(origin);
        if (offline != nullptr) KeepStored(*offline, stored);
        if (stored && origin.memory.stored && origin.code == LDAP_SUCCESS && origin.bytes) {
            origin.memory.stored->Note(dn_, *origin.bytes, *bytes_);
        }
        return stored;
    }

    // What the entry holds now is what can be read while the server is away.
    void KeepStored(OfflineLocation& offline, const Result& stored) const {
        if (merge_.stored) {
            offline.KeepFile(dn_, merge_.stored->data(), merge_.stored->size());
        } else if (stored) {
            offline.KeepFile(dn_, Data(), Length());
        }
    }

    Result Queue(const WorkingCopyOrigin& origin) {
        const TraceSpan span("QueueEdit", dn_);
        const DWORD queued = origin.memory.offline->Queue(
            dn_, origin.bytes, *bytes_,
            [&](const OfflineRecord& waiting) { return MeetWaiting(origin, waiting); });
        span.EndWithCode(queued);
        if (queued == ERROR_SUCCESS) return {};
        if (queued == ERROR_REVISION_MISMATCH) return Failure(kContentsChanged);
        localError_ = queued;
        return Failure(LDAP_LOCAL_ERROR);
    }

    // Another edit of the same file waits, of which this one knows nothing.
    std::optional<OfflineBytes> MeetWaiting(const WorkingCopyOrigin& origin,
                                            const OfflineRecord& waiting) const {
        if (!DetectsConflicts(directory_.Location())) return *bytes_;
        if (!MergesConflicts(directory_.Location())) return std::nullopt;
        return MergedBytes(*origin.bytes, waiting.bytes, *bytes_);
    }

    Result Store(const WorkingCopyOrigin& origin) {
        // Also one that may be read by now: what was written was made of nothing.
        if (origin.code == LDAP_NO_SUCH_ATTRIBUTE) return EntryStore::Unseen();
        // The connection reports its own failure, too.
        const ConnectionScope connection(directory_.Connection());
        if (!connection) return connection.Outcome();
        // What was kept may be older than the entry.
        if (DetectsConflicts(directory_.Location()) || origin.isKept) {
            return StoreGuarded({entries_, dn_, *bytes_, origin.digest, BaseOf(origin)}, merge_);
        }
        if (origin.code != LDAP_SUCCESS) {
            if (Result kept = KeepEntry(); !kept) return kept;
        }
        return entries_.Replace(dn_, Data(), Length());
    }

    // Edits are merged where the location wants it and the fetched bytes are known.
    std::optional<std::span<const std::uint8_t>> BaseOf(const WorkingCopyOrigin& origin) const {
        if (!origin.bytes || !MergesConflicts(directory_.Location())) return std::nullopt;
        return *origin.bytes;
    }

    const std::uint8_t* Data() const { return bytes_->data(); }
    std::uint32_t Length() const { return static_cast<std::uint32_t>(bytes_->size()); }

    // Keeps what the entry holds now, of which the working copy knows nothing: also where it was
    // missing then, as with a replica that had not heard of it.
    Result KeepEntry() {
        FileBuffer present;
        Result read = entries_.ReadSeen(dn_, present);
        if (!read || present.length == 0) return read;
        kept_ = KeepRecovered(Name(), present.bytes.get(), present.length);
        NoteRecovered(kept_, {.location = &directory_.Location(),
                              .dn = dn_,
                              .reason = "the entry held it before an edit took its place"});
        return kept_.empty() ? Failure(LDAP_LOCAL_ERROR) : Result();
    }

    void KeepWorkingCopy(const WorkingCopyOrigin& origin, const Result& failure) {
        const RefusedEdits& refused = origin.refused;
        std::string kept;
        if (bytes_) {
            kept = KeepRecoveredProfile(RecoveredFolder(), Name(),
                                        refused.whole ? *refused.whole : *bytes_, refused.edits);
            NoteOrigin(kept, origin, failure);
        }
        mustStay_ = kept.empty() && PathMayExist(localPath_);
        // What is gone is named as well: its user has to know which edit it was.
        if (mustStay_ || !bytes_) kept = localPath_;
        // In a conflict the entry stays, and what was kept of it is of no use to anyone.
        if (!kept.empty() || reason_ == kContentsChanged) kept_ = std::move(kept);
    }

    // So that the kept file finds its way back. Without memory for it the file is kept all the
    // same.
    void NoteOrigin(const std::string& kept, const WorkingCopyOrigin& origin,
                    const Result& failure) const noexcept try {
        const std::string local = localError_ != ERROR_SUCCESS ? LocalErrorText() : std::string();
        RecoveredOrigin noted = {.location = &directory_.Location(),
                                 .dn = dn_,
                                 .code = failure.Why().code,
                                 .reason = local.empty() ? failure.Why().text : local};
        // After a failed fetch it was made of nothing.
        if (origin.code == LDAP_SUCCESS && origin.bytes) noted.base = *origin.bytes;
        if (origin.code == LDAP_SUCCESS) noted.baseDigest = origin.digest;
        NoteRecovered(kept, noted);
    } catch (...) {
        return;
    }

    std::string Name() const {
        const std::optional<EntryName> entry = directory_.Schema().SplitEntryName(dn_);
        return entry ? entry->name : std::string();
    }

    std::string Reason() {
        if (reason_ != LDAP_SUCCESS) directory_.SetLastError(reason_);
        if (isReplaced_) {
            return Concatenate({UnreadText(),
                                "Your changes took the place of what the directory "
                                "held, which is kept here:"});
        }
        if (reason_ == kContentsChanged) return ConflictText();
        if (reason_ == LDAP_NO_SUCH_ATTRIBUTE) return UnseenContentsText(Name());
        if (reason_ == LDAP_ADMIN_LIMIT_EXCEEDED) return limitText_;
        return localError_ != ERROR_SUCCESS ? LocalErrorText() : directory_.ErrorText();
    }

    std::string UnreadText() const {
        return Concatenate({"\"", Name(),
                            wasUnread_ ? "\" could not be read when it was opened. "
                                       : "\" was not found when it was opened. "});
    }

    std::string LocalErrorText() const {
        const std::string lead = Concatenate({"The changes of \"", Name(), "\" were not stored."});
        std::string text;
        FormatErrorText(localError_, lead.c_str(), nullptr, &text, nullptr);
        return std::string(TrimTrailingBlanks(text));
    }

    std::string ConflictText() const {
        if (wasUnread_) {
            return Concatenate({UnreadText(), "What the directory holds stays",
                                kept_.empty() ? "." : "; your changes are kept here:"});
        }
        const std::string lead =
            Concatenate({"\"", Name(), "\" was changed by someone else meanwhile. "});
        if (merge_.unmerged) {
            return Concatenate({lead,
                                "Your changes were added to that version, but for these values, "
                                "which were changed there as well:\n",
                                ConflictList(*merge_.unmerged),
                                kept_.empty() ? "" : "\nYour version is kept here:"});
        }
        return Concatenate(
            {lead, "That version stays", kept_.empty() ? "." : "; yours is kept here:"});
    }

    CLDAPItems& directory_;
    EntryStore& entries_;
    const std::string& dn_;
    const std::string& localPath_;
    std::optional<std::vector<std::uint8_t>> bytes_;
    DWORD localError_ = ERROR_SUCCESS;  // of the working copy itself
    std::uint32_t reason_ = LDAP_SUCCESS;
    GuardedMerge merge_;
    std::string limitText_;  // of LDAP_ADMIN_LIMIT_EXCEEDED
    std::string kept_;
    bool mustStay_ = false;
    bool wasUnread_ = false;   // the entry, at the load
    bool isReplaced_ = false;  // what the entry held, of which the working copy knew nothing
};

}  // namespace

int ReleaseLocal(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
                 bool writeBack, std::string* errorText, const WorkingCopyOrigin& origin) {
    if (localPath.empty()) {
        if (writeBack) directory.ReportError(LDAP_PARAM_ERROR, errorText);
        return 0;
    }
    if (!writeBack) {
        DeleteWorkingCopy(localPath);
        return 1;
    }
    WriteBack work(directory, dn, localPath);
    const Result stored = work.Run(origin);
    directory.SetLastError(CodeOf(stored));
    // One that stays is left where the message says that it is.
    if (work.MustStay()) {
        ForgetWorkingCopy(localPath);
    } else {
        DeleteWorkingCopy(localPath);
    }
    // After the working copy is deleted: nothing waits for the user.
    std::string text = work.Report();
    if (errorText != nullptr && !text.empty()) *errorText = std::move(text);
    return stored ? 1 : 0;
}

}  // namespace depot
