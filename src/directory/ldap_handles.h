// Owners of what the directory client hands out. Each deleter carries the table through which the
// client is called, which must outlive the owner.
#pragma once

#include <memory>

#include "platform/directory_client.h"

namespace depot {

// Releases what a client's functions returned by the function of its table that does so.
template <class Client, auto kRelease>
struct ClientReleaser {
    const Client* client = nullptr;
    template <class Owned>
    void operator()(Owned* owned) const {
        (client->*kRelease)(owned);
    }
};
template <class Owned, auto kRelease>
using OwnedByClient = std::unique_ptr<Owned, ClientReleaser<DirectoryClient, kRelease>>;

using UniqueLdap = OwnedByClient<LDAP, &DirectoryClient::ldap_unbind_s>;
using UniqueLdapMessage = OwnedByClient<LDAPMessage, &DirectoryClient::ldap_msgfree>;
// A text of the client's: a DN or an attribute's name.
using UniqueLdapText = OwnedByClient<char, &DirectoryClient::ldap_memfree>;
// A list of texts: the values of an attribute or the components of a DN.
using UniqueLdapValues = OwnedByClient<char*, &DirectoryClient::ldap_value_free>;
using UniqueLdapBytes = OwnedByClient<berval*, &DirectoryClient::ldap_value_free_len>;
// One value that stands alone.
using UniqueLdapValue = OwnedByClient<berval, &DirectoryClient::ber_bvfree>;

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
