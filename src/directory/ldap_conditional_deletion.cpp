// Deleting an entry only while it holds what it is believed to hold.
#include <algorithm>

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

std::uint32_t CLDAPItems::RemoveUnchangedEntry(const std::string& dn, const FileBuffer& present) {
    if (!IsConnected()) return lastError_ = LDAP_SERVER_DOWN;
    if (present.length <= kLargestCondition && OffersAssertions()) {
        ContentsAssertion unchanged(ContentsAttribute(), present);
        lastError_ =
            client_.ldap_delete_ext_s(handle_.get(), ClientText(dn), unchanged.Controls(), nullptr);
        if (lastError_ != kContentsChanged && lastError_ != LDAP_UNAVAILABLE_CRIT_EXTENSION) {
            return lastError_;
        }
    }
    // A server that cannot compare this attribute's values refuses as well, and one that shows none
    // to this user has none that would differ: then looking just before must do.
    FileBuffer seen;
    if (ReadFileContents(dn, seen) == 0) return lastError_;
    return IsAnother(seen, present) ? lastError_ = kContentsChanged : RemoveEmptyEntry(dn);
}

}  // namespace depot
