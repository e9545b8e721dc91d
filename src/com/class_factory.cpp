#include "com/class_factory.h"

#include "platform/module_state.h"

namespace depot {

STDMETHODIMP CComClassFactory::CreateInstance(IUnknown* outer, REFIID interfaceId,
                                              void** object) noexcept {
    const ModuleStateScope scope;
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer == nullptr) return entry_.create(interfaceId, object);
    if (!IsEqualIID(interfaceId, IID_IUnknown)) return CLASS_E_NOAGGREGATION;
    return entry_.createAggregate(outer, object);
}

STDMETHODIMP CComClassFactory::LockServer(BOOL lock) noexcept {
    const ModuleStateScope scope;
    lock ? Module().Lock() : Module().Unlock();
    return S_OK;
}

STDMETHODIMP CComObjectCached::QueryInterface(REFIID interfaceId, void** object) noexcept {
    return GiveInterface(*this, {&IID_IUnknown, &IID_IClassFactory}, interfaceId, object);
}

STDMETHODIMP_(ULONG) CComObjectCached::AddRef() noexcept {
    const ULONG references = ++clientReferences_;
    if (references == 1) Module().Lock();
    return references;
}

STDMETHODIMP_(ULONG) CComObjectCached::Release() noexcept {
    const ULONG references = --clientReferences_;
    if (references == 0) Module().Unlock();
    return references;
}

}  // namespace depot
