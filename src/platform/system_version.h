// The version of the operating system.
#pragma once

#include "platform/win32.h"

namespace depot {

// Fills the version record as GetVersionExA gives it; all zero when the system refuses.
OSVERSIONINFOA SystemVersion();

}  // namespace depot
