#include "model/offline_edits.h"

#include <algorithm>
#include <span>

#include "directory/connection_scope.h"
#include "model/guarded_store.h"
#include "model/recovered_files.h"
#include "model/recovered_origins.h"
#include "model/working_copy.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "platform/user_notice.h"

namespace depot {
namespace {

constexpr std::size_t kMostFilesNamed = 10;

class WaitingEdits {
public:
    WaitingEdits(CLDAPItems& directory, OfflineFolder& folder)
        : directory_(directory), entries_(directory.Entries()), folder_(folder) {}

    // Returns false where the server cannot be reached any more.
    bool Run() {
        std::vector<OfflineRecord> edits = folder_.Edits();
        bool isReached = true;
        for (std::size_t first = 0; isReached && first < edits.size();
             first += EntryStore::kWindow) {
            const std::size_t count = std::min(EntryStore::kWindow, edits.size() - first);
            isReached = RunTogether({edits.data() + first, count});
        }
        for (const std::string& damaged : folder_.TakeDamaged()) {
            Note(Concatenate(
                {"A file that waited for the directory cannot be read any more:\n", damaged}));
        }
        if (!text_.empty()) ShowNotice(text_);
        return isReached;
    }

private:
    // Most entries hold what was fetched. Returns false where the server cannot be reached any
    // more.
    bool RunTogether(std::span<OfflineRecord> edits) {
        std::vector<ConditionalWrite> writes;
        std::vector<OfflineRecord*> written;
        for (OfflineRecord& edit : edits) {
            if (!edit.base) continue;
            writes.push_back({edit.dn, edit.bytes, DigestOf(edit.base->data(), edit.base->size())});
            written.push_back(&edit);
        }
        if (writes.size() > 1) entries_.ReplaceUnchangedTogether(writes);
        for (std::size_t at = 0; at < writes.size(); ++at) {
            if (!writes[at].isStored) continue;
            const TraceSpan span("StoreWaitingEdit", writes[at].dn);
            span.EndWithCode(LDAP_SUCCESS);
            Settle(*written[at]);
        }
        return std::all_of(edits.begin(), edits.end(),
                           [&](OfflineRecord& edit) { return IsSettled(edit) || RunAlone(edit); });
    }

    // Returns false where the server cannot be reached any more.
    bool RunAlone(OfflineRecord& edit) {
        const TraceSpan span("StoreWaitingEdit", edit.dn);
        const Result stored = Store(edit);
        span.EndWithCode(CodeOf(stored));
        if (stored.Is(Reason::kUnreachable)) return false;
        // An edit that is neither in its entry nor recovered goes on waiting.
        const bool waits = !stored && !Recover(edit, stored);
        // Where a part of it could not be merged the entry holds the rest.
        if (!waits && (stored || merge_.stored)) {
            Settle(edit);
        } else if (!waits) {
            folder_.Remove(OfflineKind::kEdit, edit.dn);
        }
        merge_ = {};
        return true;
    }

    // What was stored waits no longer and is what was seen last.
    void Settle(OfflineRecord& edit) {
        folder_.Remove(OfflineKind::kEdit, edit.dn);
        edit.kind = OfflineKind::kFile;
        edit.base.reset();
        const auto held = BytesAsStored(merge_.stored ? *merge_.stored : edit.bytes);
        edit.bytes = OfflineBytes(held.begin(), held.end());
        folder_.Write(edit);
    }
    static bool IsSettled(const OfflineRecord& edit) { return edit.kind == OfflineKind::kFile; }

    Result Store(const OfflineRecord& edit) {
        Result stored = edit.base ? StoreEdit(edit, *edit.base) : AddFile(edit);
        const bool mayBeStored = stored.Is(Reason::kChanged) || stored.Is(Reason::kExists);
        return mayBeStored && HoldsAlready(edit) ? Result() : std::move(stored);
    }

