#include "depotbrowser/kept_window.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "depotbrowser/depot_worker.h"
#include "depotbrowser/dialog_look.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/kept_files.h"
#include "depotbrowser/kept_ids.h"
#include "depotbrowser/kept_texts.h"
#include "depotbrowser/label_text.h"
#include "depotbrowser/status_line.h"
#include "platform/module_state.h"
#include "platform/not_copied.h"
#include "platform/wide_text.h"
#include "resource_ids.h"
// After the Windows headers.
#include <commctrl.h>

namespace depot {
namespace {

constexpr LabelledControl kLabels[] = {
    {CONTROL_KEPT_LIST_LABEL, IDS_BROWSE_FILES},  {CONTROL_KEPT_DIFFERENCES, IDS_KEPT_DIFFERENCES},
    {CONTROL_KEPT_MERGE, IDS_KEPT_MERGE},         {CONTROL_KEPT_REPLACE, IDS_KEPT_REPLACE},
    {CONTROL_KEPT_EXPORT, IDS_KEPT_EXPORT},       {CONTROL_KEPT_DISCARD, IDS_KEPT_DISCARD},
    {CONTROL_KEPT_VALUES_LABEL, IDS_KEPT_VALUES}, {IDCANCEL, IDS_KEPT_CLOSE},
};

constexpr int kCommands[] = {CONTROL_KEPT_DIFFERENCES, CONTROL_KEPT_MERGE, CONTROL_KEPT_REPLACE,
                             CONTROL_KEPT_EXPORT, CONTROL_KEPT_DISCARD};

// Measures in dialog units.
constexpr int kGap = 4;
constexpr int kButtonEdges = 12;

struct ColumnStyle {
    UINT title;
    int share;  // of the list's width, in percent
};

constexpr ColumnStyle kFileColumns[] = {{IDS_BROWSE_COLUMN_NAME, 25},
                                        {IDS_KEPT_COLUMN_ENTRY, 25},
                                        {IDS_BROWSE_COLUMN_DATE, 19},
                                        {IDS_KEPT_COLUMN_STATE, 11},
                                        {IDS_KEPT_COLUMN_WHY, 18}};
constexpr ColumnStyle kValueColumns[] = {{IDS_KEPT_COLUMN_SECTION, 18},
                                         {IDS_BROWSE_COLUMN_NAME, 20},
                                         {IDS_KEPT_COLUMN_BASE, 20},
                                         {IDS_KEPT_COLUMN_STORED, 20},
                                         {IDS_KEPT_COLUMN_OURS, 20}};

// One open window. All it does with files is done by its worker.
class KeptWindow : NotCopied {
public:
    explicit KeptWindow(const BrowseTexts& texts) : texts_(texts) {}
    ~KeptWindow() { mailbox_->Close(); }

    static INT_PTR CALLBACK Handle(HWND window, UINT message, WPARAM first, LPARAM second) noexcept;

private:
    void Start(HWND window);
    INT_PTR HandleMessage(UINT message, WPARAM first, LPARAM second);
    bool HandleCommand(int control);
    template <std::size_t Count>
    void AddColumns(int control, const ColumnStyle (&columns)[Count]) const;
    void PlaceButtons() const;

    void Reload(const std::wstring& message);
    void Show(const std::vector<KeptFile>& files, const std::wstring& message);
    void ShowValues(const KeptFile& file, const KeptComparison& comparison);
    void UpdateButtons() const;
    void BeginWork();
    void SetMessage(const std::wstring& text) const;
    void SetCell(int control, int row, int column, std::wstring text) const;
    bool Asks(const std::wstring& question) const;

    const KeptFile* Selected() const;
    void Compare();
    void Replace();
    void Restore(const KeptFile& file, RestoreRules rules);
    void Restored(const KeptFile& file, const KeptResult& result);
    void Export();
    void Discard();
    // Has the worker do it with a file, and shows what became of it with the files that are left.
    template <class Work>
    void Run(const KeptFile& file, UINT success, Work work);

    HWND Control(int control) const { return GetDlgItem(window_, control); }

