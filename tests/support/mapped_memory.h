// Addresses of this process: what is mapped there at the moment.
#pragma once

#include "platform/win32.h"

namespace depot::test {

// Tells whether the address belongs to a view or to any other memory of the process.
inline bool IsMapped(const void* address) {
    MEMORY_BASIC_INFORMATION region = {};
    return VirtualQuery(address, &region, sizeof(region)) != 0 && region.State != MEM_FREE;
}

}  // namespace depot::test
