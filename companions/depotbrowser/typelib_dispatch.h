// Late binding for the DLL's dual interfaces, served from the type library that the DLL carries.
#pragma once

#include <memory>

#include "platform/module_state.h"
#include "platform/win32.h"
// After the Windows headers.
#include <oleauto.h>

namespace depot {

struct ComReleaser {
    void operator()(IUnknown* object) const { object->Release(); }
};
using UniqueTypeInfo = std::unique_ptr<ITypeInfo, ComReleaser>;

// Opens the description of an interface. It is opened for each call: dialogs are rare, and nothing
// needs to be given up when the DLL goes.
HRESULT OpenTypeInfo(REFIID interfaceId, UniqueTypeInfo& typeInfo) noexcept;

// Implements QueryInterface's answers and IDispatch for `Interface`, whose identifier is `id` and
// which extends those of the `extended` identifiers. Reference counting and aggregation are the
// host's, which derives from the class.
template <class Interface, const IID* id, const IID*... extended>
class TypeLibraryDispatch : public Interface {
public:
    // Returns this object under `interfaceId`, which is IUnknown, IDispatch or one of its own,
    // with an added reference; E_NOINTERFACE otherwise.
    HRESULT InternalQueryInterface(REFIID interfaceId, void** object) {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(interfaceId, IID_IUnknown) && !IsEqualIID(interfaceId, IID_IDispatch) &&
            !IsEqualIID(interfaceId, *id) && !(IsEqualIID(interfaceId, *extended) || ...)) {
            return E_NOINTERFACE;
        }
        *object = static_cast<Interface*>(this);
        this->AddRef();
        return S_OK;
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
        UniqueTypeInfo opened;
        const HRESULT result = OpenTypeInfo(*id, opened);
        *typeInfo = opened.release();
        return result;
    }

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT nameCount, LCID,
                               DISPID* ids) noexcept override {
        if (names == nullptr || ids == nullptr) return E_POINTER;
        UniqueTypeInfo typeInfo;
        const HRESULT result = OpenTypeInfo(*id, typeInfo);
        return FAILED(result) ? result : typeInfo->GetIDsOfNames(names, nameCount, ids);
    }

    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception,
                        UINT* wrongArgument) noexcept override {
        if (parameters == nullptr) return E_POINTER;
        UniqueTypeInfo typeInfo;
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
