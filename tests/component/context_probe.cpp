// A directory-service library for tests: every folder it is asked for tells whether the caller's
// activation context brings the common controls of version 6.
#include <cstring>

#include "platform/compiler.h"
#include "platform/win32.h"

namespace {

bool HasCommonControls6() {
    ACTCTX_SECTION_KEYED_DATA found = {};
    found.cbSize = sizeof(found);
    return FindActCtxSectionStringA(0, nullptr, ACTIVATION_CONTEXT_SECTION_DLL_REDIRECTION,
                                    "comctl32.dll", &found) != FALSE;
}

}  // namespace

DEPOT_ENTRY_POINT int __stdcall LookUpFolder(int, int, char* buffer, unsigned size) {
    const char* const folder =
        HasCommonControls6() ? "C:\\CommonControls6\\User" : "C:\\NoContext\\User";
    if (std::strlen(folder) >= size) return 0;
    std::strcpy(buffer, folder);
    return 1;
}
