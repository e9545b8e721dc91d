// Moving single files and trees between a directory and a local folder.
#pragma once

#include <string>

#include "directory/ldap_items.h"

namespace depot {

// Contract: nothing here calls these two.

// Adds a local file under a folder entry, under its own name; one that cannot be read counts as
// empty. Returns 1 when the entry was added, else 0 with the directory's code as the last error; an
// entry that exists is a failure. With `connect` the object connects first and is not connected
// afterwards. `errorText` receives the message of a missing path or a failed connection.
int UploadNewFile(CLDAPItems& directory, const std::string& localPath, const std::string& parentDN,
                  bool connect, std::string* errorText);

// Writes the files of a subtree into one local folder, which is created when there is anything to
// put there. A file that exists is replaced only by one that was read and written whole. What
// cannot be listed, read or written is passed over, and makes the result 0 with the code of the
// first such failure as the last error. Entries whose names must not become local names are left
// out; `errorText`, where one is given, then names their number. Where files of the subtree share a
// name the last one stays, and the result is 0 with LDAP_NAMING_VIOLATION.
//
// Kept: every file lands in the folder itself, and the subfolders are created but stay empty.
int DownloadTree(CLDAPItems& directory, const std::string& dn, const std::string& localFolder,
                 bool connect, std::string* errorText = nullptr);

}  // namespace depot
