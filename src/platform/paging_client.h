// The entry points of the directory client by which results are asked for page by page. They stand
// in a table of their own, behind the table that existing clients know.
#pragma once

#include "platform/directory_client.h"

// Spelled as macros by the client's header.
#undef ldap_search_ext_s
#undef ldap_parse_result
#undef ldap_create_page_control
#undef ldap_parse_page_control
#undef ldap_control_free
#undef ldap_controls_free

namespace depot {

// ENTRY(member, entry point), in the order in which they are looked up.
#define DEPOT_PAGING_CLIENT_ENTRIES(ENTRY)                     \
    ENTRY(ldap_search_ext_s, ldap_search_ext_sA)               \
    ENTRY(ldap_parse_result, ldap_parse_resultA)               \
    ENTRY(ldap_create_page_control, ldap_create_page_controlA) \
    ENTRY(ldap_parse_page_control, ldap_parse_page_controlA)   \
    ENTRY(ldap_control_free, ldap_control_freeA)               \
    ENTRY(ldap_controls_free, ldap_controls_freeA)

// The bound entry points. No member is ever null: an entry point that is missing is answered by a
// function that fails with LDAP_SERVER_DOWN. Tests replace single members.
struct PagingClient {
    // Nothing is bound.
    PagingClient();
    // Binds what `library` has; null has nothing.
    explicit PagingClient(HMODULE library);

// NOLINTNEXTLINE(bugprone-macro-parentheses): a declaration, not an expression.
#define DEPOT_DECLARE_ENTRY(member, entry) decltype(&::entry) member;
    DEPOT_PAGING_CLIENT_ENTRIES(DEPOT_DECLARE_ENTRY)
#undef DEPOT_DECLARE_ENTRY

    // Whether every entry point is there.
    bool IsComplete() const;
};

}  // namespace depot
