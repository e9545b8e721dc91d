// Writing whole files without ever losing what was there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/file_state.h"
#include "platform/win32.h"

namespace depot {

enum class FileCreation { kDone, kExists, kFailed };

// When a new file's bytes have to be on the disk itself: a copy whose source is removed survives
// a power cut only there.
enum class Flush { kLater, kNow };

// Writes the bytes to a new file with normal attributes; one that exists stays. The file gets its
// name once it is whole: one that could be neither filled nor removed again stays as "lda????.tmp".
// Only where the folder refuses a second name, or a rename, is it written under its own name.
FileCreation CreateLocalFile(const std::string& path, const void* bytes, std::uint32_t length,
                             Flush flush = Flush::kLater);

// Gives the file these bytes and normal attributes; one that does not exist is created. Returns
// whether all of them were written. When they could not be, because there is no room, the disk
// fails, or others keep the file for more than three seconds, it is as it was before, or still
// missing. Read-only files and folders are refused.
//
// The bytes are first written to a new file in the same folder, which then takes the old one's
// place with all that belongs to the old one: its owner, access list, named streams, encryption. A
// process that ends half-way leaves the old file, and the new one as "lda????.tmp". Only where the
// system refuses a second file, or an exchange that loses nothing of this, is the old one written
// over, and put back when that fails. Bytes that replace others are always flushed.
bool ReplaceLocalFile(const std::string& path, const void* bytes, std::uint32_t length,
                      Flush flush = Flush::kLater);

// The same for a file of the component's own that several programs read: they find either what it
// held or the new bytes, whole, at every moment. Nothing that belongs to the old file is kept. With
// `state` the new file gets a state of its own, which is stored there where it could be given.
bool ExchangeOwnFile(const std::string& path, std::span<const std::uint8_t> bytes, Flush flush,
                     std::optional<FileState>* state = nullptr);

// Returns all bytes of such a file, which others may replace or delete meanwhile; nothing when it
// cannot be opened or read to its end. What somebody else has open is waited for, for three
// seconds.
std::optional<std::vector<std::uint8_t>> ReadOwnFile(const std::string& path);

// Copies a file as CopyFileA does, but onto an ordinary file in the way of ReplaceLocalFile.
// Returns whether it was copied, and leaves the system's last error.
bool CopyLocalFile(const std::string& source, const std::string& path, bool failIfExists,
                   Flush flush = Flush::kLater);

// Writes over an existing file without making another, and puts back what it held when that fails.
// Returns whether it holds the bytes now; the last error is that of the failure.
bool WriteOverLocalFile(const std::string& path, const void* bytes, std::size_t length);

// The same for a file that is open for reading and writing. One that is too long to be put back is
// refused; a device takes the bytes as they come.
bool WriteOverOpenFile(HANDLE file, const void* bytes, std::size_t length);

// Has the system write what it holds of the file to the disk. Returns false when the disk fails; a
// file that cannot be opened for writing is left to the system.
bool FlushLocalFile(const std::string& path);

}  // namespace depot
