// The entry points of the DLL, and the classes that it offers.
#include <optional>

#include "com/braced_text.h"
#include "com/com_object.h"
#include "depotbrowser/depot_browse_dialog.h"
#include "depotbrowser/identifiers.h"
#include "depotbrowser/prompt_text.h"
#include "depotbrowser/user_password_prompt_dialog.h"
#include "depotbrowser/worker_notices.h"
#include "model/localization.h"
#include "platform/compiler.h"
#include "platform/directory_client.h"
#include "platform/directory_service.h"
#include "platform/module_state.h"
#include "platform/no_destructor.h"
#include "platform/system_code_page.h"
#include "texts/language_settings.h"

namespace depot {
namespace {

constexpr WORD kPromptScript = 101;
constexpr WORD kBrowseScript = 102;

template <class Class>
HRESULT Create(REFIID interfaceId, void** object) {
    return CreateComObject<CComObject<Class>>(interfaceId, object);
}

template <class Class>
HRESULT CreateAggregated(IUnknown* outer, void** object) {
    return CreateComObject<CComAggObject<Class>>(IID_IUnknown, object, outer);
}

const ObjectMapEntry kObjectMap[] = {
    {CLSID_UserPasswordPromptDialog, kPromptScript, Create<CUserPasswordPromptDialog>,
     CreateAggregated<CUserPasswordPromptDialog>, nullptr},
    {CLSID_DepotBrowseDialog, kBrowseScript, Create<CDepotBrowseDialog>,
     CreateAggregated<CDepotBrowseDialog>, nullptr},
};

const ModuleIdentity kIdentity = {DEPOT_BRACED_TEXT(DEPOTBROWSER_APPID), LIBID_DepotBrowserLib,
                                  kObjectMap};

std::optional<CComModule>& AttachedModule() {
    static NoDestructor<std::optional<CComModule>> module;
    return *module;
}

// Gives the depots what the host of the automation interface gives them there.
void PrepareDepots() {
    InstallSystemCodePage();
    InstallLocalization({CurrentLanguageCode, PromptTextForNames});
    RouteWorkerNotices();
}

BOOL Attach() noexcept try {
    AttachedModule().emplace(kIdentity);
    PrepareDepots();
    return TRUE;
} catch (...) {
    // Without memory the system detaches the DLL at once and takes it out of the process again.
    return FALSE;
}

// Workers, which alone use these libraries, keep the DLL loaded.
void Detach() {
    AttachedModule().reset();
    FreePromptTexts();
    FreeDirectoryClient();
    FreeDirectoryService();
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
