#include "host/module.h"

#include <string>

#include "DepotIntr.h"
#include "host/class_factory.h"
#include "host/identifiers.h"
#include "host/registrar.h"
#include "platform/module_state.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

// Two steps, so that the identifier's value is made a text and not its name.
#define DEPOT_TEXT_OF(identifier) #identifier
#define DEPOT_BRACED_TEXT(identifier) "{" DEPOT_TEXT_OF(identifier) "}"

constexpr char kAppIdText[] = DEPOT_BRACED_TEXT(DEPOTINTR_APPID);

HRESULT RegisterTypeLibrary() {
    std::wstring path = OwnModulePath();
    ITypeLib* library = nullptr;
    HRESULT result = LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library);
    if (FAILED(result)) return result;
    result = RegisterTypeLib(library, path.data(), nullptr);
    library->Release();
    return result;
}

HRESULT UnregisterTypeLibrary() {
    const HRESULT result = UnRegisterTypeLib(LIBID_DepotIntrLib, 1, 0, LOCALE_NEUTRAL, SYS_WIN64);
    // A library that is not registered is where it should be.
    const bool missing = result == TYPE_E_REGISTRYACCESS || result == E_INVALIDARG;
    return missing ? S_OK : result;
}

}  // namespace

CDepotIntrModule::CDepotIntrModule() {
    for (const ObjectMapEntry& entry : ObjectMap()) classes_.push_back({&entry, nullptr});
}

CDepotIntrModule::~CDepotIntrModule() {
    for (const MappedClass& mapped : classes_) {
        if (mapped.entry->terminate != nullptr) mapped.entry->terminate();
    }
    for (void (*terminate)() : terminations_) terminate();
    if (interfaceTable_ != nullptr) interfaceTable_->Release();
}

LONG CDepotIntrModule::Lock() noexcept {
    return ++lockCount_;
}

LONG CDepotIntrModule::Unlock() noexcept {
    return --lockCount_;
}

LONG CDepotIntrModule::GetLockCount() const noexcept {
    return lockCount_;
}

HRESULT CDepotIntrModule::GetGITPtr(IGlobalInterfaceTable** table) noexcept {
    if (table == nullptr) return E_POINTER;
    *table = nullptr;
    const std::lock_guard guard(lock_);
    if (interfaceTable_ == nullptr) {
        const HRESULT created =
            CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                             IID_IGlobalInterfaceTable, reinterpret_cast<void**>(&interfaceTable_));
        if (FAILED(created)) return created;
    }
    interfaceTable_->AddRef();
    *table = interfaceTable_;
    return S_OK;
}

HRESULT CDepotIntrModule::AddCommonRGSReplacements(CRegistrar& registrar) noexcept {
    return registrar.AddReplacement("APPID", kAppIdText);
}

void CDepotIntrModule::AddTermination(void (*terminate)()) {
    terminations_.push_back(terminate);
}

HRESULT CDepotIntrModule::GetClassObject(REFCLSID classId, REFIID interfaceId,
                                         void** object) noexcept try {
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

HRESULT CDepotIntrModule::UpdateAppIdRegistry(bool registering) noexcept {
    return UpdateRegistryFromResource(kAppIdScript, registering);
}

HRESULT CDepotIntrModule::RegisterServer() noexcept {
    const HRESULT result = UpdateClasses(true);
    return FAILED(result) ? result : RegisterTypeLibrary();
}

HRESULT CDepotIntrModule::UnregisterServer() noexcept {
    const HRESULT result = UpdateClasses(false);
    return FAILED(result) ? result : UnregisterTypeLibrary();
}

HRESULT CDepotIntrModule::UpdateClasses(bool registering) noexcept {
    for (const MappedClass& mapped : classes_) {
        const HRESULT result =
            UpdateRegistryFromResource(mapped.entry->registryScript, registering);
        if (FAILED(result)) return result;
    }
    return S_OK;
}

HRESULT CDepotIntrModule::UpdateRegistryFromResource(WORD script, bool registering) noexcept try {
    CRegistrar registrar;
    HRESULT result = registrar.AddReplacement("MODULE", Utf8FromWide(OwnModulePath()));
    if (SUCCEEDED(result)) result = AddCommonRGSReplacements(registrar);
    if (FAILED(result)) return result;
    return registering ? registrar.Register(script) : registrar.Unregister(script);
} catch (...) {
    return E_OUTOFMEMORY;
}

}  // namespace depot
