// Owners of what the directory client hands out. Each deleter carries the table through which the
// client is called, which must outlive the owner.
#pragma once

#include <memory>
#include <type_traits>

#include "platform/directory_client.h"

namespace depot {

struct LdapUnbinder {
    const DirectoryClient* client = nullptr;
    void operator()(LDAP* connection) const { client->ldap_unbind_s(connection); }
};
using UniqueLdap = std::unique_ptr<LDAP, LdapUnbinder>;

struct LdapMessageFreer {
    const DirectoryClient* client = nullptr;
    void operator()(LDAPMessage* message) const { client->ldap_msgfree(message); }
};
using UniqueLdapMessage = std::unique_ptr<LDAPMessage, LdapMessageFreer>;

// Owns a text of the client's: a DN or an attribute's name.
struct LdapTextFreer {
    const DirectoryClient* client = nullptr;
    void operator()(char* text) const { client->ldap_memfree(text); }
};
using UniqueLdapText = std::unique_ptr<char, LdapTextFreer>;

// Owns a list of texts: the values of an attribute or the components of a DN.
struct LdapValuesFreer {
    const DirectoryClient* client = nullptr;
    void operator()(char** values) const { client->ldap_value_free(values); }
};
using UniqueLdapValues = std::unique_ptr<char*, LdapValuesFreer>;

struct LdapBytesFreer {
    const DirectoryClient* client = nullptr;
    void operator()(berval** values) const { client->ldap_value_free_len(values); }
};
using UniqueLdapBytes = std::unique_ptr<berval*, LdapBytesFreer>;

// Owns one value that stands alone.
struct LdapValueFreer {
    const DirectoryClient* client = nullptr;
    void operator()(berval* value) const { client->ber_bvfree(value); }
};
using UniqueLdapValue = std::unique_ptr<berval, LdapValueFreer>;

// Owns the position of a walk over an entry's attributes.
struct LdapPositionFreer {
    const DirectoryClient* client = nullptr;
    void operator()(BerElement* position) const { client->ber_free(position, 0); }
};
using UniqueLdapPosition = std::unique_ptr<BerElement, LdapPositionFreer>;

// A text as the client takes it: the client never writes to its arguments.
inline char* ClientText(const std::string& text) {
    return const_cast<char*>(text.c_str());
}

}  // namespace depot
