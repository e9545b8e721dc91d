// The entry points of the DLL, and the class that it offers.
#include "depotbrowser/identifiers.h"
#include "depotbrowser/user_password_prompt_dialog.h"
#include "host/braced_text.h"
#include "host/com_object.h"
#include "platform/compiler.h"
#include "platform/module_state.h"
#include "platform/no_destructor.h"

namespace depot {
namespace {

constexpr WORD kPromptScript = 101;

HRESULT CreatePrompt(REFIID interfaceId, void** object) {
    return CreateComObject<CComObject<CUserPasswordPromptDialog>>(interfaceId, object);
}

HRESULT CreateAggregatedPrompt(IUnknown* outer, void** object) {
    return CreateComObject<CComAggObject<CUserPasswordPromptDialog>>(IID_IUnknown, object, outer);
}

const ObjectMapEntry kObjectMap[] = {
    {CLSID_UserPasswordPromptDialog, kPromptScript, CreatePrompt, CreateAggregatedPrompt, nullptr},
};

const ModuleIdentity kIdentity = {DEPOT_BRACED_TEXT(DEPOTBROWSER_APPID), LIBID_DepotBrowserLib,
                                  kObjectMap};

CComModule& BrowserModule() {
    static NoDestructor<CComModule> module(kIdentity);
    return *module;
}

}  // namespace
}  // namespace depot

DEPOT_ENTRY_POINT BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_ATTACH) depot::BrowserModule();
    // While a process ends nothing may be touched that other libraries may already have given up.
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) {
        std::destroy_at(&depot::BrowserModule());
    }
    return TRUE;
}

DEPOT_ENTRY_POINT HRESULT WINAPI DllCanUnloadNow() {
    const depot::ModuleStateScope scope;
    return depot::Module().GetLockCount() == 0 ? S_OK : S_FALSE;
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
