// The profile file that a session reads and writes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "model/depots.h"
#include "model/working_copy.h"
#include "platform/not_copied.h"

namespace depot {

// A session's current file: where the client says it is, and the local file that is really read and
// written. The session owns it; the depot belongs to the session's list.
class DepotFileContext : NotCopied {
public:
    // Resolves `path` among `depots`. A path that names an existing file by itself is a plain file
    // of no depot; any other path belongs to the depot that claims it, else to the default depot.
    //
    // Kept: a plain file's path has at least 8 characters, unless the default depot is a directory.
    DepotFileContext(const std::string& path, CDepots& depots);

    // Removes a working copy that was not released, without storing it.
    ~DepotFileContext();

    // Reads a value of the local file, cut to `size` - 1 characters.
    std::string ReadString(const std::string& section, const std::string& key,
                           const std::string& defaultValue, std::uint32_t size) const;
    std::uint32_t ReadInt(const std::string& section, const std::string& key,
                          std::uint32_t defaultValue) const;

    // Writes a value so that it reads back exactly; an empty value, or one that equals `comparison`
    // without regard to case, deletes the key. The file counts as changed in every case, also when
    // the system refuses the write; a working copy is then never stored. A local path that is not
    // absolute is only read: nothing is written to it. Returns why the file does not hold the edit,
    // as a code of the system, 0 where it does: the methods of clients succeed all the same.
    //
    // A file that the system cuts because the disk is full gets back what it held. Where even that
    // fails its former bytes are kept among the recovered files, and a message box says so.
    DWORD WriteString(const std::string& section, const std::string& key, const std::string& value,
                      const std::string* comparison = nullptr);

    // Whether the depot keeps the file where the system does not reach it: the local file is then a
    // working copy, or missing where none could be made.
    bool NeedsWorkingCopy() const { return depot && !depot->ActiveStore().IsLocal(); }

    // Why the working copy does not hold what its entry does, as a code of the directory; 0 for one
    // that does, and for any other file.
    std::uint32_t FetchCode() const { return origin_.code; }
    // The same as a result; an entry that is missing is a new file and no failure.
    Result FetchFailure() const;

    // Ends the local file: a working copy is stored in its entry if it was changed, and deleted.
    // Returns false when a change could not be stored. When memory runs out meanwhile the file can
    // be released again; a changed working copy then stays even without that.
    bool Release();

    // The bytes that the entry holds as soon as the file is released; nothing where that is not
    // known, and for any other file.
    std::optional<std::vector<std::uint8_t>> EntryBytes() const;
    // Continues with them after another context released the file, where the entry could not be
    // fetched again: an empty working copy would take its place with the next edit.
    void ContinueWith(std::span<const std::uint8_t> bytes);

    // Why the last release could not store a change. REQUIRES: it could not.
    Result StoreFailure() const;

    // Ends the local file while the library is being taken out of the process: a changed working
    // copy is kept among the recovered files, with the edits that it refused, and not stored; any
    // other is deleted. No server is asked, nothing is shown and no file is waited for.
    void KeepLocally() noexcept;

    CDepot* depot = nullptr;  // null for a plain file; never owned
    std::string depotPath;    // the path by which clients name the file
    std::string localPath;    // the file that is read and written
    bool changed = false;

private:
    void Attach(CDepot* holder, const std::string& displayPath);
    // The directory that working copies come from. REQUIRES: the file needs one.
    CLDAPItems& Directory() const { return *depot->DirectoryConnection(); }
    DWORD EditWorkingCopy(ProfileEdit edit);
    void KeepWhatWasLost(const EditOutcome& outcome) const;

    WorkingCopyOrigin origin_;    // what the working copy was made from, and what it lacks
    bool isWorkingCopy_ = false;  // whether the local file is deleted with this object
    AmpleRoom room_;              // for the local file
    // Of a changed working copy; looked up while the shell can be asked.
    std::string recoveredFolder_;
};

}  // namespace depot
