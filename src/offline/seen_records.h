// What this process has seen in files of records, so that they need not be opened and decrypted
// once more. Shared by its threads; needs no memory but its own.
#pragma once

#include <string>

#include "platform/digest.h"
#include "platform/file_state.h"

namespace depot {

// Whether the file was noted to hold these contents when it was in this state. What was forgotten
// for others counts as not noted.
bool WasSeen(const std::string& path, const FileState& state, const Digest& contents);
void NoteSeen(const std::string& path, const FileState& state, const Digest& contents);

}  // namespace depot
