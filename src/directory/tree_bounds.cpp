#include "directory/tree_bounds.h"

#include "directory/entry_store.h"

namespace depot {

std::uint32_t TreeBudget::Add(const Listing& listing) {
    entries_ += listing.entries;
    nameBytes_ += listing.nameBytes;
    time_ += listing.time;
    const bool isTooDeep = listing.depth >= bounds_.depth && listing.entries > 0;
    const bool isTooLong = listing.firstName > bounds_.longestName;
    if (isTooDeep || isTooLong || entries_ > bounds_.entries || nameBytes_ > bounds_.nameBytes) {
        return LDAP_SIZELIMIT_EXCEEDED;
    }
    return time_ > bounds_.listingTime ? LDAP_TIMELIMIT_EXCEEDED : LDAP_SUCCESS;
}

BoundedWalk::BoundedWalk(EntryStore& entries) : entries_(entries), budget_(entries.Bounds()) {}

Result BoundedWalk::List(const std::string& dn, std::uint32_t depth, LdapItemList& children) {
    const auto start = std::chrono::steady_clock::now();
    Result listed = entries_.List(dn, children);
    if (!listed) return listed;
    TreeBudget::Listing listing = {.depth = depth, .entries = children.Count()};
    listing.time = std::chrono::steady_clock::now() - start;
    for (const CLDAPItem* child : children) listing.nameBytes += child->path.size();
    if (children.Count() > 0) listing.firstName = children.At(0).path.size();
    const std::uint32_t code = budget_.Add(listing);
    if (code == LDAP_SUCCESS) return listed;
    isOver_ = true;
    children.Clear();
    return entries_.Connection().Outcome(code);
}

}  // namespace depot
