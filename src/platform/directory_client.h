// The system's LDAP client library, loaded and bound by name at run time: a machine without it
// still loads the component.
#pragma once

#include <string>
#include <type_traits>

#include "platform/compiler.h"
#include "platform/win32.h"

#include <winldap.h>

// Builds on the header above.
#include <winber.h>

// The header spells some functions as macros, whose names the table's members bear.
#undef ldap_check_filter
#undef ldap_sasl_bind
#undef ldap_start_tls_s

namespace depot {

// ENTRY(member, entry point), in the order in which the entry points are looked up and stand in the
// table. A member is named after its function without the trailing "A".
//
// Kept: "ldap_sasl_bindA" is looked up twice, into two slots that follow each other.
// Contract: nothing here calls many of these; the table is bound whole.
#define DEPOT_DIRECTORY_CLIENT_ENTRIES(ENTRY)                  \
    ENTRY(ldap_init, ldap_initA)                               \
    ENTRY(cldap_open, cldap_openA)                             \
    ENTRY(ldap_open, ldap_openA)                               \
    ENTRY(ldap_startup, ldap_startup)                          \
    ENTRY(ldap_cleanup, ldap_cleanup)                          \
    ENTRY(ldap_sslinit, ldap_sslinitA)                         \
    ENTRY(ldap_connect, ldap_connect)                          \
    ENTRY(ldap_bind, ldap_bindA)                               \
    ENTRY(ldap_bind_s, ldap_bind_sA)                           \
    ENTRY(ldap_simple_bind, ldap_simple_bindA)                 \
    ENTRY(ldap_simple_bind_s, ldap_simple_bind_sA)             \
    ENTRY(ldap_sasl_bind, ldap_sasl_bindA)                     \
    ENTRY(ldap_sasl_bind_again, ldap_sasl_bindA)               \
    ENTRY(ldap_unbind, ldap_unbind)                            \
    ENTRY(ldap_unbind_s, ldap_unbind_s)                        \
    ENTRY(ldap_set_option, ldap_set_option)                    \
    ENTRY(ldap_get_option, ldap_get_option)                    \
    ENTRY(ldap_search, ldap_searchA)                           \
    ENTRY(ldap_search_s, ldap_search_sA)                       \
    ENTRY(ldap_search_st, ldap_search_stA)                     \
    ENTRY(ldap_search_ext, ldap_search_extA)                   \
    ENTRY(ldap_modify, ldap_modifyA)                           \
    ENTRY(ldap_modify_s, ldap_modify_sA)                       \
    ENTRY(ldap_modify_ext, ldap_modify_extA)                   \
    ENTRY(ldap_modify_ext_s, ldap_modify_ext_sA)               \
    ENTRY(ldap_add, ldap_addA)                                 \
    ENTRY(ldap_add_s, ldap_add_sA)                             \
    ENTRY(ldap_add_ext, ldap_add_extA)                         \
    ENTRY(ldap_add_ext_s, ldap_add_ext_sA)                     \
    ENTRY(ldap_compare, ldap_compareA)                         \
    ENTRY(ldap_compare_s, ldap_compare_sA)                     \
    ENTRY(ldap_compare_ext, ldap_compare_extA)                 \
    ENTRY(ldap_compare_ext_s, ldap_compare_ext_sA)             \
    ENTRY(ldap_rename_ext, ldap_rename_extA)                   \
    ENTRY(ldap_rename_ext_s, ldap_rename_ext_sA)               \
    ENTRY(ldap_delete, ldap_deleteA)                           \
    ENTRY(ldap_delete_s, ldap_delete_sA)                       \
    ENTRY(ldap_delete_ext, ldap_delete_extA)                   \
    ENTRY(ldap_delete_ext_s, ldap_delete_ext_sA)               \
    ENTRY(ldap_abandon, ldap_abandon)                          \
    ENTRY(ldap_result, ldap_result)                            \
    ENTRY(ldap_msgfree, ldap_msgfree)                          \
    ENTRY(ldap_result2error, ldap_result2error)                \
    ENTRY(ldap_err2string, ldap_err2stringA)                   \
    ENTRY(ldap_first_entry, ldap_first_entry)                  \
    ENTRY(ldap_next_entry, ldap_next_entry)                    \
    ENTRY(ldap_count_entries, ldap_count_entries)              \
    ENTRY(ldap_first_attribute, ldap_first_attributeA)         \
    ENTRY(ldap_next_attribute, ldap_next_attributeA)           \
    ENTRY(ldap_get_values, ldap_get_valuesA)                   \
    ENTRY(ldap_get_values_len, ldap_get_values_lenA)           \
    ENTRY(ldap_count_values, ldap_count_valuesA)               \
    ENTRY(ldap_value_free, ldap_value_freeA)                   \
    ENTRY(ldap_value_free_len, ldap_value_free_len)            \
    ENTRY(ldap_check_filter, ldap_check_filterA)               \
    ENTRY(ldap_memfree, ldap_memfreeA)                         \
    ENTRY(ldap_get_dn, ldap_get_dnA)                           \
    ENTRY(ldap_explode_dn, ldap_explode_dnA)                   \
    ENTRY(ldap_start_tls_s, ldap_start_tls_sA)                 \
    ENTRY(ldap_stop_tls_s, ldap_stop_tls_s)                    \
    ENTRY(ldap_dn2ufn, ldap_dn2ufnA)                           \
    ENTRY(ldap_ufn2dn, ldap_ufn2dnA)                           \
    ENTRY(ber_bvfree, ber_bvfree)                              \
    ENTRY(ber_free, ber_free)                                  \
    ENTRY(ldap_modrdn2, ldap_modrdn2A)                         \
    ENTRY(ldap_modrdn, ldap_modrdnA)                           \
    ENTRY(ldap_create_sort_control, ldap_create_sort_controlA) \
    ENTRY(ldap_parse_sort_control, ldap_parse_sort_controlA)   \
    ENTRY(ldap_encode_sort_control, ldap_encode_sort_controlA) \
    ENTRY(LdapGetLastError, LdapGetLastError)                  \
    ENTRY(LdapMapErrorToWin32, LdapMapErrorToWin32)

// The bound entry points and the library that they live in. No member is ever null: an entry point
// that is missing is answered by a function of the component's own that fails, with code 81 where
// the entry point returns a code. Tests replace single members.
struct DirectoryClient {
    DirectoryClient();

// NOLINTNEXTLINE(bugprone-macro-parentheses): a declaration, not an expression.
#define DEPOT_DECLARE_ENTRY(member, entry) decltype(&::entry) member;
    DEPOT_DIRECTORY_CLIENT_ENTRIES(DEPOT_DECLARE_ENTRY)
#undef DEPOT_DECLARE_ENTRY

