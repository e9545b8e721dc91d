// Who may use a file.
#pragma once

#include <string>

#include "platform/handles.h"

namespace depot {

// Takes the file from everyone but the user of the calling thread, whatever its folder allows. A
// file system that keeps no rights leaves it as it is.
void MakePrivate(const std::string& path) noexcept;

// Creates a file that does not exist yet, owned by the user of the calling thread and for no
// other; null when there is one or none can be created. A file system that keeps no rights makes a
// file like any other.
UniqueHandle CreatePrivateFile(const std::string& path, DWORD access, DWORD sharing) noexcept;

// Creates a folder that does not exist yet, whose files and folders are for the same user alone.
// Returns false when there is one, and when none can be created.
bool CreatePrivateFolder(const std::string& path) noexcept;

// Whether the user of the calling thread owns the file. No user can make a file that belongs
// to another one. A file system that keeps no owners says no.
bool IsOwnedByUser(HANDLE file) noexcept;
// Gives a file the owner of another one. Returns false when the system refuses it, which takes a
// privilege where the owner is another user; a file system without owners refuses nothing.
bool CopyOwner(const std::string& from, const std::string& to);

// Gives a file the access list of another one, as far as both can be reached.
void CopyRights(const std::string& from, const std::string& to);

}  // namespace depot
