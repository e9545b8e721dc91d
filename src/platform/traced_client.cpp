#include "platform/traced_client.h"

#include <atomic>

#include "platform/trace.h"

namespace depot {
namespace {

// The first argument after the connection, where it is a name: that of the entry or of the user.
// What follows may be a password.
std::string_view Subject() {
    return {};
}

template <class First, class... Rest>
std::string_view Subject(First first, Rest...) {
    if constexpr (std::is_same_v<First, PCHAR>) {
        if (first != nullptr) return first;
    }
    return {};
}

template <auto Member>
std::atomic<const char*> requestName = "";

// One for all tables, which are bound to one library.
template <auto Member, class Function>
std::atomic<Function> requestItself = nullptr;

template <auto Member, class... Arguments>
ULONG LDAPAPI Traced(LDAP* connection, Arguments... arguments) {
    const TraceSpan span(requestName<Member>, Subject(arguments...));
    const ULONG code = requestItself<Member, ULONG(LDAPAPI*)(LDAP*, Arguments...)>.load()(
        connection, arguments...);
    span.EndWithCode(code);
    return code;
}

template <auto Member, class... Arguments>
void Trace(ULONG(LDAPAPI*& entry)(LDAP*, Arguments...), const char* name) {
    using Function = ULONG(LDAPAPI*)(LDAP*, Arguments...);
    // One that the library lacks stays recognizable.
    if (entry == &Traced<Member, Arguments...> || IsMissing(entry)) return;
    requestName<Member> = name;
    requestItself<Member, Function> = entry;
    entry = &Traced<Member, Arguments...>;
}

}  // namespace

void TraceRequests(DirectoryClient& client) {
#define DEPOT_TRACE_REQUEST(member) Trace<&DirectoryClient::member>(client.member, #member);
    DEPOT_TRACE_REQUEST(ldap_connect)
    DEPOT_TRACE_REQUEST(ldap_start_tls_s)
    DEPOT_TRACE_REQUEST(ldap_bind_s)
    DEPOT_TRACE_REQUEST(ldap_simple_bind_s)
    DEPOT_TRACE_REQUEST(ldap_search_s)
    DEPOT_TRACE_REQUEST(ldap_add_s)
    DEPOT_TRACE_REQUEST(ldap_modify_s)
    DEPOT_TRACE_REQUEST(ldap_modify_ext_s)
    DEPOT_TRACE_REQUEST(ldap_rename_ext_s)
    DEPOT_TRACE_REQUEST(ldap_delete_s)
    DEPOT_TRACE_REQUEST(ldap_delete_ext_s)
    DEPOT_TRACE_REQUEST(ldap_unbind_s)
#undef DEPOT_TRACE_REQUEST
}

void TraceRequests(PagingClient& client) {
    Trace<&PagingClient::ldap_search_ext_s>(client.ldap_search_ext_s, "ldap_search_ext_s");
}

}  // namespace depot
