// Moving files and trees between a directory and local folders, and within and between directories,
// as calls with the results of given signatures. What they do stands in fileops/copy.h.
//
// Entries are named by their DNs. Every operation returns 1 or 0, connects when the directory is
// not connected, and releases its connection at the end. A failure leaves a directory code as the
// connection's last error, with its message in the error text; what was transferred before it
// stays. What fails locally is LDAP_LOCAL_ERROR.
#pragma once

#include <string>

#include "directory/ldap_items.h"
#include "fileops/copied_source.h"
#include "fileops/transfer_progress.h"

namespace depot {

// Stores a local file in the entry, whose folders are created; a local folder with all that it
// holds under the entry. Fails with LDAP_NOT_SUPPORTED when something in it has to be left out, and
// the error text says how much.
int Upload(CLDAPItems& directory, const std::string& localPath, const std::string& dn,
           ExistingEntries existing, std::string* errorText, const TransferWatcher& watcher = {},
           SourceFate fate = SourceFate::kStays, CopiedSource* copied = nullptr);

// Writes a file entry to a local file, or a folder entry with its tree into a local folder. Fails
// with LDAP_NAMING_VIOLATION when there are entries whose names cannot be local names, and before
// anything is written when entries would become one local file.
int Download(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
             std::string* errorText, const TransferWatcher& watcher = {},
             ExistingEntries existing = ExistingEntries::kReplace,
             SourceFate fate = SourceFate::kStays, CopiedSource* copied = nullptr);

// Copies an entry to another one, in the same directory or another; a folder entry with its tree.
int CopyEntry(CLDAPItems& source, const std::string& sourceDN, CLDAPItems& destination,
              const std::string& destinationDN, ExistingEntries existing, std::string* errorText,
              const TransferWatcher& watcher = {}, SourceFate fate = SourceFate::kStays,
              CopiedSource* copied = nullptr);

// Renames an entry with all below it in one request, or copies and removes it as Move does. What
// stays of the old tree is counted in the error text, and fails the call.
int MoveEntry(CLDAPItems& directory, const std::string& oldDN, const std::string& newDN,
              std::string* errorText, const TransferWatcher& watcher = {});

// Returns 1 when the entry exists.
int EntryExists(CLDAPItems& directory, const std::string& dn, std::string* errorText);

// Deletes an entry with everything below it.
int RemoveEntry(CLDAPItems& directory, const std::string& dn, std::string* errorText);

}  // namespace depot
