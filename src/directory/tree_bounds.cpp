#include "directory/tree_bounds.h"

#include "directory/ldap_items.h"

namespace depot {

std::uint32_t TreeWalk::List(const std::string& dn, std::uint32_t depth, LdapItemList& children) {
    const auto start = std::chrono::steady_clock::now();
    const bool listed = directory_.ListChildren(dn, children) != 0;
    listingTime_ += std::chrono::steady_clock::now() - start;
    return listed ? Count(depth, children) : directory_.LastError();
}

std::uint32_t TreeWalk::Count(std::uint32_t depth, LdapItemList& children) {
    const TreeBounds& bounds = directory_.Bounds();
    entries_ += children.Count();
    for (const CLDAPItem* child : children) nameBytes_ += child->path.size();
    const bool isTooDeep = depth >= bounds.depth && children.Count() > 0;
    const bool isTooLong = children.Count() > 0 && children.At(0).path.size() > bounds.longestName;
    if (isTooDeep || isTooLong || entries_ > bounds.entries || nameBytes_ > bounds.nameBytes) {
        return End(LDAP_SIZELIMIT_EXCEEDED, children);
    }
    if (listingTime_ > bounds.listingTime) return End(LDAP_TIMELIMIT_EXCEEDED, children);
    return LDAP_SUCCESS;
}

std::uint32_t TreeWalk::End(std::uint32_t code, LdapItemList& children) {
    isOver_ = true;
    children.Clear();
    directory_.Fail(code, nullptr);
    return code;
}

}  // namespace depot
