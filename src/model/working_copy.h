// Working copies of directory files: fetching an entry's bytes into a local file and storing them
// again.
//
// Each operation that opens the connection closes it again, so that no connection stays open while
// a client thinks.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "config/profile_edit.h"
#include "directory/ldap_items.h"
#include "model/stored_edits.h"
#include "offline/offline_location.h"
#include "platform/digest.h"

namespace depot {

// What a depot knows of its files beside their server; null where the location does not want it.
struct CopyMemory {
    std::shared_ptr<OfflineLocation> offline;
    std::shared_ptr<StoredEdits> stored;
};

// What a working copy was made from, and what became of it since.
struct WorkingCopyOrigin {
    // 0 when the local file held the entry's bytes, else the reason: the directory's code, or
    // LDAP_LOCAL_ERROR for a file that could not be written.
    std::uint32_t code = LDAP_SUCCESS;
    // The entry's bytes, as their digest and whole; only where the location wants conflicts
    // detected, or is kept for the time when its server is away.
    std::optional<Digest> digest;
    std::optional<std::vector<std::uint8_t>> bytes;
    // What its user wrote and it does not hold.
    RefusedEdits refused;
    // Where edits wait while the server is away, and where those that are stored are noted; null
    // where they are not.
    CopyMemory memory;
    bool isKept = false;  // the bytes are those that were kept, and the entry may hold others
};

// Fetches an entry's bytes into a new temporary file, readable for the user alone as far as the
// temporary folder is. Returns its path, also when it could not be written, or an empty text when
// no connection could be made. `origin` receives what ReleaseLocal needs to know of the fetch.
//
// Of a location that is kept in `memory.offline` the bytes that were kept serve while the server is
// away, without a word. Where the entry lacks what `memory.stored` noted of an edit, the version
// that was stored is kept among the recovered files, and a message box names it.
std::string FetchToLocal(CLDAPItems& directory, const std::string& dn,
                         WorkingCopyOrigin* origin = nullptr, CopyMemory memory = {});

// Makes a working copy of bytes that the entry is known to hold, where they cannot be fetched.
// Returns its path, empty where it could not be written; only otherwise `origin` becomes that of a
// fetch of these bytes.
std::string CopyOfKnown(CLDAPItems& directory, const std::string& dn,
                        std::span<const std::uint8_t> bytes, WorkingCopyOrigin& origin);

// Ends a working copy: stores its bytes in the entry when `writeBack` is set, and deletes it in
// every case. Returns 1 when nothing had to be stored or all was. An empty path with `writeBack`
// set is a parameter error, which is shown. `origin` is what the fetch left, and what writes added.
//
// No edit is lost. Bytes that cannot be stored are kept among the recovered files; where even that
// fails the working copy stays. A working copy that another program holds is waited for, for three
// seconds; one that cannot be read even then, or is gone, leaves the entry as it is, and so does
// one that does not hold all that its user wrote: that one is kept as one that cannot be stored,
// with the edits that it lacks. The entry's present bytes are kept before those of a working copy
// that was fetched incompletely take their place; when they cannot be kept the entry stays as it
// is. A message box reports each of these, and its text ends with the path of what was kept.
//
// Where the location wants conflicts detected, bytes that are not those of `origin` stay in the
// entry, and the working copy is kept as one that cannot be stored. Where it wants them merged, the
// edits are stored into what the entry holds now, value by value (profile_merge.h); with a value
// that both sides changed the working copy is kept, too, and the message names the value.
//
// An edit whose server is away waits for it where the origin says so, and counts as stored: it is
// on the disk itself when this returns.
int ReleaseLocal(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
                 bool writeBack, std::string* errorText = nullptr,
                 const WorkingCopyOrigin& origin = {});

// What becomes of a working copy whose library is being taken out of the process: no server is
// asked, nothing is shown, and no file is waited for.

// Moves the working copy at `localPath`, with the edits that it refused, into `folder`, a
// RecoveredFolder of before, under a name that is made of `name`. Where that fails the working copy
// stays.
void KeepWorkingCopy(const std::string& localPath, const std::string& name,
                     const std::string& folder, const RefusedEdits& refused);

// Deletes an unchanged working copy; the next process looks for those that stay.
void DropWorkingCopy(const std::string& localPath) noexcept;

// Whether the location wants nothing replaced but the bytes that were fetched, and whether it wants
// the edits in the entry nevertheless.
bool DetectsConflicts(const CDepotPath& location);
bool MergesConflicts(const CDepotPath& location);

}  // namespace depot
