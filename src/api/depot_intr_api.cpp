#include "api/depot_intr_api.h"

#include "api/dispatch_adapter.h"
#include "api/method.h"

namespace depot {

HRESULT CDepotIntrApi::InternalQueryInterface(REFIID interfaceId, void** object) {
    return GiveInterface(*this,
                         {&IID_IUnknown, &IID_IDispatch, &IID_IDepotIntrApi, &IID_IDepotIntrApi2},
                         interfaceId, object);
}

STDMETHODIMP CDepotIntrApi::GetTypeInfoCount(UINT* count) noexcept {
    const ModuleStateScope scope;
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
}

STDMETHODIMP CDepotIntrApi::GetTypeInfo(UINT index, LCID locale, ITypeInfo** typeInfo) noexcept {
    return DispatchAdapter::Instance().GetTypeInfo(index, locale, typeInfo);
}

STDMETHODIMP CDepotIntrApi::GetIDsOfNames(REFIID, LPOLESTR* names, UINT nameCount, LCID,
                                          DISPID* ids) noexcept {
    return DispatchAdapter::Instance().GetIDsOfNames(names, nameCount, ids);
}

STDMETHODIMP CDepotIntrApi::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* exception,
                                   UINT* wrongArgument) noexcept {
    return DispatchAdapter::Instance().Invoke(static_cast<IDepotIntrApi2*>(this), id, flags,
                                              parameters, result, exception, wrongArgument);
}

STDMETHODIMP CDepotIntrApi::DPInitialize(LONG_PTR* plDPIntr) noexcept {
    if (plDPIntr == nullptr) return RefuseMethod();
    *plDPIntr = 0;
    return RunMethod([&] {
        SessionTable& sessions = SessionTable::Instance();
        NewSession made(*plDPIntr);
        DepotSession* const session = sessions.Find(made.Handle());
        if (session == nullptr) return false;
        if (session->Folders().UserFolder().empty()) {
            // Kept: the session that was built is not destroyed.
            sessions.Abandon(made.Handle());
            return false;
        }
        made.Keep();
        return true;
    });
}

STDMETHODIMP CDepotIntrApi::DPUnInitialize(LONG_PTR lDPIntr) noexcept {
    RunMethod([&] {
        SessionTable::Instance().Destroy(lDPIntr);
        return true;
    });
    return S_OK;
}

}  // namespace depot