    const BrowseTexts& texts_;
    HWND window_ = nullptr;
    std::optional<DialogLook> look_;  // once all controls have their places
    const std::shared_ptr<WindowMailbox> mailbox_ = std::make_shared<WindowMailbox>();
    DepotWorker worker_{mailbox_};
    std::vector<KeptFile> files_;
    bool isWorking_ = false;
};

// No exception may cross the system's own frames.
INT_PTR CALLBACK KeptWindow::Handle(HWND window, UINT message, WPARAM first, LPARAM second) noexcept
    try {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, second);
        reinterpret_cast<KeptWindow*>(second)->Start(window);
        return FALSE;  // the focus is set
    }
    auto* const self = reinterpret_cast<KeptWindow*>(GetWindowLongPtrW(window, DWLP_USER));
    return self != nullptr ? self->HandleMessage(message, first, second) : FALSE;
} catch (...) {
    EndDialog(window, -1);
    return TRUE;
}

void KeptWindow::Start(HWND window) {
    window_ = window;
    mailbox_->Open(window);
    SetWindowTextW(window, WithoutAccessKey(texts_.Text(IDS_KEPT_TITLE)).c_str());
    for (const LabelledControl& label : kLabels) {
        SetDlgItemTextW(window, label.control, texts_.Text(label.text).c_str());
    }
    // The texts that a screen reader reads for controls that show none of their own.
    SetDlgItemTextW(window, CONTROL_KEPT_LIST,
                    WithoutAccessKey(texts_.Text(IDS_BROWSE_FILES)).c_str());
    SetDlgItemTextW(window, CONTROL_KEPT_VALUES,
                    WithoutAccessKey(texts_.Text(IDS_KEPT_VALUES)).c_str());
    AddColumns(CONTROL_KEPT_LIST, kFileColumns);
    AddColumns(CONTROL_KEPT_VALUES, kValueColumns);
    PlaceButtons();
    look_.emplace(window);
    Reload({});
    SendMessageW(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(CONTROL_KEPT_LIST)), TRUE);
}

template <std::size_t Count>
void KeptWindow::AddColumns(int control, const ColumnStyle (&columns)[Count]) const {
    const HWND list = Control(control);
    ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
    RECT area = {};
    GetClientRect(list, &area);
    int index = 0;
    for (const ColumnStyle& style : columns) {
        std::wstring title = texts_.Text(style.title);
        LVCOLUMNW column = {};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.cx = MulDiv(static_cast<int>(area.right), style.share, 100);
        column.pszText = title.data();
        SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(index++),
                     reinterpret_cast<LPARAM>(&column));
    }
}

// Each button is as wide as its text, which languages differ in.
void KeptWindow::PlaceButtons() const {
    const RECT first = PlaceOf(Control(kCommands[0]));
    int x = static_cast<int>(first.left);
    for (const int command : kCommands) {
        const HWND button = Control(command);
        const SIZE edges = PixelsOf(button, kButtonEdges, kGap);
        const int width = TextWidth(button, TextOf(button)) + static_cast<int>(edges.cx);
        MoveTo(button,
               {x, static_cast<int>(first.top), width, static_cast<int>(first.bottom - first.top)});
        x += width + static_cast<int>(PixelsOf(button, kGap, 0).cx);
    }
}

INT_PTR KeptWindow::HandleMessage(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
        case WM_COMMAND:
            return HandleCommand(LOWORD(first));
        case WM_NOTIFY:
            if (reinterpret_cast<const NMHDR*>(second)->code == LVN_ITEMCHANGED) UpdateButtons();
            return TRUE;
        case WindowMailbox::kDeliverMessage:
            mailbox_->Deliver();
            return TRUE;
        case WindowMailbox::kPromptMessage:
            SetWindowLongPtrW(window_, DWLP_MSGRESULT,
                              WindowMailbox::AnswerPrompt(window_, second));
            return TRUE;
        case WM_DESTROY:
            mailbox_->Close();
            return TRUE;
        default:
            return look_ ? look_->HandleMessage(message, first, second).value_or(FALSE) : FALSE;
    }
}

