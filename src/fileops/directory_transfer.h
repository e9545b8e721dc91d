// Moving files and trees between a directory and local folders, and within and between directories.
//
// Entries are named by their DNs. Every operation returns 1 or 0, connects when the directory is
// not connected, and lets go of its connection at the end. A failure leaves a directory code as the
// connection's last error, with its message in the error text; what was transferred before it
// stays.
//
// A source that is to be removed afterwards is noted in `copied`, where one is given, by which
// RemoveCopiedEntries and RemoveCopiedFiles remove just what has arrived.
//
// Whether an entry is a file or a folder is what the directory says of it; the dot in its name only
// decides what is looked for first.
#pragma once

#include <cstdint>
#include <string>

#include "directory/ldap_items.h"
#include "fileops/copied_source.h"
#include "fileops/transfer_progress.h"

namespace depot {

// Stores a local file in the entry, whose folders are created; a local folder with all that it
// holds under the entry. Fails with LDAP_NOT_SUPPORTED when there are links to folders in it: all
// else is stored first, unless the source is to go, and the error text tells how many there are.
int Upload(CLDAPItems& directory, const std::string& localPath, const std::string& dn,
           ExistingEntries existing, std::string* errorText, const TransferWatcher& watcher = {},
           SourceFate fate = SourceFate::kStays, CopiedSource* copied = nullptr);

// Writes a file entry to a local file, or a folder entry with its tree into a local folder. Fails
// when there are entries whose names cannot be local names: all others are written first, unless
// the source is to go, and the error text tells how many were left out. Fails with
// LDAP_NAMING_VIOLATION before anything is written when entries would become one local file.
int Download(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
             std::string* errorText, const TransferWatcher& watcher = {},
             ExistingEntries existing = ExistingEntries::kReplace,
             SourceFate fate = SourceFate::kStays, CopiedSource* copied = nullptr);

// Copies an entry to another one, in the same directory or another; a folder entry with its tree.
// An entry goes neither onto nor into itself, by whatever connections the two are named.
int CopyEntry(CLDAPItems& source, const std::string& sourceDN, CLDAPItems& destination,
              const std::string& destinationDN, ExistingEntries existing, std::string* errorText,
              const TransferWatcher& watcher = {}, SourceFate fate = SourceFate::kStays,
              CopiedSource* copied = nullptr);

// Renames an entry with all below it in one request. The folders above the new name are made for a
// folder that holds entries. Where the server does not rename such folders the tree is copied, and
// then removed as far as it still holds what was copied: what others changed or added meanwhile
// stays, is counted in the error text, and fails the call. A folder goes neither into itself nor
// onto a folder above it.
int MoveEntry(CLDAPItems& directory, const std::string& oldDN, const std::string& newDN,
              std::string* errorText, const TransferWatcher& watcher = {});

// Tells whether the entry exists.
int EntryExists(CLDAPItems& directory, const std::string& dn, std::string* errorText);

// Deletes an entry with everything below it.
int RemoveEntry(CLDAPItems& directory, const std::string& dn, std::string* errorText);

}  // namespace depot
