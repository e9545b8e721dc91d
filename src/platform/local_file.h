// Local files: whether they exist, and their bytes.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace depot {

// Whether a file or folder of that name exists, whatever may be done with it.
bool PathExists(const std::string& path);

// Whether it may exist: also when the system cannot tell at the moment.
bool PathMayExist(const std::string& path);

// Whether there is a folder of that name.
bool IsLocalFolder(const std::string& path);

// Returns all bytes of the file; nothing when it cannot be opened or read to its end.
std::optional<std::vector<std::uint8_t>> ReadLocalFile(const std::string& path);

// Reads all bytes into the room that `makeRoom` returns for that many; returns false as above.
bool ReadLocalFile(const std::string& path,
                   const std::function<std::uint8_t*(std::size_t length)>& makeRoom);

// The same for a file that is open for reading; nothing for one of 2 GB or more. Where its next
// byte is read changes.
std::optional<std::vector<std::uint8_t>> ReadOpenFile(HANDLE file);

// Writes the bytes to the file, which is created or truncated. Returns whether all of them were
// written; a file that could be created but not filled is removed again.
bool WriteLocalFile(const std::string& path, const void* bytes, std::uint32_t length);

// Makes sure that a folder and the folders above it exist.
bool EnsureLocalFolder(const std::string& path);

}  // namespace depot