bool KeptWindow::HandleCommand(int control) {
    switch (control) {
        case CONTROL_KEPT_DIFFERENCES:
            Compare();
            return true;
        case CONTROL_KEPT_MERGE:
            if (const KeptFile* const file = Selected()) Restore(*file, {.merges = true});
            return true;
        case CONTROL_KEPT_REPLACE:
            Replace();
            return true;
        case CONTROL_KEPT_EXPORT:
            Export();
            return true;
        case CONTROL_KEPT_DISCARD:
            Discard();
            return true;
        case IDCANCEL:
            EndDialog(window_, IDCANCEL);
            return true;
        default:
            return false;
    }
}

const KeptFile* KeptWindow::Selected() const {
    const int row = ListView_GetNextItem(Control(CONTROL_KEPT_LIST), -1, LVNI_SELECTED);
    const bool isThere = row >= 0 && static_cast<std::size_t>(row) < files_.size();
    return isThere && !isWorking_ ? &files_[static_cast<std::size_t>(row)] : nullptr;
}

void KeptWindow::UpdateButtons() const {
    const KeptFile* const file = Selected();
    for (const int command : kCommands) {
        // What waits is stored by itself.
        const bool isRestoring = command == CONTROL_KEPT_MERGE || command == CONTROL_KEPT_REPLACE;
        const bool isUsable = file != nullptr && !(isRestoring && file->copy.isWaiting);
        // The focus must not stay on a button that cannot be used any more.
        if (!isUsable && GetFocus() == Control(command)) SetFocus(Control(CONTROL_KEPT_LIST));
        EnableWindow(Control(command), isUsable);
    }
}

void KeptWindow::SetMessage(const std::wstring& text) const {
    if (TextOf(Control(CONTROL_KEPT_MESSAGE)) == text) return;
    SetDlgItemTextW(window_, CONTROL_KEPT_MESSAGE, text.c_str());
    NotifyWinEvent(EVENT_SYSTEM_ALERT, Control(CONTROL_KEPT_MESSAGE), OBJID_CLIENT, CHILDID_SELF);
}

void KeptWindow::BeginWork() {
    isWorking_ = true;
    SetMessage(texts_.Text(IDS_BROWSE_WORKING));
    UpdateButtons();
}

void KeptWindow::Reload(const std::wstring& message) {
    BeginWork();
    worker_.Post(FindKeptFiles,
                 [this, message](const std::vector<KeptFile>& files) { Show(files, message); });
}

void KeptWindow::SetCell(int control, int row, int column, std::wstring text) const {
    LVITEMW item = {};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.iSubItem = column;
    item.pszText = text.data();
    SendMessageW(Control(control), column == 0 ? LVM_INSERTITEMW : LVM_SETITEMW, 0,
                 reinterpret_cast<LPARAM>(&item));
}

void KeptWindow::Show(const std::vector<KeptFile>& files, const std::wstring& message) {
    const HWND list = Control(CONTROL_KEPT_LIST);
    const int selected = ListView_GetNextItem(list, -1, LVNI_SELECTED);
    isWorking_ = false;
    files_ = files;
    ListView_DeleteAllItems(list);
    ListView_DeleteAllItems(Control(CONTROL_KEPT_VALUES));
    int row = 0;
    for (const KeptFile& file : files_) {
        int column = 0;
        for (std::wstring& cell : KeptCells(texts_, file)) {
            SetCell(CONTROL_KEPT_LIST, row, column++, std::move(cell));
        }
        ++row;
    }
    const int next = std::min(std::max(selected, 0), row - 1);
    constexpr UINT kBoth = LVIS_SELECTED | LVIS_FOCUSED;
    if (next >= 0) ListView_SetItemState(list, next, kBoth, kBoth);
    SetMessage(message.empty() && files_.empty() ? texts_.Text(IDS_BROWSE_EMPTY) : message);
    UpdateButtons();
}

bool KeptWindow::Asks(const std::wstring& question) const {
    const std::wstring title = WithoutAccessKey(texts_.Text(IDS_KEPT_TITLE));
    const int answer = MessageBoxW(window_, question.c_str(), title.c_str(),
                                   MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2);
    // The window may have been closed with its owner meanwhile.
    return answer == IDYES && IsWindow(window_);
}

