#include "com/entry_points.h"

#include <cstdlib>

#include "platform/compiler.h"
#include "platform/module_state.h"

// Ends a process that nothing can save. The language's own, which this takes the place of, writes
// the exception's name where no user of a server looks, and brings along what takes names apart.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl*): the library looks for this name
void __gnu_cxx::__verbose_terminate_handler() {
    std::abort();
}

DEPOT_ENTRY_POINT BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_ATTACH) return depot::AttachServer() ? TRUE : FALSE;
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) depot::DetachServer();
    return TRUE;
}

DEPOT_ENTRY_POINT HRESULT WINAPI DllCanUnloadNow() {
    const depot::ModuleStateScope scope;
    return depot::CanUnloadServer() ? S_OK : S_FALSE;
}

DEPOT_ENTRY_POINT HRESULT WINAPI DllGetClassObject(REFCLSID classId, REFIID interfaceId,
                                                   void** object) {
    const depot::ModuleStateScope scope;
    return depot::Module().GetClassObject(classId, interfaceId, object);
}

DEPOT_ENTRY_POINT HRESULT WINAPI DllRegisterServer() {
    const depot::ModuleStateScope scope;
    return depot::Module().RegisterServer();
}

DEPOT_ENTRY_POINT HRESULT WINAPI DllUnregisterServer() {
    const depot::ModuleStateScope scope;
    return depot::Module().UnregisterServer();
}
