// The class that clients create to ask the user for credentials.
#pragma once

#include "DepotBrowser.h"
#include "com/typelib_dispatch.h"
#include "depotbrowser/prompt_window.h"
#include "platform/win32.h"

namespace depot {

// Holds the three texts that the dialog shows, and the two that it changes. Reference counting and
// aggregation are the host's, which derives from this class. Texts that are returned belong to the
// caller; no exception gets out.
class CUserPasswordPromptDialog
    : public TypeLibraryDispatch<IUserPasswordPromptDialog4, &IID_IUserPasswordPromptDialog4,
                                 &IID_IUserPasswordPromptDialog3, &IID_IUserPasswordPromptDialog2,
                                 &IID_IUserPasswordPromptDialog> {
public:
    // Shows the dialog and waits for the user. The result is 1 when the user confirmed, 0 when not
    // or when the dialog cannot be shown, which is also S_FALSE. A window that is 0 or no longer
    // exists is replaced by the calling thread's active window, if it has one.
    STDMETHODIMP ShowModal(LONG lParentWnd, LONG* plResult) noexcept override;

    STDMETHODIMP get_UserName(BSTR* pbstrUserName) noexcept override;
    STDMETHODIMP put_UserName(BSTR bstrUserName) noexcept override;
    STDMETHODIMP get_Password(BSTR* pbstrPassword) noexcept override;
    STDMETHODIMP put_Password(BSTR bstrPassword) noexcept override;
    STDMETHODIMP put_ServerName(BSTR bstrServerName) noexcept override;
    STDMETHODIMP put_Failure(LONG lCode) noexcept override;
    STDMETHODIMP put_Secured(VARIANT_BOOL fSecured) noexcept override;
    STDMETHODIMP put_OffersStoring(VARIANT_BOOL fOffers) noexcept override;
    STDMETHODIMP get_Store(VARIANT_BOOL* pfStore) noexcept override;
    STDMETHODIMP put_UserNameExample(BSTR bstrExample) noexcept override;

protected:
    CUserPasswordPromptDialog() = default;
    // Clients end the object through Release only, which the host's derived classes implement.
    ~CUserPasswordPromptDialog() = default;

private:
    PromptFields fields_;
};

}  // namespace depot