    HMODULE library = nullptr;  // not owned: see FreeDirectoryClient
};

// The names that are looked up, in order.
inline constexpr const char* kDirectoryClientNames[] = {
#define DEPOT_ENTRY_NAME(member, entry) #entry,
    DEPOT_DIRECTORY_CLIENT_ENTRIES(DEPOT_ENTRY_NAME)
#undef DEPOT_ENTRY_NAME
};

// The full path of the client library: it is taken from the system's folder only, whatever the
// current folder and the search path hold.
std::string DirectoryClientPath();

// Loads the library at `path` and binds the table. Returns 0, with every entry point failing, when
// the library cannot be loaded; else 1, also when entry points are missing.
int BindDirectoryClient(DirectoryClient& client, const std::string& path = DirectoryClientPath());

// Gives back the one reference to the system's library that this module keeps from the first
// binding on. REQUIRES: no table is used any more, and no connection is open.
void FreeDirectoryClient();

// The entry point that stands in for a missing one of type `Function`.
template <class Function>
struct MissingEntryPoint;

template <class Result, class... Arguments>
struct MissingEntryPoint<Result(LDAPAPI*)(Arguments...)> {
    static Result LDAPAPI Fail(Arguments...) {
        if constexpr (std::is_same_v<Result, ULONG>) {
            return LDAP_SERVER_DOWN;
        } else {
            return Result();
        }
    }
};

// Makes the table member the library's entry point of that name, or leaves it when there is none.
template <class Function>
void BindEntryPoint(Function& member, HMODULE library, const char* name) {
    if (const FARPROC entryPoint = GetProcAddress(library, name)) {
        member = FunctionCast<Function>(entryPoint);
    }
}

// Tells whether the library lacks the entry point of this table member.
template <class Function>
bool IsMissing(Function entryPoint) {
    return entryPoint == &MissingEntryPoint<Function>::Fail;
}

}  // namespace depot
