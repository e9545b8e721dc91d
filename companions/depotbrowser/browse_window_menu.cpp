// The keys, the navigation and the context menus of the browse dialog.
#include "depotbrowser/browse_window.h"
#include "depotbrowser/browse_window_parts.h"
#include "depotbrowser/column_text.h"
#include "depotbrowser/context_menu.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/kept_ids.h"
#include "resource_ids.h"
// After the Windows headers.
#include <windowsx.h>

namespace depot {
namespace {

bool IsDown(int key) {
    return GetKeyState(key) < 0;
}

constexpr KeyCommand kSystemKeys[] = {{VK_UP, CONTROL_UP},
                                      {VK_LEFT, CONTROL_BACK},
                                      {VK_RIGHT, CONTROL_FORWARD},
                                      {VK_RETURN, COMMAND_PROPERTIES}};

// Where a menu opens: at the mouse, or, when a key asked for it, in the control.
POINT MenuPlace(HWND control, LPARAM place) {
    if (place != -1) return {GET_X_LPARAM(place), GET_Y_LPARAM(place)};
    RECT area = {};
    const int row = ListView_GetNextItem(control, -1, LVNI_SELECTED);
    if (row < 0 || !ListView_GetItemRect(control, row, &area, LVIR_LABEL)) {
        GetClientRect(control, &area);
        area.bottom = area.top;
    }
    POINT point = {area.left, area.bottom};
    ClientToScreen(control, &point);
    return point;
}

}  // namespace

void BrowseWindow::HandleNameNotify(int notification) {
    if (notification == EN_CHANGE) {
        parts_->choice.FieldEdited();
        parts_->suggestions.FieldEdited();
        ShowWhatConfirmDoes();
    }
    if (notification == EN_KILLFOCUS) {
        // A click on a suggestion takes the focus for a moment.
        mailbox_->Send([this] { parts_->suggestions.FocusLeft(); });
    }
}

bool BrowseWindow::IsSuggestion(LPARAM sender) const {
    return parts_ && sender != 0 && reinterpret_cast<HWND>(sender) == parts_->suggestions.Control();
}

INT_PTR BrowseWindow::SuggestionClicked(int notification) {
    if (notification == LBN_SELCHANGE) parts_->suggestions.Clicked();
    return TRUE;
}

bool BrowseWindow::RunCommand(int control) {
    struct Command {
        int control;
        void (*run)(BrowseWindow& window);
    };
    static constexpr Command kCommands[] = {
        {IDOK, [](BrowseWindow& window) { window.Confirm(); }},
        {IDCANCEL, [](BrowseWindow& window) { window.Finish(BrowseOutcome::kCancelled); }},
        {CONTROL_BACK, [](BrowseWindow& window) { window.parts_->navigator.OpenBack(); }},
        {CONTROL_FORWARD, [](BrowseWindow& window) { window.parts_->navigator.OpenForward(); }},
        {CONTROL_UP, [](BrowseWindow& window) { window.parts_->navigator.OpenAbove(); }},
        {CONTROL_NEW_FOLDER, [](BrowseWindow& window) { window.parts_->commands.NewFolder(); }},
        {CONTROL_RENAME, [](BrowseWindow& window) { window.parts_->commands.Rename(); }},
        {CONTROL_MAKE_COPY, [](BrowseWindow& window) { window.parts_->commands.MakeCopy(); }},
        {CONTROL_DELETE, [](BrowseWindow& window) { window.parts_->commands.Delete(); }},
        {CONTROL_STOP, [](BrowseWindow& window) { window.Stop(); }},
        {CONTROL_KEPT_LINE, [](BrowseWindow& window) { window.parts_->kept.Open(); }},
        {CONTROL_HELP, [](BrowseWindow& window) { window.AskForHelp(); }},
        {COMMAND_OPEN, [](BrowseWindow& window) { window.OpenSelected(); }},
        {COMMAND_GO_TO_FOLDER, [](BrowseWindow& window) { window.GoToFolderOfSelected(); }},
        {COMMAND_REFRESH, [](BrowseWindow& window) { window.Refresh(); }},
        {COMMAND_PROPERTIES, [](BrowseWindow& window) { window.parts_->preview.ShowProperties(); }},
    };
    for (const Command& command : kCommands) {
        if (command.control != control) continue;
        command.run(*this);
        return true;
    }
    return parts_->path.HandleCommand(control);
}

void BrowseWindow::Stop() {
    parts_->drops.Stop();
    parts_->navigator.Stop();
}

bool BrowseWindow::RunCommandOf(std::span<const KeyCommand> keys, WPARAM key) {
    for (const KeyCommand& one : keys) {
        if (parts_ && one.key == key) return RunCommand(one.control);
    }
    return false;
}

bool BrowseWindow::TranslateKey(const MSG& message) {
    if (parts_ && parts_->drag.HandleKey(message)) return true;
    if ((message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN) ||
        !IsChild(window_, message.hwnd) || parts_->list.IsEditing()) {
        return false;
    }
    const bool isField = message.hwnd == Control(CONTROL_NAME);
    if (isField && parts_->suggestions.HandleKey(message.wParam)) return true;
    if (message.message == WM_SYSKEYDOWN) return RunCommandOf(kSystemKeys, message.wParam);
    if (message.wParam == VK_F5) {
        Refresh();
        return true;
    }
    if (message.wParam == VK_ESCAPE && message.hwnd == Control(CONTROL_SEARCH)) {
        return parts_->search.Clear();
    }
    if (message.wParam == VK_DOWN && message.hwnd == Control(CONTROL_SEARCH)) {
        parts_->list.FocusFirst();
        return true;
    }
    return IsDown(VK_CONTROL) && TranslateControlKey(message);
}

bool BrowseWindow::TranslateControlKey(const MSG& message) {
    switch (message.wParam) {
        case 'A':
            if (message.hwnd != parts_->list.Control()) return false;
            SelectAll();
            return true;
        case 'F':
        case 'E':
            SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(CONTROL_SEARCH)),
                         TRUE);
            return true;
        case 'N':
            if (!IsDown(VK_SHIFT)) return false;
            parts_->commands.NewFolder();
            return true;
        default:
            return false;
    }
}

