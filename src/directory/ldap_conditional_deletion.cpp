// Deleting an entry only while it holds what it is believed to hold.
#include <algorithm>
#include <optional>

#include "directory/assertion_control.h"
#include "directory/ldap_items.h"

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
std::optional<std::uint32_t> CLDAPItems::RemoveOnCondition(const std::string& dn,
                                                           const FileBuffer& present) {
    if (present.length > kLargestCondition || !OffersAssertions()) return std::nullopt;
    ContentsAssertion unchanged(ContentsAttribute(), present);
    lastError_ =
        client_.ldap_delete_ext_s(handle_.get(), ClientText(dn), unchanged.Controls(), nullptr);
    // A server that cannot compare this attribute's values refuses as well.
    const bool answered =
        lastError_ != kContentsChanged && lastError_ != LDAP_UNAVAILABLE_CRIT_EXTENSION;
    return answered ? std::optional(lastError_) : std::nullopt;
}

std::uint32_t CLDAPItems::RemoveUnchangedEntry(const std::string& dn, const FileBuffer& present) {
    if (!IsConnected()) return lastError_ = LDAP_SERVER_DOWN;
    if (const auto code = RemoveOnCondition(dn, present)) return *code;
    // A server that shows no contents to this user has none that would differ: looking just before
    // must do.
    FileBuffer seen;
    if (ReadFileContents(dn, seen) == 0) return lastError_;
    return IsAnother(seen, present) ? lastError_ = kContentsChanged : RemoveEmptyEntry(dn);
}

std::uint32_t CLDAPItems::ReadUnchanged(const std::string& dn, const Digest& contents,
                                        FileBuffer& present) {
    if (ReadFileContents(dn, present) == 0) return lastError_;
    const bool same = present.bytes && DigestOf(present.bytes.get(), present.length) == contents;
    return lastError_ = same ? std::uint32_t{LDAP_SUCCESS} : kContentsChanged;
}

std::uint32_t CLDAPItems::RemoveUnchangedEntry(const std::string& dn, const Digest& contents) {
    FileBuffer present;
    if (ReadUnchanged(dn, contents, present) != LDAP_SUCCESS) return lastError_;
    if (const auto code = RemoveOnCondition(dn, present)) return *code;
    // Whether the entry changed or the server cannot compare: looking just before must do.
    const bool same = ReadUnchanged(dn, contents, present) == LDAP_SUCCESS;
    return same ? RemoveEmptyEntry(dn) : lastError_;
}

}  // namespace depot
