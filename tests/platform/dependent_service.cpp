// A directory-service library for tests that needs a library of its own, as the product's does. The
// folder that it answers tells whether the system would have reported a failure in a box while it
// was being loaded.
#include "platform/compiler.h"
#include "platform/service_part.h"
#include "platform/win32.h"

namespace {

bool quietly = false;

}  // namespace

DEPOT_ENTRY_POINT BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        quietly = (GetThreadErrorMode() & SEM_FAILCRITICALERRORS) != 0;
    }
    return TRUE;
}

DEPOT_ENTRY_POINT int __stdcall LookUpFolder(int, int, char* buffer, unsigned size) {
    return PartOfTheService(quietly, buffer, size);
}
