// What an installation left on the machine after its libraries were removed.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace depot::ctl {

// One thing that is left. Texts are in UTF-8.
struct Leftover {
    std::string place;              // a registry key with its hive, or a folder
    std::string what;               // what it is
    std::string stays;              // why it is never removed here; empty for what may be
    std::function<DWORD()> remove;  // returns a code of the system
};

// Returns what is left. What belongs to an installation whose library is there is not among it.
// Files of directories that were kept for the user may be removed only where that is asked for:
// programs that need no registration may use them.
std::vector<Leftover> FindLeftovers(bool withKeptFiles);

}  // namespace depot::ctl
