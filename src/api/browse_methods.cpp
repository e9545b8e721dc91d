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

// The first path stands in front of the whole selection, so that it may occur twice. The session
// remembers each path once.
std::optional<std::string> ListOfChosenFiles(BrowseDialog& dialog, const std::string& first,
                                             std::int16_t size, DepotSession& session) try {
    std::vector<std::string> paths = dialog.ChosenPaths();
    session.chosenFiles = paths.empty() ? std::vector{first} : paths;
    paths.insert(paths.begin(), first);
    return ChosenFileList(paths, size);
} catch (const std::bad_alloc&) {
    return std::nullopt;
} catch (const std::length_error&) {
    return std::nullopt;
}

// The failure of a dialog that was cancelled or not shown, or whose session has ended meanwhile.
CallFailure NothingChosen(SessionForCall& session) {
    if (!session) return {session.Refusal()};
    return session.End({ERROR_CANCELLED});
}

}  // namespace

STDMETHODIMP CDepotIntrApi::DPBrowse(LONG_PTR lDPIntr, APP_TYPE appType, BROWSE_TYPE browseType,
                                     VARIANT_BOOL bEdit, VARIANT_BOOL bPerformFileOP,
                                     ULONG nHelpTopicID, LONG_PTR lpParentWnd,
                                     BSTR* bstrFilePath) noexcept {
    if (bstrFilePath == nullptr) return RefuseMethod();
    *bstrFilePath = nullptr;
    return RunMethod([&]() -> CallFailure {
        const std::optional<SessionTexts> texts = TextsOfSession(lDPIntr);
        if (!texts) return {ERROR_INVALID_HANDLE};
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
        SessionForCall session(lDPIntr, WithoutHandle::kFail);
        if (session) session->chosenFiles.clear();
        if (chosen.empty() || !session) return NothingChosen(session);
        session->LoadFile(chosen);
        session->chosenFiles = {session->currentFile->depotPath};
        *bstrFilePath = NewNameBstr(session->currentFile->depotPath).release();
        return FailureOf(*bstrFilePath != nullptr);
    });
}

STDMETHODIMP CDepotIntrApi::DPBrowseMultiSel(LONG_PTR lDPIntr, APP_TYPE appType, VARIANT_BOOL bEdit,
                                             VARIANT_BOOL bPerformFileOP, ULONG nHelpTopicID,
                                             LONG_PTR lpParentWnd, BSTR* bstrFileList,
                                             SHORT nSize) noexcept {
    if (bstrFileList == nullptr) return RefuseMethod();
    *bstrFileList = nullptr;
    bool outOfMemory = false;
    const HRESULT result = RunMethod([&]() -> CallFailure {
        const std::optional<SessionTexts> texts = TextsOfSession(lDPIntr);
        if (!texts) return {ERROR_INVALID_HANDLE};
        BrowseOptions options = OptionsOf(bEdit, bPerformFileOP, lpParentWnd);
        options.allowMultipleSelection = true;
        BrowseDialog dialog;
        dialog.SetKindAndOptions(BrowseKindOf(appType, PROMPT_OPEN), options);
        const std::string first = dialog.Run(nHelpTopicID, texts->resourceFolder);
        SessionForCall session(lDPIntr, WithoutHandle::kFail);
        if (session) session->chosenFiles.clear();
        if (first.empty() || !session) return NothingChosen(session);
        // A name that is refused leaves the session its file.
        const std::optional<std::string> list = ListOfChosenFiles(dialog, first, nSize, *session);
        session->ReleaseFile();
        outOfMemory = !list;
        if (list) *bstrFileList = NewNameBstr(*list).release();
        return FailureOf(*bstrFileList != nullptr);
    });
    return outOfMemory ? E_FAIL : result;
}

}  // namespace depot
