#include "com/entry_points.h"

#include "platform/compiler.h"
#include "platform/module_state.h"

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
