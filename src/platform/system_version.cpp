#include "platform/system_version.h"

namespace depot {

OSVERSIONINFOA SystemVersion() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    static_assert(sizeof(version) == 148, "the record size that every Windows version accepts");
    if (!GetVersionExA(&version)) version = {};
    return version;
}

}  // namespace depot
