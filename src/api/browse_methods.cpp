// The methods that let the user choose files.
#include <new>
#include <stdexcept>

#include "api/browse_dialog.h"
#include "api/chosen_files.h"
#include "api/depot_intr_api.h"
#include "api/method.h"

namespace depot {
namespace {

// What a dialog needs to know of the session; empty without a session. The session itself is looked
// for again when the dialog is done: a client may end it while the user chooses.
struct SessionTexts {
    std::string resourceFolder;
    std::string selectedItemPath;
};

std::optional<SessionTexts> TextsOfSession(LONG_PTR handle) {
    const SessionForCall session(handle, WithoutHandle::kFail);
    if (!session) return std::nullopt;
    return SessionTexts{session->Folders().ResourceFolder(), session->selectedItemPath};
}

BrowseOptions OptionsOf(VARIANT_BOOL edit, VARIANT_BOOL fileOperations, LONG_PTR ownerWindow) {
    BrowseOptions options;
    options.ownerWindow = ownerWindow;
    // Kept: any other value than VARIANT_TRUE switches off, 1 too.
    options.allowEditing = edit == VARIANT_TRUE;
    options.allowFileOperations = fileOperations == VARIANT_TRUE;
    return options;
}

// The first path stands in front of the whole selection, so that it may occur twice.
std::optional<std::string> ListOfChosenFiles(BrowseDialog& dialog, const std::string& first,
                                             std::int16_t size) try {
    std::vector<std::string> paths = dialog.ChosenPaths();
    paths.insert(paths.begin(), first);
    return ChosenFileList(paths, size);
} catch (const std::bad_alloc&) {
    return std::nullopt;
} catch (const std::length_error&) {
    return std::nullopt;
}

}  // namespace

STDMETHODIMP CDepotIntrApi::DPBrowse(LONG_PTR lDPIntr, APP_TYPE appType, BROWSE_TYPE browseType,
                                     VARIANT_BOOL bEdit, VARIANT_BOOL bPerformFileOP,
                                     ULONG nHelpTopicID, LONG_PTR lpParentWnd,
                                     BSTR* bstrFilePath) noexcept {
    if (bstrFilePath == nullptr) return RefuseMethod();
    *bstrFilePath = nullptr;
    return RunMethod([&] {
        const std::optional<SessionTexts> texts = TextsOfSession(lDPIntr);
        if (!texts) return false;
        const BrowseKind kind = BrowseKindOf(appType, browseType);
        BrowseDialog dialog;
        // Kept: a dialog that saves gets the initial name, and neither owner nor options.
        if (browseType == PROMPT_SAVEAS) {
            dialog.SetKind(kind);
            dialog.SetInitialFileName(texts->selectedItemPath);
        } else {
            dialog.SetKindAndOptions(kind, OptionsOf(bEdit, bPerformFileOP, lpParentWnd));
        }
        const std::string chosen = dialog.Run(nHelpTopicID, texts->resourceFolder);
        const SessionForCall session(lDPIntr, WithoutHandle::kFail);
        if (chosen.empty() || !session) return false;
        session->LoadFile(chosen);
        *bstrFilePath = NewNameBstr(session->currentFile->depotPath).release();
        return *bstrFilePath != nullptr;
    });
}

STDMETHODIMP CDepotIntrApi::DPBrowseMultiSel(LONG_PTR lDPIntr, APP_TYPE appType, VARIANT_BOOL bEdit,
                                             VARIANT_BOOL bPerformFileOP, ULONG nHelpTopicID,
                                             LONG_PTR lpParentWnd, BSTR* bstrFileList,
                                             SHORT nSize) noexcept {
    if (bstrFileList == nullptr) return RefuseMethod();
    *bstrFileList = nullptr;
    bool outOfMemory = false;
    const HRESULT result = RunMethod([&] {
        const std::optional<SessionTexts> texts = TextsOfSession(lDPIntr);
        if (!texts) return false;
        BrowseOptions options = OptionsOf(bEdit, bPerformFileOP, lpParentWnd);
        options.allowMultipleSelection = true;
        BrowseDialog dialog;
        dialog.SetKindAndOptions(BrowseKindOf(appType, PROMPT_OPEN), options);
        const std::string first = dialog.Run(nHelpTopicID, texts->resourceFolder);
        const SessionForCall session(lDPIntr, WithoutHandle::kFail);
        if (first.empty() || !session) return false;
        session->ReleaseFile();
        const std::optional<std::string> list = ListOfChosenFiles(dialog, first, nSize);
        outOfMemory = !list;
        if (list) *bstrFileList = NewNameBstr(*list).release();
        return *bstrFileList != nullptr;
    });
    return outOfMemory ? E_FAIL : result;
}

}  // namespace depot
