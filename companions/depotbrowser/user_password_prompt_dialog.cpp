#include "depotbrowser/user_password_prompt_dialog.h"

#include "com/automation.h"
#include "platform/module_state.h"

namespace depot {
namespace {

HRESULT GiveText(const std::wstring& text, BSTR* output) {
    if (output == nullptr) return E_POINTER;
    *output = NewWideBstr(text).release();
    return *output != nullptr ? S_OK : E_OUTOFMEMORY;
}

template <class Field>
HRESULT TakeText(BSTR text, Field& field) noexcept try {
    field = Field(WideText(text));
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

HWND OwnerWindow(LONG handle) {
    const auto window = static_cast<HWND>(LongToHandle(handle));
    return IsWindow(window) ? window : GetActiveWindow();
}

}  // namespace

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

STDMETHODIMP CUserPasswordPromptDialog::put_Failure(LONG lCode) noexcept {
    fields_.failure = static_cast<std::uint32_t>(lCode);
    return S_OK;
}

STDMETHODIMP CUserPasswordPromptDialog::put_Secured(VARIANT_BOOL fSecured) noexcept {
    fields_.isSecured = fSecured != VARIANT_FALSE;
    return S_OK;
}

STDMETHODIMP CUserPasswordPromptDialog::put_OffersStoring(VARIANT_BOOL fOffers) noexcept {
    fields_.offersStoring = fOffers != VARIANT_FALSE;
    return S_OK;
}

STDMETHODIMP CUserPasswordPromptDialog::get_Store(VARIANT_BOOL* pfStore) noexcept {
    if (pfStore == nullptr) return E_POINTER;
    *pfStore = fields_.isToBeStored ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

STDMETHODIMP CUserPasswordPromptDialog::put_UserNameExample(BSTR bstrExample) noexcept {
    return TakeText(bstrExample, fields_.userNameExample);
}

}  // namespace depot
