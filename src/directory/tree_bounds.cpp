#include "directory/tree_bounds.h"

#include "directory/entry_store.h"

namespace depot {

Result BoundedWalk::List(const std::string& dn, std::uint32_t depth, LdapItemList& children) {
    const auto start = std::chrono::steady_clock::now();
    Result listed = entries_.List(dn, children);
    listingTime_ += std::chrono::steady_clock::now() - start;
    return listed ? Count(depth, children) : listed;
}

Result BoundedWalk::Count(std::uint32_t depth, LdapItemList& children) {
    const TreeBounds& bounds = entries_.Bounds();
    count_ += children.Count();
    for (const CLDAPItem* child : children) nameBytes_ += child->path.size();
    const bool isTooDeep = depth >= bounds.depth && children.Count() > 0;
    const bool isTooLong = children.Count() > 0 && children.At(0).path.size() > bounds.longestName;
    if (isTooDeep || isTooLong || count_ > bounds.entries || nameBytes_ > bounds.nameBytes) {
        return End(LDAP_SIZELIMIT_EXCEEDED, children);
    }
    if (listingTime_ > bounds.listingTime) return End(LDAP_TIMELIMIT_EXCEEDED, children);
    return {};
}

Result BoundedWalk::End(std::uint32_t code, LdapItemList& children) {
    isOver_ = true;
    children.Clear();
    return entries_.Connection().Outcome(code);
}

}  // namespace depot
