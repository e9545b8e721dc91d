// The class that clients create to let the user choose files among the depots.
#pragma once

#include <string>
#include <vector>

#include "DepotBrowser.h"
#include "com/typelib_dispatch.h"
#include "depotbrowser/browse_settings.h"
#include "platform/win32.h"

namespace depot {

// Holds what the dialog is asked for and, afterwards, what the user chose. Texts and arrays that
// are returned belong to the caller; no exception gets out. Settings count for the next ShowModal.
class CDepotBrowseDialog
    : public TypeLibraryDispatch<IDepotBrowseDialog3, &IID_IDepotBrowseDialog3,
                                 &IID_IDepotBrowseDialog, &IID_IDepotBrowseDialog2> {
public:
    // Shows the dialog and waits for the user. The result is 1 when the user confirmed, 0 when not
    // or when the dialog cannot be shown, which is also S_FALSE. What was chosen before is
    // forgotten in every case. An owner that is 0 or no longer exists is replaced by the calling
    // thread's active window, if it has one.
    STDMETHODIMP ShowModal(LONG* plResult) noexcept override;

    STDMETHODIMP put_Mode(LONG lMode) noexcept override;
    STDMETHODIMP get_ChosenPath(BSTR* pbstrPath) noexcept override;
    STDMETHODIMP put_InitialFileName(BSTR bstrFileName) noexcept override;
    STDMETHODIMP get_ChosenPaths(SAFEARRAY** ppsaPaths) noexcept override;
    STDMETHODIMP put_AllowEditing(LONG lAllow) noexcept override {
        return Switch(settings_.allowEditing, lAllow);
    }
    STDMETHODIMP put_AllowFileOperations(LONG lAllow) noexcept override {
        return Switch(settings_.allowFileOperations, lAllow);
    }
    STDMETHODIMP put_FileType(LONG lFileType) noexcept override;
    STDMETHODIMP put_SortColumn(LONG lColumn) noexcept override;
    STDMETHODIMP put_SortDescending(LONG lDescending) noexcept override {
        settings_.hasOrder = true;
        return Switch(settings_.order.descending, lDescending);
    }
    STDMETHODIMP put_ResourceFolder(BSTR bstrFolder) noexcept override;
    STDMETHODIMP put_HelpTopic(LONG lTopicID) noexcept override;
    STDMETHODIMP put_ShowFolderTree(LONG lShow) noexcept override {
        return Switch(settings_.showFolderTree, lShow);
    }
    STDMETHODIMP put_AskBeforeOverwriting(LONG lAsk) noexcept override {
        return Switch(settings_.askBeforeOverwriting, lAsk);
    }
    STDMETHODIMP put_RememberSize(LONG lRemember) noexcept override {
        return Switch(settings_.rememberSize, lRemember);
    }
    STDMETHODIMP put_OwnerWindow(LONG lWindow) noexcept override;
    STDMETHODIMP put_AllowMultipleSelection(LONG lAllow) noexcept override {
        return Switch(settings_.allowMultipleSelection, lAllow);
    }
    STDMETHODIMP get_ChosenFiles(VARIANT* pPaths) noexcept override {
        return pPaths != nullptr ? GiveNames(chosen_, pPaths) : E_POINTER;
    }

    // Reserved: nothing happens.
    STDMETHODIMP Reserved8() noexcept override { return S_OK; }
    STDMETHODIMP Reserved13() noexcept override { return S_OK; }
    STDMETHODIMP Reserved14() noexcept override { return S_OK; }
    STDMETHODIMP Reserved16() noexcept override { return S_OK; }
    STDMETHODIMP Reserved19() noexcept override { return S_OK; }
    STDMETHODIMP Reserved20() noexcept override { return S_OK; }
    STDMETHODIMP Reserved21() noexcept override { return S_OK; }
    STDMETHODIMP Reserved22() noexcept override { return S_OK; }
    STDMETHODIMP Reserved23() noexcept override { return S_OK; }
    STDMETHODIMP Reserved25() noexcept override { return S_OK; }
    STDMETHODIMP Reserved27() noexcept override { return S_OK; }
    STDMETHODIMP Reserved29() noexcept override { return S_OK; }
    STDMETHODIMP Reserved31() noexcept override { return S_OK; }
    STDMETHODIMP Reserved33() noexcept override { return S_OK; }
    STDMETHODIMP Reserved35() noexcept override { return S_OK; }

protected:
    CDepotBrowseDialog() = default;
    // Clients end the object through Release only, which the host's derived classes implement.
    ~CDepotBrowseDialog() = default;

private:
    static HRESULT Switch(bool& setting, LONG value) {
        setting = value != 0;
        return S_OK;
    }

    BrowseSettings settings_;
    std::vector<std::string> chosen_;
};

}  // namespace depot
