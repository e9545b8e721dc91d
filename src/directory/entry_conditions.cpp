// Changing an entry only while it holds what it is believed to hold.
#include <algorithm>
#include <optional>

#include "directory/assertion_control.h"
#include "directory/entry_store.h"

namespace depot {
namespace {

bool IsAnother(const FileBuffer& seen, const FileBuffer& present) {
    return seen.bytes != nullptr &&
           !std::equal(seen.bytes.get(), seen.bytes.get() + seen.length, present.bytes.get(),
                       present.bytes.get() + present.length);
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
    // A server that cannot compare this attribute's values refuses as well.
    const bool answered = code != kContentsChanged && code != LDAP_UNAVAILABLE_CRIT_EXTENSION;
    return answered ? std::optional(code) : std::nullopt;
}

Result EntryStore::RemoveUnchanged(const std::string& dn, const FileBuffer& present) {
    return connection_.Outcome(RemoveUnchangedCode(dn, present));
}

std::uint32_t EntryStore::RemoveUnchangedCode(const std::string& dn, const FileBuffer& present) {
    if (!connection_.IsConnected()) return LDAP_SERVER_DOWN;
    if (const auto code = RemoveOnCondition(dn, present)) return *code;
    // A server that shows no contents to this user has none that would differ: looking just before
    // must do.
    FileBuffer seen;
    const std::uint32_t code = ReadCode(dn, seen, schema_.ContentsAttribute());
    if (code != LDAP_SUCCESS) return code;
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
