// What becomes of a changed working copy that cannot be stored because its library is being taken
// out of the process.
#pragma once

#include <string>

#include "config/profile_edit.h"

namespace depot {

// Moves the working copy at `localPath`, with the edits that it refused, into `folder`, a
// RecoveredFolder of before, under a name that is made of `name`. Where that fails the working copy
// stays. Only files are touched: no server, no window and no shell, and no file is waited for.
void KeepWorkingCopy(const std::string& localPath, const std::string& name,
                     const std::string& folder, const RefusedEdits& refused);

// Deletes a working copy that nobody changed, without waiting for another program that has it open:
// the next process looks for those that stay.
void DropWorkingCopy(const std::string& localPath) noexcept;

}  // namespace depot
