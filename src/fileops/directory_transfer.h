// Moving files and trees between a directory and local folders, and within and between directories.
//
// Entries are named by their DNs. Every operation returns 1 or 0, connects when the directory is
// not connected, and lets go of its connection at the end. A failure leaves a directory code as the
// connection's last error, with its message in the error text; what was transferred before it
// stays.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "directory/ldap_items.h"

namespace depot {

// How far a transfer of many files is.
struct TransferProgress {
    std::uint32_t filesDone = 0;
    std::uint32_t filesInAll = 0;
    std::uint64_t bytesDone = 0;
};

// Called after each file; returns whether to go on. A transfer that is stopped fails between two
// files.
using TransferWatcher = std::function<bool(const TransferProgress& progress)>;

// What an upload does with destination entries that exist.
enum class ExistingEntries {
    kRefuse = 1,   // fails before anything is stored
    kReplace = 2,  // replaces the contents of files
};

// Stores a local file in the entry, whose folders are created; a local folder with all that it
// holds under the entry.
int Upload(CLDAPItems& directory, const std::string& localPath, const std::string& dn,
           ExistingEntries existing, std::string* errorText, const TransferWatcher& watcher = {});

// Writes a file entry to a local file, or a folder entry with its tree into a local folder. Entries
// whose names cannot be local names are left out and counted in the error text.
int Download(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
             std::string* errorText, const TransferWatcher& watcher = {});

// Copies an entry to another one, in the same directory or another; a folder entry with its tree,
// which cannot go into itself.
int CopyEntry(CLDAPItems& source, const std::string& sourceDN, CLDAPItems& destination,
              const std::string& destinationDN, ExistingEntries existing, std::string* errorText);

// Renames an entry. A folder with children is copied first, and removed only when all of it
// arrived; it cannot go into itself.
int MoveEntry(CLDAPItems& directory, const std::string& oldDN, const std::string& newDN,
              std::string* errorText);

// Tells whether the entry exists.
int EntryExists(CLDAPItems& directory, const std::string& dn, std::string* errorText);

// Deletes an entry with everything below it.
int RemoveEntry(CLDAPItems& directory, const std::string& dn, std::string* errorText);

}  // namespace depot
