#include "model/guarded_store.h"

#include <string_view>

#include "platform/text.h"
#include "platform/trace.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

// How often edits are put into what others store meanwhile.
constexpr int kMostMerges = 8;

// What a message names of the values that both sides changed.
constexpr std::size_t kMostConflictLines = 10;
constexpr std::size_t kLongestConflictName = 60;

std::string ReadableName(const std::string& name, bool isUtf8) {
    const std::string text = isUtf8 ? AnsiFromWide(WideFromUtf8(name)) : name;
    const std::string_view cut = CutToBytes(text, kLongestConflictName);
    return Concatenate({cut, cut.size() < text.size() ? "..." : ""});
}

std::string_view TextOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::span<const std::uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

class GuardedStore {
public:
    explicit GuardedStore(const GuardedEdit& edit) : edit_(edit), entries_(edit.entries) {}

    Result Run(GuardedMerge& made) {
        Result stored = StoreUnlessChanged();
        return edit_.base ? Merge(std::move(stored), made) : stored;
    }

private:
    // Stores only over the very bytes that were fetched.
    Result StoreUnlessChanged() {
        FileBuffer present;
        if (Result read = ReadUnchanged(edit_.fetched, present); !read) return read;
        return StoreOver(present, edit_.bytes);
    }

    Result StoreOver(const FileBuffer& present, std::span<const std::uint8_t> bytes) {
        const auto length = static_cast<std::uint32_t>(bytes.size());
        Result stored = entries_.ReplaceUnchanged(edit_.dn, bytes.data(), length, present);
        const std::uint32_t code = CodeOf(stored);
        if (code != kContentsChanged && code != LDAP_UNAVAILABLE_CRIT_EXTENSION) return stored;
        // A server that cannot compare this attribute's values refuses as well: then the entry
        // still holds what was fetched, and looking just before the change must do.
        FileBuffer again;
        if (Result read = ReadUnchanged(DigestOf(present), again); !read) return read;
        return entries_.Replace(edit_.dn, bytes.data(), length);
    }

    // Stores the edits into what others have stored meanwhile, unless `stored` is another failure.
    // Whoever is faster each time wins.
    Result Merge(Result stored, GuardedMerge& made) {
        for (int attempt = 0; attempt < kMostMerges && CodeOf(stored) == kContentsChanged;
             ++attempt) {
            FileBuffer present;
            if (Result read = entries_.ReadSeen(edit_.dn, present); !read) return read;
            const std::string_view theirs = TextOf({present.bytes.get(), present.length});
            const TraceSpan span("MergeConflict", edit_.dn);
            auto merge = MergeProfiles({TextOf(*edit_.base), theirs, TextOf(edit_.bytes)});
            span.EndWithText(!merge ? "no profile" : NumberText(merge->conflicts.size()));
            if (!merge) return stored;
            stored = merge->bytes == theirs ? Result() : StoreOver(present, BytesOf(merge->bytes));
            if (!stored) continue;
            made.stored.emplace(merge->bytes.begin(), merge->bytes.end());
            if (merge->conflicts.empty()) return stored;
            made.unmerged = std::move(merge);
            return entries_.Connection().Outcome(kContentsChanged);
        }
        return stored;
    }

    Result ReadUnchanged(const std::optional<Digest>& fetched, FileBuffer& present) {
        Result read = entries_.ReadSeen(edit_.dn, present);
        const bool isChanged = read && fetched != DigestOf(present);
        return isChanged ? entries_.Connection().Outcome(kContentsChanged) : read;
    }

    const GuardedEdit& edit_;
    EntryStore& entries_;
};

}  // namespace

Result StoreGuarded(const GuardedEdit& edit, GuardedMerge& merge) {
    return GuardedStore(edit).Run(merge);
}

std::optional<std::vector<std::uint8_t>> MergedBytes(std::span<const std::uint8_t> base,
                                                     std::span<const std::uint8_t> theirs,
                                                     std::span<const std::uint8_t> ours) {
    const auto merge = MergeProfiles({TextOf(base), TextOf(theirs), TextOf(ours)});
    if (!merge || !merge->conflicts.empty()) return std::nullopt;
    return std::vector<std::uint8_t>(merge->bytes.begin(), merge->bytes.end());
}

std::string ConflictList(const ProfileMerge& merge) {
    std::string list;
    std::size_t lines = 0;
    for (const MergeConflict& conflict : merge.conflicts) {
        if (!list.empty()) list += "\n";
        if (lines++ == kMostConflictLines) return list + "...";
        const std::string section = ReadableName(conflict.section, merge.namesAreUtf8);
        const std::string key = ReadableName(conflict.key, merge.namesAreUtf8);
        list += Concatenate({"[", section, "] ", key.empty() ? "(lines without a value)" : key});
    }
    return list;
}

}  // namespace depot
