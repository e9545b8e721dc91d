// Fetching files and trees out of a directory that is connected. All return the directory's code.
#pragma once

#include <string>

#include "directory/ldap_item.h"
#include "fileops/transfer_rules.h"

namespace depot {

// Writes a folder entry with its tree into a local folder. Entries whose names cannot be local ones
// are counted; the others are all written before the tree counts as failed, but none when it would
// be removed afterwards. Of a tree with entries that would become one local file nothing is
// written.
std::uint32_t FetchTree(CLDAPItems& directory, const std::string& dn, const LdapItemList& children,
                        const std::string& folder, const TransferRules& rules,
                        std::uint32_t& unsafeNames);

// Writes whatever the entry is to the local path.
std::uint32_t Fetch(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
                    const TransferRules& rules, std::uint32_t& unsafeNames);

}  // namespace depot
