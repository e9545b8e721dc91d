#include "directory/connection_scope.h"

#include "directory/ldap_items.h"

namespace depot {

ConnectionScope::ConnectionScope(LdapConnection& connection)
    : connection_(connection), outcome_(connection.Acquire(taken_)) {}

ConnectionScope::ConnectionScope(CLDAPItems& directory, std::string* errorText)
    : ConnectionScope(directory.Connection()) {
    directory.AsFlag(outcome_, errorText);
}

ConnectionScope::~ConnectionScope() {
    if (taken_) connection_.Release();
}

}  // namespace depot
