// Writing whole files without ever losing what was there.
#pragma once

#include <cstdint>
#include <string>

namespace depot {

enum class FileCreation { kDone, kExists, kFailed };

// Writes the bytes to a new file with normal attributes; one that exists stays. A file that could
// be created but not filled is removed again.
FileCreation CreateLocalFile(const std::string& path, const void* bytes, std::uint32_t length);

// Gives the file these bytes and normal attributes; one that does not exist is created. Returns
// whether all of them were written. When they could not be, because there is no room, the disk
// fails, or others keep the file, it is as it was before, or still missing. Read-only files and
// folders are refused.
//
// The bytes are first written to a new file in the same folder, which then takes the old one's
// place at once, with its rights: a process that ends half-way leaves the old file, and the new one
// as "lda????.tmp". Only where the system refuses a second file or the exchange is the old one
// written over, and put back when that fails.
bool ReplaceLocalFile(const std::string& path, const void* bytes, std::uint32_t length);

}  // namespace depot
