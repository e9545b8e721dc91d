#include "depotbrowser/user_password_prompt_dialog.h"

#include "platform/module_state.h"
// After the Windows headers.
#include <oleauto.h>

#include <memory>

namespace depot {
namespace {

struct ComReleaser {
    void operator()(IUnknown* object) const { object->Release(); }
};
using UniqueTypeInfo = std::unique_ptr<ITypeInfo, ComReleaser>;

// The interface's description in the DLL's own type library. It is opened for each call: prompts
// are rare, and nothing needs to be given up when the DLL goes.
HRESULT OpenTypeInfo(UniqueTypeInfo& typeInfo) {
    ITypeLib* opened = nullptr;
    HRESULT result = LoadTypeLibEx(OwnModulePath().c_str(), REGKIND_NONE, &opened);
    if (FAILED(result)) return result;
    const std::unique_ptr<ITypeLib, ComReleaser> library(opened);
    ITypeInfo* found = nullptr;
    result = library->GetTypeInfoOfGuid(IID_IUserPasswordPromptDialog, &found);
    typeInfo.reset(found);
    return result;
}

HRESULT GiveText(const std::wstring& text, BSTR* output) {
    if (output == nullptr) return E_POINTER;
    *output = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *output != nullptr ? S_OK : E_OUTOFMEMORY;
}

// A null BSTR is an empty text.
HRESULT TakeText(BSTR text, std::wstring& field) noexcept try {
    field.assign(text != nullptr ? text : L"", SysStringLen(text));
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

HWND OwnerWindow(LONG handle) {
    const auto window = static_cast<HWND>(LongToHandle(handle));
    return IsWindow(window) ? window : GetActiveWindow();
}

}  // namespace

HRESULT CUserPasswordPromptDialog::InternalQueryInterface(REFIID interfaceId, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(interfaceId, IID_IUnknown) && !IsEqualIID(interfaceId, IID_IDispatch) &&
        !IsEqualIID(interfaceId, IID_IUserPasswordPromptDialog)) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IUserPasswordPromptDialog*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP CUserPasswordPromptDialog::GetTypeInfoCount(UINT* count) noexcept {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
}

STDMETHODIMP CUserPasswordPromptDialog::GetTypeInfo(UINT index, LCID, ITypeInfo** typeInfo) noexcept
    try {
    if (typeInfo == nullptr) return E_POINTER;
    *typeInfo = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    UniqueTypeInfo opened;
    const HRESULT result = OpenTypeInfo(opened);
    *typeInfo = opened.release();
    return result;
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP CUserPasswordPromptDialog::GetIDsOfNames(REFIID, LPOLESTR* names, UINT nameCount, LCID,
                                                      DISPID* ids) noexcept try {
    if (names == nullptr || ids == nullptr) return E_POINTER;
    UniqueTypeInfo typeInfo;
    const HRESULT result = OpenTypeInfo(typeInfo);
    return FAILED(result) ? result : typeInfo->GetIDsOfNames(names, nameCount, ids);
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP CUserPasswordPromptDialog::Invoke(DISPID id, REFIID, LCID, WORD flags,
                                               DISPPARAMS* parameters, VARIANT* result,
                                               EXCEPINFO* exception, UINT* wrongArgument) noexcept
    try {
    if (parameters == nullptr) return E_POINTER;
    UniqueTypeInfo typeInfo;
    const HRESULT opened = OpenTypeInfo(typeInfo);
    if (FAILED(opened)) return opened;
    return typeInfo->Invoke(this, id, flags, parameters, result, exception, wrongArgument);
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP CUserPasswordPromptDialog::ShowModal(LONG lParentWnd, LONG* plResult) noexcept try {
    if (plResult == nullptr) return E_POINTER;
    *plResult = 0;
    const ModuleStateScope scope;
    // While the dialog waits, other calls may arrive: the window works on texts of its own.
    PromptFields fields = fields_;
    const PromptOutcome outcome = ShowPromptWindow(OwnerWindow(lParentWnd), fields);
    if (outcome == PromptOutcome::kNotShown) return S_FALSE;
    if (outcome == PromptOutcome::kCancelled) return S_OK;
    fields_ = std::move(fields);
    *plResult = 1;
    return S_OK;
} catch (...) {
    return S_FALSE;
}

STDMETHODIMP CUserPasswordPromptDialog::get_UserName(BSTR* pbstrUserName) noexcept {
    return GiveText(fields_.userName, pbstrUserName);
}

STDMETHODIMP CUserPasswordPromptDialog::put_UserName(BSTR bstrUserName) noexcept {
    return TakeText(bstrUserName, fields_.userName);
}

STDMETHODIMP CUserPasswordPromptDialog::get_Password(BSTR* pbstrPassword) noexcept {
    return GiveText(fields_.password, pbstrPassword);
}

STDMETHODIMP CUserPasswordPromptDialog::put_Password(BSTR bstrPassword) noexcept {
    return TakeText(bstrPassword, fields_.password);
}

STDMETHODIMP CUserPasswordPromptDialog::put_ServerName(BSTR bstrServerName) noexcept {
    return TakeText(bstrServerName, fields_.serverName);
}

}  // namespace depot
