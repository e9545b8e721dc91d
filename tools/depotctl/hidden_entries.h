// What a directory holds and listings do not show, or show under another name.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "directory/ldap_handles.h"
#include "directory/ldap_items.h"
#include "platform/result.h"

namespace depot::ctl {

// The entries of one search, for which one attribute is asked.
// REQUIRES: the directory is connected.
class EntrySearch {
public:
    EntrySearch(CLDAPItems& directory, std::string attribute)
        : client_(directory.Client()),
          session_(directory.Connection().Handle()),
          attribute_(std::move(attribute)) {}

    // Returns the directory's code.
    std::uint32_t Run(std::string dn, ULONG scope, std::string filter = "(objectClass=*)");

    // The attribute's values of each entry that was found.
    std::vector<std::vector<std::string>> Values();

private:
    DirectoryClient& client_;
    LDAP* const session_;
    std::string attribute_;
    UniqueLdapMessage message_;
};

// Whether an entry directly below shows no object class to this user: listings show nothing of it.
// REQUIRES: the directory is connected.
bool HidesClasses(CLDAPItems& directory, const std::string& dn);

// Finds the entries at or below a DN that replication keeps beside another one of the same name,
// because two servers took an entry of it at once. `names` receives the names, in UTF-8, that the
// entries were given by their users.
// REQUIRES: the directory is connected.
Result FindReplicationConflicts(CLDAPItems& directory, const std::string& dn,
                                std::vector<std::string>& names);

}  // namespace depot::ctl
