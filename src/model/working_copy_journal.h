// The journal of this process's working copies: a file beside them that says which there are and
// what they were made from. It is open as long as the process runs, so that another process can
// distinguish the copies of a process that ended from those in use.
#pragma once

#include <cstddef>
#include <string>

namespace depot {

// Where a working copy comes from.
struct WorkingCopySource {
    std::string name;    // of the entry, as a recovered file is to be called
    std::string server;  // "host:port"
    std::string dn;
};

// Notes a working copy with the bytes that it was filled with; a copy that is noted already is
// noted anew. Each process's first call looks for copies that other processes left behind.
//
// A copy that cannot be noted stays behind when the process is ended from outside. The journal
// vanishes with the process, or with the DLL, unless it names copies then.
void NoteWorkingCopy(const std::string& path, const WorkingCopySource& source, const void* bytes,
                     std::size_t length) noexcept;

// Takes a working copy out of the journal: it is deleted, or it is to stay where it is.
void ForgetWorkingCopy(const std::string& path) noexcept;

// Takes a working copy out of the journal and deletes it. In this order: the name of a file that is
// gone may soon be that of another process's.
void DeleteWorkingCopy(const std::string& path) noexcept;

}  // namespace depot
