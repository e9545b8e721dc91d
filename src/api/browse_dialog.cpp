#include "api/browse_dialog.h"

#include <new>

#include "api/automation_text.h"
#include "platform/user_presence.h"

namespace depot {
namespace {

constexpr LONG kConfirmed = 1;
constexpr char kPurpose[] = "choice of files";

UniqueCom<IDepotBrowseDialog> MakeDialog() {
    if (!HasAPerson()) {
        ReportUnshown(LogMessage::kDialogNotShown, kPurpose);
        return nullptr;
    }
    return CreateAnywhere<IDepotBrowseDialog>(CLSID_DepotBrowseDialog, IID_IDepotBrowseDialog);
}

bool IsListOfTexts(SAFEARRAY* array) {
    VARTYPE type = VT_EMPTY;
    return array != nullptr && SafeArrayGetDim(array) == 1 &&
           SUCCEEDED(SafeArrayGetVartype(array, &type)) && type == VT_BSTR;
}

}  // namespace

BrowseKind BrowseKindOf(APP_TYPE application, BROWSE_TYPE browseType) {
    if (browseType != PROMPT_OPEN && browseType != PROMPT_SAVEAS) return {};
    const bool saves = browseType == PROMPT_SAVEAS;
    switch (application) {
        case APP_SKEIN:
            return {saves ? 27 : 26, 64};
        case APP_KICKOFF:
            return {saves ? 23 : 22, 62};
    }
    return {};
}

BrowseDialog::BrowseDialog() : dialog_(MakeDialog()) {}

void BrowseDialog::SetKind(const BrowseKind& kind) {
    if (!dialog_) return;
    dialog_->put_Mode(kind.mode);
    dialog_->put_FileType(kind.fileType);
}

void BrowseDialog::SetKindAndOptions(const BrowseKind& kind, const BrowseOptions& options) {
    if (!dialog_) return;
    // A window handle has 32 significant bits.
    if (options.ownerWindow != 0) dialog_->put_OwnerWindow(static_cast<LONG>(options.ownerWindow));
    SetKind(kind);
    if (!options.allowEditing) dialog_->put_AllowEditing(0);
    if (!options.allowFileOperations) dialog_->put_AllowFileOperations(0);
    if (options.allowMultipleSelection) AllowMultipleSelection();
}

void BrowseDialog::AllowMultipleSelection() {
    void* extended = nullptr;
    if (FAILED(dialog_->QueryInterface(IID_IDepotBrowseDialog2, &extended))) return;
    const UniqueCom<IDepotBrowseDialog2> owned(static_cast<IDepotBrowseDialog2*>(extended));
    owned->put_AllowMultipleSelection(1);
}

void BrowseDialog::SetInitialFileName(const std::string& path) {
    if (dialog_) dialog_->put_InitialFileName(NewNameBstr(path).get());
}

std::string BrowseDialog::Run(ULONG helpTopic, const std::string& resourceFolder) {
    if (!dialog_) return {};
    if (helpTopic != 0) dialog_->put_HelpTopic(static_cast<LONG>(helpTopic));
    if (!resourceFolder.empty()) dialog_->put_ResourceFolder(NewNameBstr(resourceFolder).get());
    LONG result = 0;
    if (FAILED(dialog_->ShowModal(&result)) || result != kConfirmed) return {};
    BSTR path = nullptr;
    const HRESULT found = dialog_->get_ChosenPath(&path);
    const UniqueBstr owned(path);
    return SUCCEEDED(found) ? NameText(&path) : std::string();
}

std::vector<std::string> BrowseDialog::ChosenPaths() {
    std::vector<std::string> paths;
    SAFEARRAY* given = nullptr;
    if (!dialog_ || FAILED(dialog_->get_ChosenPaths(&given))) return paths;
    const UniqueSafeArray array(given);
    if (!IsListOfTexts(given)) return paths;
    LONG first = 0;
    LONG last = -1;
    SafeArrayGetLBound(given, 1, &first);
    SafeArrayGetUBound(given, 1, &last);
    for (LONG index = first; index <= last; ++index) {
        BSTR text = nullptr;
        const HRESULT copied = SafeArrayGetElement(given, &index, &text);
        if (copied == E_OUTOFMEMORY) throw std::bad_alloc();
        if (FAILED(copied)) break;
        const UniqueBstr owned(text);
        paths.push_back(NameText(&text));
    }
    return paths;
}

}  // namespace depot
