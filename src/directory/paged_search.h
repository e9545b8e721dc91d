// One-level searches that a server answers page by page.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "directory/ldap_handles.h"
#include "platform/paging_client.h"

namespace depot {

// The filter that every entry passes.
inline constexpr char kAnyEntry[] = "(objectClass=*)";

// What is searched for: the entries right below a DN, with these attributes.
struct ListingSearch {
    std::string base;
    std::string filter;
    std::vector<std::string> attributes;
};

// One search through all of its pages. Borrows all that it is given.
class PagedSearch {
public:
    static constexpr ULONG kEntriesAPage = 500;

    PagedSearch(const DirectoryClient& client, const PagingClient& paging, LDAP* connection)
        : client_(client), paging_(paging), connection_(connection), cookie_(nullptr, {&client}) {}

    // Asks the server whether it answers in pages; also false when the client cannot ask for them.
    bool IsOffered() const;

    // Fetches the next page. Returns the directory's code; a server that refuses pages after all is
    // LDAP_SIZELIMIT_EXCEEDED, whatever it gives as its reason, and so is one that continues
    // without ever sending an entry.
    std::uint32_t Next(const ListingSearch& search, UniqueLdapMessage& page);

    // Whether there are pages behind the one that was fetched last.
    bool HasMore() const { return cookie_ && cookie_->bv_len > 0; }

private:
    std::uint32_t Fetch(const ListingSearch& search, UniqueLdapMessage& page) const;
    std::uint32_t ReadCookie(LDAPMessage* page);

    const DirectoryClient& client_;
    const PagingClient& paging_;
    LDAP* connection_;
    UniqueLdapValue cookie_;  // where the server continues
    int emptyPages_ = 0;
};

}  // namespace depot
