// The entry points of the DLL.
#include <optional>

#include "host/app.h"
#include "host/module.h"
#include "host/unloading.h"
#include "platform/compiler.h"
#include "platform/directory_service.h"
#include "platform/module_state.h"
#include "platform/no_destructor.h"
#include "platform/trace.h"

namespace depot {
namespace {

CDepotIntrApp& App() {
    static NoDestructor<CDepotIntrApp> app;
    return *app;
}

std::optional<CDepotIntrModule>& AttachedModule() {
    static NoDestructor<std::optional<CDepotIntrModule>> module;
    return *module;
}

BOOL Attach() noexcept try {
    StartTrace();
    AttachedModule().emplace();
    return App().InitInstance();
} catch (...) {
    // Without memory the system detaches the DLL at once and takes it out of the process again.
    AttachedModule().reset();
    FreeDirectoryService();
    StopTrace();
    return FALSE;
}

void Detach() {
    if (!AttachedModule()) return;
    LeaveProcess();
    App().ExitInstance();
    AttachedModule().reset();
    StopTrace();
}

}  // namespace
}  // namespace depot

DEPOT_ENTRY_POINT BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_ATTACH) return depot::Attach();
    // While a process ends nothing may be touched that other libraries may already have given up.
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) depot::Detach();
    return TRUE;
}

DEPOT_ENTRY_POINT HRESULT WINAPI DllCanUnloadNow() {
    const depot::ModuleStateScope scope;
    return depot::App().CanUnloadNow() == S_OK && depot::PrepareUnloading() ? S_OK : S_FALSE;
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
