// What a source entry is, and what is known of it before it is transferred.
#pragma once

#include <string>

#include "directory/ldap_items.h"
#include "fileops/transfer_progress.h"

namespace depot {

// A file entry with its bytes, or a folder entry with its children.
struct SourceEntry {
    bool isFolder = false;
    FileBuffer contents;
    LdapItemList children;
};

// Both return code 66 for a file with entries below it, which is removed with them but copied
// alone: the first for anything with children, the second for a file of which they are known.
std::uint32_t RefuseChildren(CLDAPItems& directory, const std::string& dn);
std::uint32_t RefuseFile(CLDAPItems& directory, const std::string& dn);

// Tells whether the name of an entry looks like a folder's. One that carries no naming attribute,
// such as the base itself, does.
bool LooksLikeFolder(CLDAPItems& directory, const std::string& dn);

// Finds out what the entry is and reads it. Returns the directory's code. An entry that is to go
// and has more than what was read, or whose bytes or kind cannot be seen, is a failure.
// REQUIRES: the directory is connected.
std::uint32_t ReadSource(CLDAPItems& directory, const std::string& dn, SourceFate fate,
                         SourceEntry& source);

// Tells whether the entry is the other one, or lies below it, going by the names alone: blanks and
// letter case make no difference.
bool IsSameEntry(const CLDAPItems& directory, const std::string& dn, const std::string& other);
bool IsBelowEntry(const CLDAPItems& directory, const std::string& dn, const std::string& folder);

// Tells whether both are connections to one server, by host and port.
bool IsSameServer(const CLDAPItems& one, const CLDAPItems& other);

// What two connections show of the entry of one name.
enum class EntryIdentity {
    kSame,
    kOther,
    kUnseen,  // the second connection shows no entry of the name
    kUnknown  // at least one of the two shows no identifier that the other one shows as well
};

// Compares the entry of that name through both connections: two names of one server, and two
// servers that replicate each other, show the same identifier. REQUIRES: both are connected.
EntryIdentity CompareEntry(CLDAPItems& one, CLDAPItems& other, const std::string& dn);

// Tells whether an entry of that name counts as the same one through both connections. A source
// that is to be removed does so, too, where that cannot be told. REQUIRES: both are connected.
bool IsSameDirectory(CLDAPItems& one, CLDAPItems& other, const std::string& dn,
                     SourceFate fate = SourceFate::kStays);

}  // namespace depot
