#include "com/com_module.h"

#include <string>
#include <utility>

#include "com/class_factory.h"
#include "com/registrar.h"
#include "com/type_library.h"
#include "platform/module_state.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

CComModule* theModule = nullptr;

// Switches the thread to the system's default locale, in which registry content is written, and
// back on every way out.
class SystemLocaleScope : NotCopied {
public:
    SystemLocaleScope() : previous_(GetThreadLocale()) { SetThreadLocale(LOCALE_SYSTEM_DEFAULT); }
    ~SystemLocaleScope() { SetThreadLocale(previous_); }

private:
    LCID previous_;
};

HRESULT RegisterTypeLibrary() noexcept try {
    UniqueCom<ITypeLib> library;
    const HRESULT result = OpenTypeLibrary(library);
    if (FAILED(result)) return result;
    return RegisterTypeLib(library.get(), OwnModulePath().data(), nullptr);
} catch (...) {
    return E_OUTOFMEMORY;
}

bool IsTypeLibraryRegistered(const GUID& library) {
    wchar_t id[39] = {};
    StringFromGUID2(library, id, static_cast<int>(std::size(id)));
    HKEY key = nullptr;
    const std::wstring path = std::wstring(L"TypeLib\\") + id + L"\\1.0";
    const LSTATUS status = RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key);
    if (status == ERROR_SUCCESS) RegCloseKey(key);
    // What cannot be looked at may well be there.
    return status != ERROR_FILE_NOT_FOUND;
}

HRESULT UnregisterTypeLibrary(const GUID& library) noexcept try {
    const HRESULT result = UnRegisterTypeLib(library, 1, 0, LOCALE_NEUTRAL, SYS_WIN64);
    // A library that is not registered is where it should be.
    return FAILED(result) && !IsTypeLibraryRegistered(library) ? S_OK : result;
} catch (...) {
    return E_OUTOFMEMORY;
}

}  // namespace

CComModule& Module() {
    return *theModule;
}

CComModule::CComModule(const ModuleIdentity& identity)
    : identity_(identity), previous_(std::exchange(theModule, this)) {
    for (const ObjectMapEntry& entry : identity_.objectMap) classes_.push_back({&entry, nullptr});
}

CComModule::~CComModule() {
    for (const MappedClass& mapped : classes_) {
        if (mapped.entry->terminate != nullptr) mapped.entry->terminate();
    }
    for (void (*terminate)() : terminations_) terminate();
    interfaceTable_.reset();
    // Only now: what ends may still ask for its module.
    theModule = previous_;
}

LONG CComModule::Lock() noexcept {
    return ++lockCount_;
}

LONG CComModule::Unlock() noexcept {
    return --lockCount_;
}

LONG CComModule::GetLockCount() const noexcept {
    return lockCount_;
}

HRESULT CComModule::GetGITPtr(IGlobalInterfaceTable** table) noexcept {
    if (table == nullptr) return E_POINTER;
    *table = nullptr;
    const std::lock_guard guard(lock_);
    if (!interfaceTable_) {
        void* created = nullptr;
        const HRESULT result =
            CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                             IID_IGlobalInterfaceTable, &created);
        if (FAILED(result)) return result;
        interfaceTable_.reset(static_cast<IGlobalInterfaceTable*>(created));
    }
    interfaceTable_->AddRef();
    *table = interfaceTable_.get();
    return S_OK;
}

HRESULT CComModule::AddCommonRGSReplacements(CRegistrar& registrar) noexcept try {
    return registrar.AddReplacement("APPID", identity_.appId);
} catch (...) {
    return E_OUTOFMEMORY;
}

void CComModule::AddTermination(void (*terminate)()) {
    terminations_.push_back(terminate);
}

HRESULT CComModule::GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) noexcept
    try {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    for (MappedClass& mapped : classes_) {
        if (!IsEqualCLSID(mapped.entry->classId, classId)) continue;
        const std::lock_guard guard(lock_);
        if (!mapped.factory) mapped.factory = std::make_unique<CComObjectCached>(*mapped.entry);
        return mapped.factory->QueryInterface(interfaceId, object);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
} catch (...) {
    return E_OUTOFMEMORY;
}

HRESULT CComModule::RegisterServer() noexcept {
    const SystemLocaleScope locale;
    HRESULT result = UpdateRegistryFromResource(kAppIdScript, true);
    if (SUCCEEDED(result)) result = UpdateClasses(true);
    return FAILED(result) ? result : RegisterTypeLibrary();
}

HRESULT CComModule::UnregisterServer() noexcept {
    const SystemLocaleScope locale;
    HRESULT result = UpdateClasses(false);
    if (SUCCEEDED(result)) result = UnregisterTypeLibrary(identity_.typeLibrary);
    return FAILED(result) ? result : UpdateRegistryFromResource(kAppIdScript, false);
}

HRESULT CComModule::UpdateClasses(bool registering) noexcept {
    for (const MappedClass& mapped : classes_) {
        const HRESULT result =
            UpdateRegistryFromResource(mapped.entry->registryScript, registering);
        if (FAILED(result)) return result;
    }
    return S_OK;
}

HRESULT CComModule::UpdateRegistryFromResource(WORD script, bool registering) noexcept try {
    CRegistrar registrar;
    HRESULT result = registrar.AddReplacement("MODULE", Utf8FromWide(OwnModulePath()));
    if (SUCCEEDED(result)) result = AddCommonRGSReplacements(registrar);
    if (FAILED(result)) return result;
    return registering ? registrar.Register(script) : registrar.Unregister(script);
} catch (...) {
    return E_OUTOFMEMORY;
}

}  // namespace depot
