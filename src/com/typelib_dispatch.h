// Late binding for the DLL's dual interfaces, served from the type library that the DLL carries.
#pragma once

#include "com/type_library.h"

namespace depot {

// Implements QueryInterface's answers and IDispatch for `Interface`, whose identifier is `id` and
// which extends those of the `extended` identifiers. Reference counting and aggregation are the
// host's, which derives from the class. The description of the interface is opened for each call:
// these objects are used rarely, and nothing needs to be released when the DLL is unloaded.
template <class Interface, const IID* id, const IID*... extended>
class TypeLibraryDispatch : public Interface {
public:
    // Returns this object under `interfaceId`, which is IUnknown, IDispatch or one of its own,
    // with an added reference; E_NOINTERFACE otherwise.
    HRESULT InternalQueryInterface(REFIID interfaceId, void** object) {
        return GiveInterface(*this, {&IID_IUnknown, &IID_IDispatch, extended..., id}, interfaceId,
                             object);
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override {
        if (count == nullptr) return E_POINTER;
        *count = 1;
        return S_OK;
    }

    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** typeInfo) noexcept override {
        if (typeInfo == nullptr) return E_POINTER;
        *typeInfo = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        UniqueCom<ITypeInfo> opened;
        const HRESULT result = OpenTypeInfo(*id, opened);
        *typeInfo = opened.release();
        return result;
    }

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT nameCount, LCID,
                               DISPID* ids) noexcept override {
        if (names == nullptr || ids == nullptr) return E_POINTER;
        UniqueCom<ITypeInfo> typeInfo;
        const HRESULT result = OpenTypeInfo(*id, typeInfo);
        return FAILED(result) ? result : typeInfo->GetIDsOfNames(names, nameCount, ids);
    }

    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception,
                        UINT* wrongArgument) noexcept override {
        if (parameters == nullptr) return E_POINTER;
        UniqueCom<ITypeInfo> typeInfo;
        const HRESULT opened = OpenTypeInfo(*id, typeInfo);
        if (FAILED(opened)) return opened;
        return typeInfo->Invoke(this, member, flags, parameters, result, exception, wrongArgument);
    }

protected:
    TypeLibraryDispatch() = default;
    // Clients end the object through Release only, which the host's derived classes implement.
    ~TypeLibraryDispatch() = default;
};

}  // namespace depot
