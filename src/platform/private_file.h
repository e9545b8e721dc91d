// Who may use a file.
#pragma once

#include <string>

namespace depot {

// Takes the file from everyone but the user of the calling thread, whatever its folder allows. A
// file system that keeps no rights leaves it as it is.
void MakePrivate(const std::string& path) noexcept;

// Gives a file the owner of another one. Returns false when the system refuses it, which takes a
// privilege where the owner is another user; a file system without owners refuses nothing.
bool CopyOwner(const std::string& from, const std::string& to);

// Gives a file the access list of another one, as far as both can be reached.
void CopyRights(const std::string& from, const std::string& to);

}  // namespace depot
