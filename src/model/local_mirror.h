// Working copies of directory files: fetching an entry's bytes into a local file and storing them
// again, and moving single files and trees between a directory and a local folder.
//
// Each operation that opens the connection closes it again, so that no connection stays open while
// a client thinks.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/profile_edit.h"
#include "directory/connection_scope.h"
#include "directory/ldap_items.h"
#include "platform/digest.h"

namespace depot {

// Connects to the location, asking for credentials where none are known or the known ones fail.
bool OpenDirectory(CLDAPItems& directory, std::string* errorText);

// What a working copy was made from, and what became of it since.
struct WorkingCopyOrigin {
    // 0 when the local file held the entry's bytes, else the reason: the directory's code, or
    // LDAP_LOCAL_ERROR for a file that could not be written.
    std::uint32_t code = LDAP_SUCCESS;
    // The entry's bytes; only where the location wants conflicts detected and the fetch succeeded.
    std::optional<Digest> digest;
    // What its user wrote and it does not hold.
    RefusedEdits refused;
};

// Fetches an entry's bytes into a new temporary file, readable for the user alone as far as the
// temporary folder is. Returns its path, also when it could not be written, or an empty text when
// no connection could be made. `origin` receives what ReleaseLocal needs to know of the fetch.
std::string FetchToLocal(CLDAPItems& directory, const std::string& dn,
                         WorkingCopyOrigin* origin = nullptr);

// Ends a working copy: stores its bytes in the entry when `writeBack` is set, and deletes it in
// every case. Returns 1 when nothing had to be stored or all was. An empty path with `writeBack`
// set is a parameter error, which is shown. `origin` is what the fetch left, and what writes added.
//
// No edit is lost. Bytes that cannot be stored are kept among the recovered files; where even that
// fails the working copy stays. A working copy that somebody else holds is waited for, for three
// seconds; one that cannot be read even then, or is gone, leaves the entry as it is, and so does
// one that does not hold all that its user wrote: that one is kept as one that cannot be stored,
// with the edits that it lacks. The entry's present bytes are kept before those of a working copy
// that was fetched incompletely take their place; when they cannot be kept the entry stays as it
// is. A message box tells of each of these, and its text ends with the path of what was kept.
//
// Where the location wants conflicts detected, bytes that are not those of `origin` stay in the
// entry, and the working copy is kept as one that cannot be stored.
int ReleaseLocal(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
                 bool writeBack, std::string* errorText = nullptr,
                 const WorkingCopyOrigin& origin = {});

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
// out; `errorText`, where one is given, then says how many. Where files of the subtree share a name
// the last one stays, and the result is 0 with LDAP_NAMING_VIOLATION.
//
// Kept: every file lands in the folder itself, and the subfolders are created but stay empty.
// Relied on by: existing clients, which look for all files in one place.
int DownloadTree(CLDAPItems& directory, const std::string& dn, const std::string& localFolder,
                 bool connect, std::string* errorText = nullptr);

}  // namespace depot
