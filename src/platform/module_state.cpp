#include "platform/module_state.h"

#include <memory>
#include <type_traits>

#include "platform/paths.h"

namespace depot {
namespace {

constexpr WORD kManifestResource = 2;

struct ActivationContextReleaser {
    void operator()(HANDLE context) const { ReleaseActCtx(context); }
};
using UniqueActivationContext =
    std::unique_ptr<std::remove_pointer_t<HANDLE>, ActivationContextReleaser>;

// Reading the resource in place works whatever characters the path of the module holds.
UniqueActivationContext CreateOwnContext() {
    ACTCTXA request = {};
    request.cbSize = sizeof(request);
    request.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    request.hModule = OwnModule();
    request.lpResourceName = MAKEINTRESOURCEA(kManifestResource);
    const HANDLE context = CreateActCtxA(&request);
    return UniqueActivationContext(context == INVALID_HANDLE_VALUE ? nullptr : context);
}

HANDLE OwnContext() {
    static const UniqueActivationContext context = CreateOwnContext();
    return context.get();
}

}  // namespace

HMODULE KeepOwnModule() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const char*>(&KeepOwnModule), &module);
    return module;
}

HMODULE OwnModule() {
    HMODULE module = nullptr;
    GetModuleHandleExA(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<const char*>(&OwnModule), &module);
    return module;
}

std::wstring OwnModulePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const auto room = static_cast<DWORD>(path.size());
        const DWORD length = GetModuleFileNameW(OwnModule(), path.data(), room);
        if (length < room) return path.substr(0, length);
        path.resize(path.size() * 2);
    }
}

std::string OwnModuleFolder() {
    char path[kMaxPathBytes] = {};
    const DWORD length = GetModuleFileNameA(OwnModule(), path, sizeof(path));
    return length < sizeof(path) ? FolderPrefix(path) : std::string();
}

ModuleStateScope::ModuleStateScope() {
    // A null context is never passed on: the system would take it for "the process's own".
    const HANDLE context = OwnContext();
    active_ = context != nullptr && ActivateActCtx(context, &cookie_) != FALSE;
}

ModuleStateScope::~ModuleStateScope() {
    if (active_) DeactivateActCtx(0, cookie_);
}

}  // namespace depot
