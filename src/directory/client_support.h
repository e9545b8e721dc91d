// What the directory operations share in calling the client.
#pragma once

#include "directory/ldap_handles.h"

namespace depot {

// Whether the library lacks one of these entry points.
template <class... Functions>
bool LacksAny(Functions... entryPoints) {
    return (IsMissing(entryPoints) || ...);
}

// A walk over the attributes of one entry. Borrows all that it is given.
class AttributeWalk {
public:
    AttributeWalk(const DirectoryClient& client, LDAP* connection, LDAPMessage* entry)
        : client_(client), connection_(connection), entry_(entry), position_(nullptr, {&client}) {
        BerElement* position = nullptr;
        // cppcheck-suppress useInitializationList ; the call fills `position` as well
        name_ =
            UniqueLdapText(client.ldap_first_attribute(connection, entry, &position), {&client});
        position_.reset(position);
    }

    // Whether the client handed out nothing the last time because it had no memory.
    bool RanOut() const { return client_.LdapGetLastError() == LDAP_NO_MEMORY; }

    // The attribute's name; null at the end.
    const char* Name() const { return name_.get(); }

    void Next() { name_.reset(client_.ldap_next_attribute(connection_, entry_, position_.get())); }

    // The attribute's values as texts and as bytes; null when there are none.
    UniqueLdapValues Texts() const {
        return UniqueLdapValues(client_.ldap_get_values(connection_, entry_, name_.get()),
                                {&client_});
    }
    UniqueLdapBytes Bytes() const {
        return UniqueLdapBytes(client_.ldap_get_values_len(connection_, entry_, name_.get()),
                               {&client_});
    }

private:
    const DirectoryClient& client_;
    LDAP* connection_;
    LDAPMessage* entry_;
    UniqueLdapPosition position_;
    UniqueLdapText name_;
};

}  // namespace depot
