// The factory of one class, which the module keeps once it was asked for.
#pragma once

#include "com/com_module.h"
#include "platform/win32.h"
// After the Windows headers.
#include <unknwn.h>

namespace depot {

// Makes objects of one class, alone or as part of an aggregate. Reference counting is the derived
// class's.
class CComClassFactory : public IClassFactory {
public:
    explicit CComClassFactory(const ObjectMapEntry& entry) : entry_(entry) {}

    // Makes an object. An aggregate can only be asked for its IUnknown: CLASS_E_NOAGGREGATION
    // otherwise.
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID interfaceId,
                                void** object) noexcept override;
    STDMETHODIMP LockServer(BOOL lock) noexcept override;

protected:
    ~CComClassFactory() = default;

private:
    const ObjectMapEntry& entry_;
};

// A factory that lives as long as the module. The module's own reference does not keep the DLL
// loaded; a client's does.
class CComObjectCached final : public CComClassFactory {
public:
    using CComClassFactory::CComClassFactory;

    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) noexcept override;
    STDMETHODIMP_(ULONG) AddRef() noexcept override;
    STDMETHODIMP_(ULONG) Release() noexcept override;

private:
    std::atomic<ULONG> clientReferences_{0};
};

}  // namespace depot
