#include "depotbrowser/name_suggestions.h"

#include "depotbrowser/browse_ids.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/flag_scope.h"
#include "depotbrowser/status_line.h"
#include "platform/module_state.h"
// After the Windows headers.
#include <commctrl.h>

namespace depot {
namespace {

constexpr std::size_t kMostNames = 8;

}  // namespace

NameSuggestions::NameSuggestions(HWND dialog, const FileList& list,
                                 const std::wstring& accessibleName)
    : dialog_(dialog), field_(GetDlgItem(dialog, CONTROL_NAME)), list_(list) {
    // A window of its own, because a control could not stand out over the others.
    control_ = CreateWindowExW(WS_EX_NOACTIVATE | WS_EX_TOOLWINDOW, WC_LISTBOXW,
                               accessibleName.c_str(), WS_POPUP | WS_BORDER | LBS_NOTIFY, 0, 0, 0,
                               0, dialog, nullptr, OwnModule(), nullptr);
}

NameSuggestions::~NameSuggestions() {
    if (IsWindow(control_)) DestroyWindow(control_);
}

std::vector<std::wstring> NameSuggestions::Fitting(const std::wstring& beginning) const {
    std::vector<std::wstring> names;
    const int length = static_cast<int>(beginning.size());
    for (int row = 0; const BrowseEntry* const entry = list_.EntryAt(row); ++row) {
        const std::wstring& name = entry->shownName;
        if (entry->elsewhere || name.size() <= beginning.size()) continue;
        if (CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, name.c_str(), length,
                           beginning.c_str(), length) != CSTR_EQUAL) {
            continue;
        }
        names.push_back(name);
        if (names.size() == kMostNames) break;
    }
    return names;
}

void NameSuggestions::FieldEdited() {
    if (filling_ || GetFocus() != field_) return;
    typed_ = TextOf(field_);
    // A path or a list of names in quotes is not completed.
    const bool isName = !typed_.empty() && typed_.find_first_of(L"\\/<\"*?:") == std::wstring::npos;
    const std::vector<std::wstring> names = isName ? Fitting(typed_) : std::vector<std::wstring>();
    if (names.empty()) return Hide();
    Show(names);
}

void NameSuggestions::Show(const std::vector<std::wstring>& names) {
    SendMessageW(control_, WM_SETFONT, static_cast<WPARAM>(SendMessageW(field_, WM_GETFONT, 0, 0)),
                 FALSE);
    SendMessageW(control_, LB_RESETCONTENT, 0, 0);
    for (const std::wstring& name : names) {
        SendMessageW(control_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name.c_str()));
    }
    RECT field = {};
    GetWindowRect(field_, &field);
    const auto line = static_cast<int>(SendMessageW(control_, LB_GETITEMHEIGHT, 0, 0));
    const int height = line * static_cast<int>(names.size()) + 2 * GetSystemMetrics(SM_CYBORDER);
    // The field stands at the lower edge of the dialog: the list has more room above it.
    SetWindowPos(control_, HWND_TOP, static_cast<int>(field.left),
                 static_cast<int>(field.top) - height, static_cast<int>(field.right - field.left),
                 height, SWP_NOACTIVATE | SWP_SHOWWINDOW);
}

void NameSuggestions::Hide() {
    if (IsShown()) ShowWindow(control_, SW_HIDE);
}

bool NameSuggestions::IsShown() const {
    return IsWindowVisible(control_) != FALSE;
}

bool NameSuggestions::HandleKey(WPARAM key) {
    if (!IsShown()) return false;
    switch (key) {
        case VK_DOWN:
            Move(1);
            return true;
        case VK_UP:
            Move(-1);
            return true;
        case VK_ESCAPE:
            SetField(typed_);
            Hide();
            return true;
        case VK_RETURN:
        case VK_TAB:
            Hide();
            return false;
        default:
            return false;
    }
}

// Before the first name and behind the last one stands what was typed.
void NameSuggestions::Move(int by) {
    const auto count = static_cast<int>(SendMessageW(control_, LB_GETCOUNT, 0, 0));
    const auto at = static_cast<int>(SendMessageW(control_, LB_GETCURSEL, 0, 0));
    const int next = (at + 1 + by + count + 1) % (count + 1) - 1;
    SendMessageW(control_, LB_SETCURSEL, static_cast<WPARAM>(next), 0);
    if (next < 0) return SetField(typed_);
    TakeSelected();
    NotifyWinEvent(EVENT_OBJECT_FOCUS, control_, OBJID_CLIENT, next + 1);
}

void NameSuggestions::Clicked() {
    TakeSelected();
    SetFocus(field_);
    Hide();
}

void NameSuggestions::FocusLeft() {
    const HWND focus = GetFocus();
    if (focus != field_ && focus != control_) Hide();
}

void NameSuggestions::TakeSelected() {
    const LRESULT at = SendMessageW(control_, LB_GETCURSEL, 0, 0);
    const LRESULT length = SendMessageW(control_, LB_GETTEXTLEN, static_cast<WPARAM>(at), 0);
    if (at == LB_ERR || length == LB_ERR) return;
    std::wstring name(static_cast<std::size_t>(length), L'\0');
    SendMessageW(control_, LB_GETTEXT, static_cast<WPARAM>(at),
                 reinterpret_cast<LPARAM>(name.data()));
    SetField(name);
}

void NameSuggestions::SetField(const std::wstring& text) {
    const FlagScope scope(filling_);
    SetWindowTextW(field_, text.c_str());
    const auto end = static_cast<LPARAM>(text.size());
    SendMessageW(field_, EM_SETSEL, static_cast<WPARAM>(end), end);
}

}  // namespace depot
