// The DLL's own part in its entry points.
#include "com/entry_points.h"
#include "host/app.h"
#include "host/module.h"
#include "host/unloading.h"
#include "platform/directory_service.h"
#include "platform/trace.h"

namespace depot {
namespace {

CDepotIntrApp& App() {
    static NoDestructor<CDepotIntrApp> app;
    return *app;
}

}  // namespace

bool AttachServer() noexcept try {
    StartTrace();
    AttachedModule<CDepotIntrModule>().emplace();
    return App().InitInstance() != FALSE;
} catch (...) {
    AttachedModule<CDepotIntrModule>().reset();
    FreeDirectoryService();
    StopTrace();
    return false;
}

void DetachServer() {
    std::optional<CDepotIntrModule>& module = AttachedModule<CDepotIntrModule>();
    if (!module) return;
    LeaveProcess();
    App().ExitInstance();
    module.reset();
    StopTrace();
}

bool CanUnloadServer() noexcept {
    return App().CanUnloadNow() == S_OK && PrepareUnloading();
}

}  // namespace depot
