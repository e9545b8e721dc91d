// The DLL's own part in its entry points, and the classes that it offers.
#include "com/braced_text.h"
#include "com/com_object.h"
#include "com/entry_points.h"
#include "depotbrowser/depot_browse_dialog.h"
#include "depotbrowser/identifiers.h"
#include "depotbrowser/prompt_text.h"
#include "depotbrowser/user_password_prompt_dialog.h"
#include "depotbrowser/worker_notices.h"
#include "model/localization.h"
#include "platform/directory_client.h"
#include "platform/directory_service.h"
#include "platform/system_code_page.h"
#include "platform/trace.h"
#include "texts/language_settings.h"

namespace depot {
namespace {

constexpr WORD kPromptScript = 101;
constexpr WORD kBrowseScript = 102;

constexpr ObjectMapEntry kObjectMap[] = {
    MappedAs<CUserPasswordPromptDialog>(CLSID_UserPasswordPromptDialog, kPromptScript),
    MappedAs<CDepotBrowseDialog>(CLSID_DepotBrowseDialog, kBrowseScript),
};

const ModuleIdentity kIdentity = {DEPOT_BRACED_TEXT(DEPOTBROWSER_APPID), LIBID_DepotBrowserLib,
                                  kObjectMap};

// Gives the depots what the host of the automation interface gives them there.
void PrepareDepots() {
    InstallSystemCodePage();
    InstallLocalization({CurrentLanguageCode, PromptTextForNames});
    RouteWorkerNotices();
}

}  // namespace

bool AttachServer() noexcept try {
    AttachedModule<CComModule>().emplace(kIdentity);
    PrepareDepots();
    StartTrace();
    return true;
} catch (...) {
    StopTrace();
    return false;
}

// Workers, which alone use these libraries, keep the DLL loaded.
void DetachServer() {
    AttachedModule<CComModule>().reset();
    FreePromptTexts();
    FreeDirectoryClient();
    FreeDirectoryService();
    StopTrace();
}

bool CanUnloadServer() noexcept {
    return Module().GetLockCount() == 0;
}

}  // namespace depot
