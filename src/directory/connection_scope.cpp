#include "directory/connection_scope.h"

#include "directory/ldap_items.h"

namespace depot {

ConnectionScope::ConnectionScope(LdapConnection& connection) : connection_(connection) {
    if (connection_.IsConnected()) return;
    try {
        outcome_ = connection_.Open();
    } catch (...) {
        connection_.Close();
        throw;
    }
    opened_ = outcome_.IsDone();
}

ConnectionScope::ConnectionScope(CLDAPItems& directory, std::string* errorText)
    : ConnectionScope(directory.Connection()) {
    directory.AsFlag(outcome_, errorText);
}

ConnectionScope::~ConnectionScope() {
    if (opened_) connection_.Close();
}

}  // namespace depot