template <class Work>
void KeptWindow::Run(const KeptFile& file, UINT success, Work work) {
    BeginWork();
    worker_.Post(std::move(work), [this, file, success](const KeptResult& result) {
        const bool isDone = result.outcome == KeptOutcome::kDone;
        Reload(isDone ? texts_.Text(success, NameOf(file)) : KeptFailure(texts_, file, result));
    });
}

void KeptWindow::Compare() {
    const KeptFile* const file = Selected();
    if (file == nullptr) return;
    BeginWork();
    worker_.Post(
        [copy = file->copy](DepotSession& session) { return CompareKept(session, copy); },
        [this, shown = *file](const KeptComparison& comparison) { ShowValues(shown, comparison); });
}

void KeptWindow::ShowValues(const KeptFile& file, const KeptComparison& comparison) {
    isWorking_ = false;
    ListView_DeleteAllItems(Control(CONTROL_KEPT_VALUES));
    int row = 0;
    for (const KeptValue& value : comparison.values.value_or(std::vector<KeptValue>())) {
        int column = 0;
        for (std::wstring& cell : ValueCells(value)) {
            SetCell(CONTROL_KEPT_VALUES, row, column++, std::move(cell));
        }
        ++row;
    }
    SetMessage(ComparisonText(texts_, file, comparison));
    UpdateButtons();
}

void KeptWindow::Replace() {
    const KeptFile* const selected = Selected();
    if (selected == nullptr) return;
    const KeptFile file = *selected;
    if (!Asks(texts_.Text(IDS_KEPT_ASK_REPLACE, WideFromAnsi(file.entry)))) return;
    Restore(file, {.replaces = true, .makes = true});
}

void KeptWindow::Restore(const KeptFile& file, RestoreRules rules) {
    if (file.copy.isWaiting) return;
    BeginWork();
    worker_.Post([copy = file.copy,
                  rules](DepotSession& session) { return RestoreKept(session, copy, rules); },
                 [this, file](const KeptResult& result) { Restored(file, result); });
}

void KeptWindow::Restored(const KeptFile& file, const KeptResult& result) {
    if (result.outcome == KeptOutcome::kConflicts) {
        SetMessage({});
        const std::wstring values = ConflictNames(result.conflicts);
        if (Asks(texts_.Text(IDS_KEPT_ASK_CONFLICTS, values))) {
            return Restore(file, {.merges = true, .replaces = true});
        }
        if (IsWindow(window_)) Reload({});
        return;
    }
    const bool isDone = result.outcome == KeptOutcome::kDone;
    Reload(isDone ? texts_.Text(IDS_KEPT_RESTORED, NameOf(file))
                  : KeptFailure(texts_, file, result));
}

void KeptWindow::Export() {
    const KeptFile* const selected = Selected();
    if (selected == nullptr) return;
    const KeptFile file = *selected;
    const std::wstring path = AskForCopy(window_, texts_, file);
    if (path.empty() || !IsWindow(window_)) return;
    const auto narrow = ExactAnsiFromWide(path);
    if (!narrow) return SetMessage(texts_.Text(IDS_BROWSE_BAD_NAME, path));
    Run(file, IDS_KEPT_EXPORTED, [copy = file.copy, target = *narrow](DepotSession& /*session*/) {
        return ExportKept(copy, target);
    });
}

void KeptWindow::Discard() {
    const KeptFile* const selected = Selected();
    if (selected == nullptr) return;
    const KeptFile file = *selected;
    if (!Asks(texts_.Text(IDS_BROWSE_CONFIRM_DELETE, NameOf(file)) + L"\n\n" +
              texts_.Text(IDS_BROWSE_DELETE_FINAL))) {
        return;
    }
    Run(file, IDS_KEPT_DISCARDED,
        [copy = file.copy](DepotSession& /*session*/) { return DiscardKept(copy); });
}

}  // namespace

void ShowKeptWindow(HWND owner, const BrowseTexts& texts) {
    const DialogTemplate dialog = LoadDialogTemplate(OwnModule(), DIALOG_KEPT);
    if (dialog.empty()) return;
    KeptWindow window(texts);
    DialogBoxIndirectParamW(OwnModule(), reinterpret_cast<const DLGTEMPLATE*>(dialog.data()), owner,
                            KeptWindow::Handle, reinterpret_cast<LPARAM>(&window));
}

}  // namespace depot
