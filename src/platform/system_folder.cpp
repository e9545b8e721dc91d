#include "platform/system_folder.h"

#include "platform/paths.h"
#include "platform/text.h"
#include "platform/win32.h"

namespace depot {

std::string SystemFolder() {
    char folder[kMaxPathBytes] = {};
    return GetSystemDirectoryA(folder, sizeof(folder)) < sizeof(folder)
               ? EnsureTrailingBackslash(folder)
               : std::string();
}

}  // namespace depot
