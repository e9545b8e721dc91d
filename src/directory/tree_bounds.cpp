#include "directory/tree_bounds.h"

#include "platform/directory_client.h"

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

}  // namespace depot
