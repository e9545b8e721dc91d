// What becomes of a changed working copy that cannot be stored because its library is being taken
// out of the process.
#pragma once

#include <string>

namespace depot {

// Moves the working copy at `localPath` into `folder`, a RecoveredFolder of before, under a name
// that is made of `name`. Where that fails the working copy stays. Only files are touched: no
// server, no window and no shell.
void KeepWorkingCopy(const std::string& localPath, const std::string& name,
                     const std::string& folder);

}  // namespace depot
