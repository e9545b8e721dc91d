// What the module object of any in-process server does: it knows the classes that the DLL offers,
// what keeps the DLL loaded, and how it is registered.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "com/automation.h"
#include "platform/not_copied.h"
#include "platform/win32.h"
// After the Windows headers.
#include <objidl.h>

namespace depot {

class CComObjectCached;
class CRegistrar;

// One creatable class.
struct ObjectMapEntry {
    const CLSID& classId;
    WORD registryScript;  // the resource that registers the class
    HRESULT (*create)(REFIID interfaceId, void** object);
    HRESULT (*createAggregate)(IUnknown* outer, void** object);
    void (*terminate)();  // run when the module ends; may be null
};

// What distinguishes one server from another.
struct ModuleIdentity {
    const char* appId;        // the application identifier in braces
    const GUID& typeLibrary;  // version 1.0, in the DLL's resources
    std::span<const ObjectMapEntry> objectMap;
};

// The module object of a DLL. There is one, made when the DLL is loaded.
class CComModule : NotCopied {
public:
    // REQUIRES: what `identity` refers to lives as long as the DLL is loaded.
    explicit CComModule(const ModuleIdentity& identity);

    // Runs the termination routines of the object map and those that were registered, and lets go
    // of the Global Interface Table.
    virtual ~CComModule();

    // Count what keeps the DLL loaded; each returns the new count.
    virtual LONG Lock() noexcept;
    virtual LONG Unlock() noexcept;
    virtual LONG GetLockCount() const noexcept;

    // Hands out the process's Global Interface Table with an added reference; E_POINTER for a null
    // output.
    //
    // Contract: nothing here calls it.
    virtual HRESULT GetGITPtr(IGlobalInterfaceTable** table) noexcept;

    // Gives the registrar the replacement APPID, the application identifier in braces.
    virtual HRESULT AddCommonRGSReplacements(CRegistrar& registrar) noexcept;

    // Has `terminate` run when the module ends.
    //
    // Contract: nothing here calls it.
    void AddTermination(void (*terminate)());

    // Returns the factory of a class; CLASS_E_CLASSNOTAVAILABLE for any other identifier.
    HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) noexcept;

    // Write the registry content of the module and remove it again, in the system's default locale;
    // the thread's own is back afterwards. Each stops at the first failure and returns it.
    HRESULT RegisterServer() noexcept;
    HRESULT UnregisterServer() noexcept;

    static constexpr WORD kAppIdScript = 100;

private:
    struct MappedClass {
        const ObjectMapEntry* entry;
        std::unique_ptr<CComObjectCached> factory;
    };

    HRESULT UpdateRegistryFromResource(WORD script, bool registering) noexcept;
    HRESULT UpdateClasses(bool registering) noexcept;

    const ModuleIdentity identity_;
    CComModule* const previous_;  // the module again when this one is gone; never owned
    std::atomic<LONG> lockCount_{0};
    std::mutex lock_;
    UniqueCom<IGlobalInterfaceTable> interfaceTable_;
    std::vector<MappedClass> classes_;
    std::vector<void (*)()> terminations_;
};

// The module of this DLL. REQUIRES: it was made, which a DLL does when it is attached to its
// process.
CComModule& Module();

}  // namespace depot
