// A library of texts that does something when it is loaded as code: it leaves a mark in the
// environment of the process.
#include "platform/win32.h"

BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, void* /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) SetEnvironmentVariableA("DEPOTTESTS_PLANTED", "ran");
    return TRUE;
}
