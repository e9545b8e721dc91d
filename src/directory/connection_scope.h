// Connections for the work of one operation.
#pragma once

#include <string>

#include "directory/ldap_connection.h"
#include "platform/not_copied.h"

namespace depot {

class CLDAPItems;

// Keeps a connection for the work of one operation: opened if there was none, asking for
// credentials where none are known or the known ones fail, and then released.
class ConnectionScope : NotCopied {
public:
    explicit ConnectionScope(LdapConnection& connection);
    // A failure becomes the object's last error; `errorText`, which may be null, receives the text.
    ConnectionScope(CLDAPItems& directory, std::string* errorText);
    ~ConnectionScope();

    explicit operator bool() const { return outcome_.IsDone(); }
    const Result& Outcome() const { return outcome_; }

private:
    LdapConnection& connection_;
    bool taken_ = false;
    Result outcome_;
};

}  // namespace depot
