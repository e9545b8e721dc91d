#include "platform/library_search.h"

#include "platform/compiler.h"
#include "platform/win32.h"

namespace depot {

void RestrictLibrarySearch() {
    using SetDirectories = BOOL(WINAPI*)(DWORD);
    SetDllDirectoryA("");
    // Systems without their updates do not have it.
    const auto setDirectories = FunctionCast<SetDirectories>(
        GetProcAddress(GetModuleHandleA("kernel32.dll"), "SetDefaultDllDirectories"));
    if (setDirectories != nullptr) {
        setDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32 | LOAD_LIBRARY_SEARCH_APPLICATION_DIR);
    }
}

}  // namespace depot
