#include "depotbrowser/browse_window.h"

#include <functional>
#include <utility>

#include "depotbrowser/browse_ids.h"
#include "depotbrowser/browse_window_parts.h"
#include "depotbrowser/name_rules.h"
#include "manager/depot_list.h"
#include "platform/module_state.h"
#include "platform/paths.h"
#include "resource_ids.h"

namespace depot {
namespace {

void PrepareControlClasses() {
    const INITCOMMONCONTROLSEX request = {
        sizeof(request), ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES | ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&request);
}

constexpr KeyCommand kListKeys[] = {
    {VK_F2, CONTROL_RENAME}, {VK_DELETE, CONTROL_DELETE}, {VK_BACK, CONTROL_UP}};
// The keys of mice and keyboards that lead through pages.
constexpr KeyCommand kPageKeys[] = {{APPCOMMAND_BROWSER_BACKWARD, CONTROL_BACK},
                                    {APPCOMMAND_BROWSER_FORWARD, CONTROL_FORWARD}};

// Keeps the owner from being used, unless it could not be used before.
class OwnerDisabled : NotCopied {
public:
    explicit OwnerDisabled(HWND owner)
        : owner_(owner != nullptr && IsWindowEnabled(owner) ? owner : nullptr) {
        if (owner_ != nullptr) EnableWindow(owner_, FALSE);
    }
    ~OwnerDisabled() {
        if (owner_ != nullptr) EnableWindow(owner_, TRUE);
    }

private:
    HWND owner_;
};

// Disables the owner, which may be null, shows the window and handles the thread's messages until
// `ended` holds or the window is closed; then the owner is usable again. `translate` sees each
// message first and returns whether it is done with it. A request to end the program is kept for
// the caller's loop.
void RunModally(HWND window, HWND owner, const std::function<bool()>& ended,
                const std::function<bool(const MSG& message)>& translate) {
    const OwnerDisabled disabled(owner);
    ShowWindow(window, SW_SHOW);
    MSG message = {};
    while (!ended() && IsWindow(window)) {
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
        if (got == 0) PostQuitMessage(static_cast<int>(message.wParam));
        if (got <= 0) return;
        if (translate(message) || IsDialogMessageW(window, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

BrowseOutcome ShowBrowseWindow(const BrowseSettings& settings, std::vector<std::string>& chosen) {
    PrepareControlClasses();
    BrowseWindow window(settings);
    return window.Show(chosen);
}

BrowseWindow::BrowseWindow(const BrowseSettings& settings)
    : settings_(settings), texts_(settings.resourceFolder), memory_(settings.rememberSize) {
    if (!IsWindow(settings_.owner)) settings_.owner = GetActiveWindow();
}

BrowseWindow::~BrowseWindow() {
    mailbox_->Close();
    if (IsWindow(window_)) DestroyWindow(window_);
}

BrowseOutcome BrowseWindow::Show(std::vector<std::string>& chosen) {
    const DialogTemplate dialog = LoadDialogTemplate(OwnModule(), DIALOG_BROWSE);
    if (dialog.empty()) return BrowseOutcome::kNotShown;
    const HWND window =
        CreateDialogIndirectParamW(OwnModule(), reinterpret_cast<const DLGTEMPLATE*>(dialog.data()),
                                   settings_.owner, Handle, reinterpret_cast<LPARAM>(this));
    if (window == nullptr || outcome_) return BrowseOutcome::kNotShown;
    RunModally(
        window, settings_.owner, [this] { return outcome_.has_value(); },
        [this](const MSG& message) { return TranslateKey(message); });
    mailbox_->Close();
    chosen = std::move(chosen_);
    // Without an outcome the window was closed with its owner.
    return outcome_.value_or(BrowseOutcome::kCancelled);
}

// No exception may cross the system's own frames.
INT_PTR CALLBACK BrowseWindow::Handle(HWND window, UINT message, WPARAM first,
                                      LPARAM second) noexcept try {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(window, DWLP_USER, second);
    auto* const self = reinterpret_cast<BrowseWindow*>(GetWindowLongPtrW(window, DWLP_USER));
    if (self == nullptr) return FALSE;
    if (message == WM_INITDIALOG) {
        self->Start(window);
        return FALSE;  // the focus is set
    }
    return self->HandleMessage(message, first, second);
} catch (...) {
    auto* const self = reinterpret_cast<BrowseWindow*>(GetWindowLongPtrW(window, DWLP_USER));
    if (self != nullptr) self->Finish(BrowseOutcome::kNotShown);
    return FALSE;
}

void BrowseWindow::Start(HWND window) {
    window_ = window;
    pixelsPerInch_ = PixelsPerInch();
    mailbox_->Open(window);
    FillTexts();
    HideWhatIsNotOffered();
    parts_ = std::make_unique<Parts>(*this);
    FillFileTypes();
    metrics_ = Measure();
    PlaceWindow();
    Place();
    SetAccessibleNames();
    parts_->list.SetColumnWidths(memory_.Columns(pixelsPerInch_));
    parts_->list.SetOrder(settings_.hasOrder ? settings_.order
                                             : memory_.Order().value_or(settings_.order));
    RECT place = {};
    GetWindowRect(window_, &place);
    ResolutionChanged(PixelsPerInch(window_), place);
    OpenFirstFolder();
    SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(CONTROL_NAME)), TRUE);
}

void BrowseWindow::OpenFirstFolder() {
    StandardFolders folders;
    const CDepots depots(kDepotsKey, folders.UserFolder());
    const std::vector<ShownDepot> shown = ShownDepots(depots);
    parts_->tree.Fill(shown, settings_.showFolderTree);
    parts_->kept.Begin(depots);
    const ShownDepot* first = shown.empty() ? nullptr : &shown.front();
    for (const ShownDepot& depot : shown) {
        if (depot.isDefault) first = &depot;
    }
    if (first == nullptr) return;
    const std::string last = memory_.Folder(settings_.fileType);
    if (settings_.initialFileName.empty() && !last.empty()) {
        return parts_->choice.BeginIn(last, {first->ref, {}});
    }
    parts_->choice.Begin(settings_.initialFileName, {first->ref, {}});
}

INT_PTR BrowseWindow::HandleMessage(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
        case WM_COMMAND:
            if (IsSuggestion(second)) return SuggestionClicked(HIWORD(first));
            return HandleCommand(LOWORD(first), HIWORD(first));
        case WM_NOTIFY:
            return HandleNotify(*reinterpret_cast<const NMHDR*>(second));
        case WM_SIZE:
            if (first != SIZE_MINIMIZED) Place();
            return TRUE;
        case WM_MOVE:
            if (parts_) parts_->suggestions.Hide();
            return TRUE;
        case WM_DRAWITEM:
            return parts_ && parts_->path.Draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(second),
                                               parts_->colours.Current());
        case WM_CONTEXTMENU:
            return ShowContextMenu(reinterpret_cast<HWND>(first), second);
        case WM_APPCOMMAND:
            return RunCommandOf(kPageKeys, GET_APPCOMMAND_LPARAM(second));
        case WM_GETMINMAXINFO:
            LimitSize(*reinterpret_cast<MINMAXINFO*>(second));
            return TRUE;
        case WM_TIMER:
            if (first == StatusLine::kBusyTimer) parts_->status.TimerElapsed();
            if (first == DepotSearch::kPauseTimer) parts_->search.TimerElapsed();
            if (first == FilePreview::kPauseTimer) parts_->preview.TimerElapsed();
            if (first == DropRegistration::kBeginTimer) parts_->desktop.Begin();
            if (first == DropSite::kScrollTimer) parts_->site.TimerElapsed();
            return TRUE;
        case WM_HELP:
            AskForHelp();
            return TRUE;
        case WindowMailbox::kDeliverMessage:
            mailbox_->Deliver();
            return TRUE;
        case WindowMailbox::kPromptMessage:
            return Answer(WindowMailbox::AnswerPrompt(window_, second));
        case WM_DPICHANGED:
            ResolutionChanged(LOWORD(first), *reinterpret_cast<const RECT*>(second));
            return TRUE;
        case WM_SYSCOLORCHANGE:
        case WM_THEMECHANGED:
            HandOnToControls(message, first, second);
            if (parts_) parts_->colours.Update();
            return TRUE;
        case WM_SETTINGCHANGE:
            if (parts_) parts_->colours.Update();
            return TRUE;
        case WM_DESTROY:
            WindowCloses();
            return TRUE;
        default:
            if (!parts_) return FALSE;
            if (const auto brush = parts_->colours.Answer(message, first)) return *brush;
            return parts_->drag.HandleMessage(message, first, second);
    }
}

INT_PTR BrowseWindow::Answer(LRESULT result) const {
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, result);
    return TRUE;
}

INT_PTR BrowseWindow::HandleCommand(int control, int notification) {
    if (control == CONTROL_TYPE) {
        if (notification == CBN_SELCHANGE) FileTypeChanged();
        return TRUE;
    }
    if (control == CONTROL_NAME) {
        if (parts_) HandleNameNotify(notification);
        return TRUE;
    }
    if (control == CONTROL_SEARCH) {
        if (notification == EN_CHANGE && parts_) parts_->search.TextChanged();
        return TRUE;
    }
    return parts_ && RunCommand(control);
}

INT_PTR BrowseWindow::HandleNotify(const NMHDR& header) {
    // Controls notify while they are being made and while they are destroyed.
    if (!parts_ || closing_) return FALSE;
    if (const auto answer = parts_->colours.AnswerDraw(header)) return Answer(*answer);
    if (header.hwndFrom == parts_->list.Control()) return HandleListNotify(header);
    if (header.hwndFrom != parts_->tree.Control()) return FALSE;
    if (header.code == TVN_KEYDOWN) {
        if (reinterpret_cast<const NMTVKEYDOWN&>(header).wVKey == VK_BACK) {
            parts_->navigator.OpenAbove();
        }
        return TRUE;
    }
    const std::optional<LRESULT> answer = parts_->tree.HandleNotify(header);
    return answer ? Answer(*answer) : FALSE;
}

INT_PTR BrowseWindow::HandleListNotify(const NMHDR& header) {
    if (const std::optional<LRESULT> answer = parts_->list.HandleNotify(header)) {
        return Answer(*answer);
    }
    switch (header.code) {
        case LVN_ITEMCHANGED:
        case LVN_ODSTATECHANGED:
            parts_->choice.SelectionChanged();
            RowsChanged();
            return TRUE;
        case NM_CLICK:
            // A row that is selected already, though by no choice, does not change by it.
            if (reinterpret_cast<const NMITEMACTIVATE&>(header).iItem >= 0) {
                parts_->choice.SelectionChanged();
                RowsChanged();
            }
            return TRUE;
        case NM_DBLCLK:
            if (reinterpret_cast<const NMITEMACTIVATE&>(header).iItem >= 0) Confirm();
            return TRUE;
        case LVN_KEYDOWN:
            RunCommandOf(kListKeys, reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey);
            return TRUE;
        case LVN_BEGINDRAG:
            parts_->drag.Begin();
            return TRUE;
        case LVN_BEGINLABELEDITW:
            return Answer(parts_->commands.NameIsEdited() ? FALSE : TRUE);
        case LVN_ENDLABELEDITW:
            parts_->commands.NameEdited(reinterpret_cast<const NMLVDISPINFOW&>(header));
            return Answer(FALSE);
        default:
            return FALSE;
    }
}

void BrowseWindow::SelectAll() const {
    if (!settings_.SelectsSeveral()) return;
    ListView_SetItemState(parts_->list.Control(), -1, LVIS_SELECTED, LVIS_SELECTED);
}

void BrowseWindow::Confirm() {
    const HWND focus = GetFocus();
    if (focus == Control(CONTROL_SEARCH)) return parts_->list.FocusFirst();
    if (parts_->path.Press(focus)) return;
    if (focus == parts_->tree.Control()) {
        const HTREEITEM item = TreeView_GetSelection(focus);
        if (item != nullptr) TreeView_Expand(focus, item, TVE_TOGGLE);
        return;
    }
    const BrowseEntry* const entry = parts_->list.Focused();
    if (focus == parts_->list.Control() && entry != nullptr && entry->isFolder) {
        return OpenSelectedFolder(*entry);
    }
    // Enter in the field is about what stands there.
    const bool meansField = focus == Control(CONTROL_NAME) && !parts_->choice.IsFieldEmpty();
    const BrowseEntry* const folder = meansField ? nullptr : parts_->choice.FolderToOpen();
    if (folder != nullptr) return OpenSelectedFolder(*folder);
    parts_->choice.Accept();
}

void BrowseWindow::OpenSelectedFolder(const BrowseEntry& entry) {
    const auto& current = parts_->navigator.Current();
    if (!current || !parts_->navigator.IsLoaded()) return;
    const FolderRef folder = parts_->navigator.FolderOf(entry);
    parts_->navigator.Open({folder.depot, folder.relative + entry.name + "\\"});
}

void BrowseWindow::FileTypeChanged() {
    const LRESULT chosen = SendMessageW(Control(CONTROL_TYPE), CB_GETCURSEL, 0, 0);
    const bool ownType = chosen == 0 && settings_.fileType != 0;
    parts_->navigator.ShowMatching(PatternOfType(ownType ? settings_.fileType : 0));
    ShowCount();
}

void BrowseWindow::FolderChanged() {
    const auto& current = parts_->navigator.Current();
    const std::wstring shown = current ? parts_->tree.ShownPath(*current) : std::wstring();
    SetDlgItemTextW(window_, CONTROL_LOCATION, shown.c_str());
    if (current) parts_->path.Show(*current, parts_->tree.ShownNames(*current));
    parts_->path.Enable(parts_->navigator.HasBack(), parts_->navigator.HasForward(),
                        current && !current->relative.empty());
    parts_->choice.FolderChanged();
    parts_->search.FolderChanged();
    parts_->suggestions.Hide();
    RowsChanged();
}

void BrowseWindow::RowsChanged() {
    parts_->preview.SelectionChanged();
    parts_->commands.UpdateButtons();
    ShowWhatConfirmDoes();
    ShowCount();
}

// Where a folder would be opened, the button that saves says so.
void BrowseWindow::ShowWhatConfirmDoes() const {
    if (!settings_.saves) return;
    const bool opens = parts_->choice.FolderToOpen() != nullptr;
    const std::wstring text = texts_.Text(opens ? IDS_BROWSE_OPEN : IDS_BROWSE_SAVE);
    if (TextOf(Control(IDOK)) != text) SetDlgItemTextW(window_, IDOK, text.c_str());
}

void BrowseWindow::AskForHelp() const {
    if (settings_.helpTopic == 0 || !IsWindow(settings_.owner)) return;
    static const UINT message = RegisterWindowMessageW(L"commdlg_help");
    // An owner that belongs to another thread must not hold the dialog up.
    SendNotifyMessageW(settings_.owner, message, reinterpret_cast<WPARAM>(window_),
                       settings_.helpTopic);
}

void BrowseWindow::WindowCloses() {
    KeepWhatIsRemembered();
    if (parts_) parts_->desktop.End();
    closing_ = true;
    mailbox_->Close();
    // The loop finds out with its next message.
    PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
}

void BrowseWindow::Finish(BrowseOutcome outcome, std::vector<std::string> paths) {
    outcome_ = outcome;
    chosen_ = std::move(paths);
    if (!chosen_.empty()) memory_.KeepFolder(settings_.fileType, FolderPrefix(chosen_.front()));
    // The loop looks at the outcome with its next message.
    PostMessageW(window_, WM_NULL, 0, 0);
}

}  // namespace depot