    Result StoreEdit(const OfflineRecord& edit, std::span<const std::uint8_t> base) {
        const std::optional<Digest> fetched = DigestOf(base.data(), base.size());
        std::optional<std::span<const std::uint8_t>> merged;
        if (MergesConflicts(directory_.Location())) merged = base;
        return StoreGuarded({entries_, edit.dn, edit.bytes, fetched, merged}, merge_);
    }

    // A file that was new then. Someone else may have made one of its name.
    Result AddFile(const OfflineRecord& edit) {
        Result added = AddOnce(edit);
        LdapItemList folders;
        if (added.Is(Reason::kMissing) && entries_.EnsureFoldersAbove(edit.dn, folders)) {
            added = AddOnce(edit);
        }
        if (!added.Is(Reason::kExists) || !MergesConflicts(directory_.Location())) return added;
        return StoreEdit(edit, {});
    }

    Result AddOnce(const OfflineRecord& edit) {
        return entries_.AddFile(edit.dn, NameOf(edit), edit.bytes.data(),
                                static_cast<std::uint32_t>(edit.bytes.size()));
    }

    bool HoldsAlready(const OfflineRecord& edit) {
        FileBuffer present;
        return entries_.ReadSeen(edit.dn, present) &&
               std::ranges::equal(BytesAsStored(edit.bytes),
                                  std::span(present.bytes.get(), present.length));
    }

    // Returns whether the edit needs to wait no longer.
    bool Recover(const OfflineRecord& edit, const Result& failure) {
        const std::string kept = KeepRecovered(NameOf(edit), edit.bytes.data(), edit.bytes.size());
        if (kept.empty()) return false;
        NoteOrigin(kept, edit, failure.Why());
        std::string text = Concatenate(
            {"\"", NameOf(edit), "\" was edited while the directory ", "could not be reached"});
        if (merge_.unmerged) {
            text +=
                Concatenate({". Your changes were added to what someone else has stored since, "
                             "but for these values, which were changed there as well:\n",
                             ConflictList(*merge_.unmerged), "\nYour version is kept here:\n"});
        } else if (failure.Is(Reason::kChanged) || failure.Is(Reason::kExists)) {
            text +=
                ", and someone else has stored another version since. That version stays; "
                "yours is kept here:\n";
        } else {
            text += Concatenate({", and cannot be stored. ", TrimTrailingBlanks(failure.Text()),
                                 "\nYour version is kept here:\n"});
        }
        Note(text + kept);
        return true;
    }

    void NoteOrigin(const std::string& kept, const OfflineRecord& edit, const Error& why) const {
        RecoveredOrigin origin = {.location = &directory_.Location(),
                                  .dn = edit.dn,
                                  .code = why.code,
                                  .reason = why.text,
                                  .isNew = !edit.base};
        if (edit.base) origin.base = *edit.base;
        NoteRecovered(kept, origin);
    }

    void Note(const std::string& text) {
        if (notes_++ == kMostFilesNamed) text_ += "\n\n...";
        if (notes_ > kMostFilesNamed) return;
        if (!text_.empty()) text_ += "\n\n";
        text_ += text;
    }

    std::string NameOf(const OfflineRecord& edit) const {
        const auto entry = directory_.Schema().SplitEntryName(edit.dn);
        return entry ? entry->name : std::string();
    }

    CLDAPItems& directory_;
    EntryStore& entries_;
    OfflineFolder& folder_;
    GuardedMerge merge_;
    std::string text_;
    std::size_t notes_ = 0;
};

}  // namespace

bool StoreWaitingEdits(CLDAPItems& directory, OfflineFolder& folder) {
    const EditsLock lock(folder.Path(), 0);
    if (!lock) return true;
    const ConnectionScope connection(directory.Connection());
    if (!connection) return !connection.Outcome().Is(Reason::kUnreachable);
    return WaitingEdits(directory, folder).Run();
}

}  // namespace depot
