// The files in which one user keeps what is known of one location while its server is away.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "offline/offline_record.h"
#include "platform/digest.h"
#include "platform/handles.h"

namespace depot {

// Below the user's local application data; a folder for each location.
inline constexpr char kOfflineFolder[] = "Quillon\\Farrow\\Offline";

// Holds the edits of a location against other processes of the user while it lives, however the
// process ends.
class EditsLock {
public:
    // Waits for others for at most so long; afterwards the object is false when they still hold it.
    EditsLock(const std::string& folder, DWORD milliseconds);
    explicit operator bool() const { return file_ != nullptr; }

    // Returns a number behind those that were taken before, also by other processes.
    std::uint64_t TakeNumber() const;

private:
    UniqueHandle file_;
};

// The records of one location, a file for each of an entry's, encrypted for the user. A file that
// is damaged, or holds a record of another place, is set aside under a name ending in ".damaged"
// and counts as missing. Several processes may work on one folder, each under its own code page:
// files are replaced whole, and names are in them as UTF-8. What this process's code page cannot
// hold is left to others.
class OfflineFolder {
public:
    // The records of `place`. `limit` is how many bytes fetched files and listings may take.
    OfflineFolder(std::string place, std::uint64_t limit);

    // The folder's path; empty where the shell knows no place for it.
    const std::string& Path() const { return path_; }
    const std::string& Place() const { return place_; }

    std::optional<OfflineRecord> Read(OfflineKind kind, std::string_view dn) const;

    // Whether there may be a record, also one that cannot be read at the moment.
    bool MayHold(OfflineKind kind, std::string_view dn) const;

    // Makes the folder, for its user alone, where it is missing; returns whether it is there.
    bool Prepare() const;

    // Whether a record that was fetched is kept as it is, whenever it was. One that this process
    // has compared before is not opened again. `contents` are the record's own.
    bool Holds(const OfflineRecord& record, const Digest& contents) const;

    // Keeps a record in the place of an earlier one of its kind and entry, unless it was fetched
    // and is kept as it is. The oldest of those that were fetched are deleted where the limit is
    // passed; a larger record is not kept. An edit is on the disk itself when this returns, and no
    // limit counts. Returns whether it is kept; a record that could not be leaves the earlier one.
    bool Write(OfflineRecord record);

    // Deletes a record; one that is missing is done.
    bool Remove(OfflineKind kind, std::string_view dn) const;

    // Whether there may be edits.
    bool HasEdits() const;
    // Returns the edits in their order.
    std::vector<OfflineRecord> Edits() const;
    // Names what was set aside since the last call.
    std::vector<std::string> TakeDamaged() const;

private:
    struct KeptFile {
        std::string name;
        std::uint64_t size;
        std::uint64_t time;
    };

    std::string FileOf(OfflineKind kind, std::string_view dn) const;
    std::optional<OfflineRecord> ReadFile(const std::string& path) const;
    std::vector<KeptFile> KeptFiles() const;
    // Deletes new files that did not take their places, because another program held them or their
    // process was ended.
    void RemoveLeftovers() const;
    void MakeRoom(const std::string& path, std::uint64_t bytes);
    void SetAside(const std::string& path) const;

    std::string place_;
    std::uint64_t limit_;
    std::string path_;
    std::optional<std::uint64_t> used_;  // by fetched files, as far as this process knows
    mutable std::vector<std::string> damaged_;
};

// Returns the paths of the folders of all locations that the user has some for.
std::vector<std::string> OfflineFolders();

// Returns the digest of what was fetched: without where it belongs and when it was kept.
Digest ContentsOf(const OfflineRecord& record);

// Reads a record of any location; nothing where the file is none.
std::optional<OfflineRecord> ReadOfflineFile(const std::string& path);

}  // namespace depot
