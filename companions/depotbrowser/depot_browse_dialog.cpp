#include "depotbrowser/depot_browse_dialog.h"

#include "com/automation.h"
#include "config/file_types.h"
#include "platform/module_state.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

constexpr LONG kSaveKickoff = 23;
constexpr LONG kSaveSkein = 27;

}  // namespace

STDMETHODIMP CDepotBrowseDialog::ShowModal(LONG* plResult) noexcept try {
    if (plResult == nullptr) return E_POINTER;
    *plResult = 0;
    chosen_.clear();
    const ModuleStateScope scope;
    // While the dialog waits, other calls may arrive: the window works on settings of its own.
    std::vector<std::string> chosen;
    const BrowseOutcome outcome = ShowBrowseWindow(BrowseSettings(settings_), chosen);
    if (outcome == BrowseOutcome::kNotShown) return S_FALSE;
    if (outcome == BrowseOutcome::kCancelled) return S_OK;
    chosen_ = std::move(chosen);
    *plResult = 1;
    return S_OK;
} catch (...) {
    return S_FALSE;
}

STDMETHODIMP CDepotBrowseDialog::put_Mode(LONG lMode) noexcept {
    settings_.saves = lMode == kSaveKickoff || lMode == kSaveSkein;
    return S_OK;
}

STDMETHODIMP CDepotBrowseDialog::get_ChosenPath(BSTR* pbstrPath) noexcept try {
    if (pbstrPath == nullptr) return E_POINTER;
    *pbstrPath = NewNameBstr(chosen_.empty() ? std::string() : chosen_.front()).release();
    return *pbstrPath != nullptr ? S_OK : E_OUTOFMEMORY;
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP CDepotBrowseDialog::put_InitialFileName(BSTR bstrFileName) noexcept try {
    settings_.initialFileName = WideText(bstrFileName);
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP CDepotBrowseDialog::get_ChosenPaths(SAFEARRAY** ppsaPaths) noexcept try {
    if (ppsaPaths == nullptr) return E_POINTER;
    *ppsaPaths = nullptr;
    UniqueSafeArray array(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(chosen_.size())));
    if (!array) return E_OUTOFMEMORY;
    auto* const texts = static_cast<BSTR*>(array->pvData);
    for (std::size_t index = 0; index < chosen_.size(); ++index) {
        texts[index] = NewNameBstr(chosen_[index]).release();
        if (texts[index] == nullptr) return E_OUTOFMEMORY;
    }
    *ppsaPaths = array.release();
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP CDepotBrowseDialog::put_FileType(LONG lFileType) noexcept try {
    // A type without an extension cannot be distinguished from any other.
    settings_.fileType = ExtensionForType(lFileType).empty() ? 0 : lFileType;
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP CDepotBrowseDialog::put_SortColumn(LONG lColumn) noexcept {
    settings_.hasOrder = true;
    settings_.order.column = ColumnOf(lColumn < kColumns ? lColumn : 0);
    return S_OK;
}

STDMETHODIMP CDepotBrowseDialog::put_ResourceFolder(BSTR bstrFolder) noexcept try {
    settings_.resourceFolder = ExactAnsiFromWide(WideText(bstrFolder)).value_or(std::string());
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP CDepotBrowseDialog::put_HelpTopic(LONG lTopicID) noexcept {
    settings_.helpTopic = lTopicID;
    return S_OK;
}

STDMETHODIMP CDepotBrowseDialog::put_OwnerWindow(LONG lWindow) noexcept {
    settings_.owner = static_cast<HWND>(LongToHandle(lWindow));
    return S_OK;
}

}  // namespace depot