void BrowseWindow::Refresh() {
    const BrowseEntry* const focused = parts_->list.Focused();
    const bool isHere = focused != nullptr && !focused->elsewhere;
    parts_->navigator.Reload({isHere ? focused->name : std::string(), {}, {}, true});
    parts_->kept.Refresh();
}

bool BrowseWindow::ShowContextMenu(HWND control, LPARAM place) {
    const bool isTree = control == parts_->tree.Control();
    if (!isTree && control != parts_->list.Control()) return false;
    if (isTree) parts_->tree.SelectAtMouse(place);
    ContextMenu menu;
    if (!isTree) AddSelectionCommands(menu);
    if (settings_.OffersCommands()) {
        const auto usable = [this](int command) { return IsWindowEnabled(Control(command)) != 0; };
        if (!isTree) {
            menu.Add(CONTROL_RENAME, texts_.Text(IDS_BROWSE_RENAME), usable(CONTROL_RENAME));
            menu.Add(CONTROL_MAKE_COPY, texts_.Text(IDS_BROWSE_MAKE_COPY),
                     usable(CONTROL_MAKE_COPY));
            menu.Add(CONTROL_DELETE, texts_.Text(IDS_BROWSE_DELETE), usable(CONTROL_DELETE));
            menu.AddLine();
        }
        menu.Add(CONTROL_NEW_FOLDER, texts_.Text(IDS_BROWSE_NEW_FOLDER),
                 usable(CONTROL_NEW_FOLDER));
    }
    menu.Add(COMMAND_REFRESH, texts_.Text(IDS_BROWSE_REFRESH), true);
    if (!isTree && parts_->list.Selected().size() == 1) {
        menu.AddLine();
        menu.Add(COMMAND_PROPERTIES, texts_.Text(IDS_BROWSE_PROPERTIES), true);
    }
    const int command = menu.Show(window_, MenuPlace(control, place));
    // The owner may have been closed with the menu open.
    if (command != 0 && !closing_) HandleCommand(command, 0);
    return true;
}

void BrowseWindow::AddSelectionCommands(ContextMenu& menu) const {
    const auto selected = parts_->list.Selected();
    if (selected.empty()) return;
    menu.AddDefault(COMMAND_OPEN, texts_.Text(IDS_BROWSE_OPEN));
    if (selected.size() == 1 && selected.front()->elsewhere) {
        menu.Add(COMMAND_GO_TO_FOLDER, texts_.Text(IDS_BROWSE_GO_TO_FOLDER), true);
    }
    menu.AddLine();
}

// What Enter in the list does.
void BrowseWindow::OpenSelected() {
    SetFocus(parts_->list.Control());
    Confirm();
}

void BrowseWindow::GoToFolderOfSelected() {
    const auto selected = parts_->list.Selected();
    if (selected.size() != 1) return;
    const BrowseEntry entry = *selected.front();
    parts_->navigator.Open(parts_->navigator.FolderOf(entry), {entry.name, {}, {}, false});
}

// How many rows there are, and how many of them are selected.
void BrowseWindow::ShowCount() const {
    std::wstring text;
    const UINT selected = ListView_GetSelectedCount(parts_->list.Control());
    if (parts_->navigator.IsLoaded()) {
        const std::wstring rows = std::to_wstring(parts_->list.RowCount());
        text = selected == 0 ? texts_.Text(IDS_BROWSE_COUNT, rows)
                             : FillIn(texts_.Text(IDS_BROWSE_COUNT_SELECTED, rows),
                                      std::to_wstring(selected));
    }
    if (TextOf(Control(CONTROL_STATUS)) != text) {
        SetDlgItemTextW(window_, CONTROL_STATUS, text.c_str());
    }
}

}  // namespace depot
