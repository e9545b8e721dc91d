// An entry's bytes on their way into a file of the user's.
#pragma once

#include <cstdint>
#include <string>

#include "directory/ldap_items.h"
#include "platform/replace_file.h"

namespace depot {

// What becomes of a local file of that name.
enum class ExistingFile { kStays, kIsReplaced };

// Writes what was read of a file entry to a local file. Returns LDAP_SUCCESS,
// LDAP_ALREADY_EXISTS when there is a file that is to stay, LDAP_NO_SUCH_ATTRIBUTE when there is
// one and the entry showed no bytes that could take the place of its own, or LDAP_LOCAL_ERROR when
// the bytes cannot be written. A file that was there is then as
// it was. With Flush::kNow, for an entry that is removed afterwards, the bytes are on the disk.
std::uint32_t WriteFetchedFile(const FileBuffer& contents, const std::string& path,
                               ExistingFile existing, Flush flush = Flush::kLater);

}  // namespace depot
