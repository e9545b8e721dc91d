// Who may write to a folder.
#pragma once

#include <string>

namespace depot::ctl {

// Returns whether the folder's permissions let every user, or every user who is logged on, put
// files there or replace them; not when they cannot be read.
bool OrdinaryUsersMayWrite(const std::string& folder);

}  // namespace depot::ctl
