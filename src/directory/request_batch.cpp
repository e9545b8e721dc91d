#include "directory/request_batch.h"

#include "directory/client_support.h"
#include "directory/paged_search.h"
#include "platform/trace.h"

namespace depot {

RequestBatch::~RequestBatch() {
    const DirectoryClient& client = connection_.Client();
    for (const Request& request : requests_) {
        if (request.refused == LDAP_SUCCESS && !isBroken_) {
            client.ldap_abandon(connection_.Handle(), request.id);
        }
    }
}

bool RequestBatch::IsPossible(const DirectoryClient& client) {
    return !LacksAny(client.ldap_search_ext, client.ldap_add_ext, client.ldap_modify_ext,
                     client.ldap_delete_ext, client.ldap_result, client.ldap_result2error,
                     client.ldap_abandon);
}

template <class Call>
void RequestBatch::Send(const char* operation, const std::string& dn, const Call& call) {
    const TraceSpan span(operation, dn);
    Request request;
    request.refused = call(&request.id);
    span.EndWithCode(request.refused);
    requests_.push_back(request);
}

void RequestBatch::Search(const std::string& base, ULONG scope,
                          const std::vector<std::string>& attributes) {
    std::vector<char*> names;
    names.reserve(attributes.size() + 1);
    for (const std::string& attribute : attributes) names.push_back(ClientText(attribute));
    names.push_back(nullptr);
    std::string filter = kAnyEntry;
    Send("ldap_search_ext", base, [&](ULONG* id) {
        return connection_.Client().ldap_search_ext(connection_.Handle(), ClientText(base), scope,
                                                    filter.data(), names.data(), 0, nullptr,
                                                    nullptr, connection_.AnswerLimit(), 0, id);
    });
}

void RequestBatch::Add(const std::string& dn, LDAPModA** attributes) {
    Send("ldap_add_ext", dn, [&](ULONG* id) {
        return connection_.Client().ldap_add_ext(connection_.Handle(), ClientText(dn), attributes,
                                                 nullptr, nullptr, id);
    });
}

void RequestBatch::Modify(const std::string& dn, LDAPModA** changes, LDAPControlA** conditions) {
    Send("ldap_modify_ext", dn, [&](ULONG* id) {
        return connection_.Client().ldap_modify_ext(connection_.Handle(), ClientText(dn), changes,
                                                    conditions, nullptr, id);
    });
}

void RequestBatch::Delete(const std::string& dn, LDAPControlA** conditions) {
    Send("ldap_delete_ext", dn, [&](ULONG* id) {
        return connection_.Client().ldap_delete_ext(connection_.Handle(), ClientText(dn),
                                                    conditions, nullptr, id);
    });
}

std::uint32_t RequestBatch::Await(UniqueLdapMessage& answer) {
    const DirectoryClient& client = connection_.Client();
    const Request request = requests_.front();
    requests_.pop_front();
    if (request.refused != LDAP_SUCCESS) return request.refused;
    if (isBroken_) return LDAP_SERVER_DOWN;
    l_timeval limit = {static_cast<LONG>(connection_.AnswerLimit()), 0};
    LDAPMessage* message = nullptr;
    const TraceSpan span("ldap_result", {});
    const ULONG kind =
        client.ldap_result(connection_.Handle(), request.id, LDAP_MSG_ALL, &limit, &message);
    answer = UniqueLdapMessage(message, {&client});
    const bool answered = message != nullptr && kind != 0 && kind != static_cast<ULONG>(-1);
    const std::uint32_t code = answered
                                   ? client.ldap_result2error(connection_.Handle(), message, FALSE)
                               : kind == 0 ? std::uint32_t{LDAP_TIMEOUT}
                                           : Failure();
    span.EndWithCode(code);
    // The answers to the others would take as long to fail to come.
    isBroken_ = isBroken_ || !answered;
    return code;
}

std::uint32_t RequestBatch::Failure() const {
    const std::uint32_t code = connection_.Client().LdapGetLastError();
    return code == LDAP_NO_MEMORY ? code : std::uint32_t{LDAP_SERVER_DOWN};
}

}  // namespace depot
