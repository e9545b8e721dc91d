// Changing an entry only while it holds what it is believed to hold.
#include <algorithm>
#include <optional>

#include "directory/assertion_control.h"
#include "directory/entry_batches.h"
#include "directory/entry_store.h"

namespace depot {
namespace {

bool IsAnother(const FileBuffer& seen, const FileBuffer& present) {
    return seen.bytes != nullptr &&
           !std::equal(seen.bytes.get(), seen.bytes.get() + seen.length, present.bytes.get(),
                       present.bytes.get() + present.length);
}

// A server that cannot compare this attribute's values refuses as one does whose entry changed.
bool SaysWhetherItIsUnchanged(std::uint32_t code) {
    return code != kContentsChanged && code != LDAP_UNAVAILABLE_CRIT_EXTENSION;
}

}  // namespace

// Deletes the entry on the condition that it holds `present`; nothing where the server could not
// compare, or where it says that the entry holds something else.
std::optional<std::uint32_t> EntryStore::RemoveOnCondition(const std::string& dn,
                                                           const FileBuffer& present) {
    if (present.length > kLargestCondition || !OffersAssertions()) return std::nullopt;
    ContentsAssertion unchanged(schema_.ContentsAttribute(), present);
    const std::uint32_t code =
        Client().ldap_delete_ext_s(Handle(), ClientText(dn), unchanged.Controls(), nullptr);
    return SaysWhetherItIsUnchanged(code) ? std::optional(code) : std::nullopt;
}

void EntryStore::RemoveTogether(std::span<Removal> removals) {
    std::vector<Removal*> conditional;
    std::vector<Removal*> plain;
    for (Removal& removal : removals) {
        (removal.contents ? conditional : plain).push_back(&removal);
    }
    Together(
        plain.size(),
        [&](RequestBatch& batch, std::size_t index) { batch.Delete(plain[index]->dn); },
        [&](std::size_t index, std::uint32_t code, LDAPMessage*) {
            plain[index]->result = connection_.Outcome(code);
        },
        [&](std::size_t index) { plain[index]->result = Remove(plain[index]->dn); });
    if (!conditional.empty()) RemoveUnchangedTogether(conditional);
}

// Reads all, and then deletes those that are unchanged on that condition; whatever the server
// answers to it that does not settle the matter is looked at by itself.
void EntryStore::RemoveUnchangedTogether(std::span<Removal*> removals) {
    std::vector<ContentsRead> reads;
    reads.reserve(removals.size());
    for (const Removal* removal : removals) reads.push_back({removal->dn});
    ReadTogether(reads);
    std::vector<std::size_t> unchanged, unsettled;
    for (std::size_t index = 0; index < removals.size(); ++index) {
        const FileBuffer& seen = reads[index].contents;
        Removal& removal = *removals[index];
        removal.result = std::move(reads[index].result);
        if (!removal.result) continue;
        if (!seen.bytes || DigestOf(seen) != *removal.contents) {
            removal.result = connection_.Outcome(kContentsChanged);
        } else {
            const bool fits = seen.length <= kLargestCondition && OffersAssertions();
            (fits ? unchanged : unsettled).push_back(index);
        }
    }
    Together(
        unchanged.size(),
        [&](RequestBatch& batch, std::size_t at) {
            const FileBuffer& present = reads[unchanged[at]].contents;
            ContentsAssertion condition(schema_.ContentsAttribute(), present);
            batch.Delete(removals[unchanged[at]]->dn, condition.Controls());
        },
        [&](std::size_t at, std::uint32_t code, LDAPMessage*) {
            removals[unchanged[at]]->result = connection_.Outcome(code);
            if (!SaysWhetherItIsUnchanged(code)) unsettled.push_back(unchanged[at]);
        },
        [&](std::size_t at) { unsettled.push_back(unchanged[at]); });
    for (const std::size_t index : unsettled) {
        removals[index]->result = RemoveUnchanged(removals[index]->dn, *removals[index]->contents);
    }
}

Result EntryStore::RemoveUnchanged(const std::string& dn, const FileBuffer& present) {
    return connection_.Outcome(RemoveUnchangedCode(dn, present));
}

std::uint32_t EntryStore::RemoveUnchangedCode(const std::string& dn, const FileBuffer& present) {
    if (!connection_.IsConnected()) return LDAP_SERVER_DOWN;
    if (const auto code = RemoveOnCondition(dn, present)) return *code;
    // A server that shows no contents to this user, or not even the entry, has none that would
    // differ: looking just before must do.
    FileBuffer seen;
    const std::uint32_t code = ReadCode(dn, seen, schema_.ContentsAttribute());
    if (code != LDAP_SUCCESS && code != LDAP_NO_SUCH_OBJECT) return code;
    return IsAnother(seen, present) ? kContentsChanged : RemoveCode(dn);
}

Result EntryStore::RemoveUnchanged(const std::string& dn, const Digest& contents) {
    return connection_.Outcome(RemoveUnchangedCode(dn, contents));
}

std::uint32_t EntryStore::RemoveUnchangedCode(const std::string& dn, const Digest& contents) {
    FileBuffer present;
    std::uint32_t code = ReadUnchanged(dn, contents, present);
    if (code != LDAP_SUCCESS) return code;
    if (const auto removed = RemoveOnCondition(dn, present)) return *removed;
    // Whether the entry changed or the server cannot compare: looking just before must do.
    code = ReadUnchanged(dn, contents, present);
    return code == LDAP_SUCCESS ? RemoveCode(dn) : code;
}

std::uint32_t EntryStore::ReadUnchanged(const std::string& dn, const Digest& contents,
                                        FileBuffer& present) {
    const std::uint32_t code = ReadCode(dn, present, schema_.ContentsAttribute());
    if (code != LDAP_SUCCESS) return code;
    const bool same = present.bytes && DigestOf(present) == contents;
    return same ? std::uint32_t{LDAP_SUCCESS} : kContentsChanged;
}

}  // namespace depot
