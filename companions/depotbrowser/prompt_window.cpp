#include "depotbrowser/prompt_window.h"

#include "depotbrowser/column_text.h"
#include "depotbrowser/dialog_look.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/prompt_ids.h"
#include "depotbrowser/prompt_text.h"
#include "platform/directory_client.h"
#include "platform/module_state.h"
#include "platform/wide_text.h"
#include "platform/wipe.h"
#include "resource_ids.h"
// After the Windows headers.
#include <commctrl.h>

namespace depot {
namespace {

constexpr LabelledControl kLabels[] = {
    {CONTROL_SERVER_LABEL, IDS_CREDENTIALS_SERVER},
    {CONTROL_USER_LABEL, IDS_CREDENTIALS_USER},
    {CONTROL_PASSWORD_LABEL, IDS_CREDENTIALS_PASSWORD},
    {CONTROL_EXAMPLE, IDS_CREDENTIALS_EXAMPLE},
    {CONTROL_SHOW_PASSWORD, IDS_CREDENTIALS_SHOW},
    {CONTROL_STORE, IDS_CREDENTIALS_STORE},
    {CONTROL_OPEN_CONNECTION, IDS_CREDENTIALS_OPEN},
    {IDOK, IDS_OK},
    {IDCANCEL, IDS_CANCEL},
};

// The text that says why the user is asked: what to do, or what went wrong and what would help.
UINT InstructionFor(std::uint32_t failure) {
    switch (failure) {
        case LDAP_INVALID_CREDENTIALS:
            return IDS_CREDENTIALS_REFUSED;
        case LDAP_SERVER_DOWN:
        case LDAP_TIMEOUT:
        case LDAP_CONNECT_ERROR:
            return IDS_CREDENTIALS_UNREACHABLE;
        case LDAP_AUTH_METHOD_NOT_SUPPORTED:
        case LDAP_STRONG_AUTH_REQUIRED:
        case LDAP_INAPPROPRIATE_AUTH:
            return IDS_CREDENTIALS_STRONGER;
        case LDAP_CONFIDENTIALITY_REQUIRED:
            return IDS_CREDENTIALS_SECURED;
        case LDAP_INSUFFICIENT_RIGHTS:
            return IDS_CREDENTIALS_RIGHTS;
        case LDAP_UNWILLING_TO_PERFORM:
            return IDS_CREDENTIALS_UNWILLING;
        case LDAP_BUSY:
        case LDAP_UNAVAILABLE:
            return IDS_CREDENTIALS_BUSY;
        default:
            return IDS_CREDENTIALS_INSTRUCTION;
    }
}

void FillField(HWND window, int control, const std::wstring& text) {
    SendDlgItemMessageW(window, control, EM_LIMITTEXT, kPromptFieldLimit, 0);
    SetDlgItemTextW(window, control, text.c_str());
}

// The first empty field; with both filled the password, which is more often the wrong one.
int FieldToStartIn(const PromptFields& fields) {
    return fields.userName.empty() ? CONTROL_USER : CONTROL_PASSWORD;
}

// Moves to a field, selects its text and keeps the default button as it is.
void StartIn(HWND window, int control) {
    const HWND field = GetDlgItem(window, control);
    SendMessageW(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
}

// Caps Lock may change while another program has the keyboard: it is looked at now and then.
constexpr UINT_PTR kCapsLockTimer = 1;
constexpr UINT kCapsLockMilliseconds = 200;

void ShowCapsLock(HWND window) {
    const bool on = (GetKeyState(VK_CAPITAL) & 1) != 0;
    const std::wstring text = on ? PromptText(IDS_CREDENTIALS_CAPS_LOCK) : std::wstring();
    const HWND line = GetDlgItem(window, CONTROL_CAPS_LOCK);
    if (TextOf(line) == text) return;
    SetWindowTextW(line, text.c_str());
    if (on) NotifyWinEvent(EVENT_SYSTEM_ALERT, line, OBJID_CLIENT, CHILDID_SELF);
}

// A text that is too long for its place is read whole where the mouse rests on it.
void AddHint(HWND window, int control, std::wstring text) {
    const HWND hints = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                                       WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0, 0, window,
                                       nullptr, OwnModule(), nullptr);
    TTTOOLINFOW tool = {};
    tool.cbSize = sizeof(tool);
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = window;
    tool.uId = reinterpret_cast<UINT_PTR>(GetDlgItem(window, control));
    tool.lpszText = text.data();
    SendMessageW(hints, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

void ShowNameForm(HWND window, const std::wstring& example) {
    if (example.empty()) return;
    const std::wstring text = FillIn(PromptText(IDS_CREDENTIALS_NAME_FORM), example);
    SetDlgItemTextW(window, CONTROL_EXAMPLE, text.c_str());
    AddHint(window, CONTROL_EXAMPLE, text);
}

// Once the field was empty, all that stands in it was typed here.
void PasswordEdited(HWND window) {
    const int length = GetWindowTextLengthW(GetDlgItem(window, CONTROL_PASSWORD));
    if (length <= 1) EnableWindow(GetDlgItem(window, CONTROL_SHOW_PASSWORD), TRUE);
}

void ShowOrMaskPassword(HWND window) {
    const HWND field = GetDlgItem(window, CONTROL_PASSWORD);
    const bool shows = IsDlgButtonChecked(window, CONTROL_SHOW_PASSWORD) == BST_CHECKED;
    constexpr wchar_t kMask = 0x25CF;
    SendMessageW(field, EM_SETPASSWORDCHAR, shows ? 0 : kMask, 0);
    InvalidateRect(field, nullptr, TRUE);
}

// Takes out a row of that many dialog units that holds one control: what lies below moves up.
void RemoveRow(HWND window, int control, int units) {
    const HWND removed = GetDlgItem(window, control);
    const LONG top = PlaceOf(removed).top;
    RECT row = {0, 0, 0, units};
    MapDialogRect(window, &row);
    DestroyWindow(removed);
    for (HWND one = GetWindow(window, GW_CHILD); one != nullptr;
         one = GetWindow(one, GW_HWNDNEXT)) {
        const RECT place = PlaceOf(one);
        if (place.top < top) continue;
        SetWindowPos(one, nullptr, place.left, place.top - row.bottom, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    RECT whole = {};
    GetWindowRect(window, &whole);
    SetWindowPos(window, nullptr, whole.left, whole.top + row.bottom / 2, whole.right - whole.left,
                 whole.bottom - whole.top - row.bottom, SWP_NOZORDER | SWP_NOACTIVATE);
}

void RemoveWhatDoesNotApply(HWND window, const PromptFields& fields) {
    constexpr int kStoreRow = 14, kWarningRow = 22;
    if (fields.isSecured.value_or(true)) RemoveRow(window, CONTROL_OPEN_CONNECTION, kWarningRow);
    if (!fields.offersStoring) RemoveRow(window, CONTROL_STORE, kStoreRow);
}

void Fill(HWND window, const PromptFields& fields) {
    SetWindowTextW(window, PromptText(IDS_CREDENTIALS_TITLE).c_str());
    for (const LabelledControl& label : kLabels) {
        SetDlgItemTextW(window, label.control, PromptText(label.text).c_str());
    }
    RemoveWhatDoesNotApply(window, fields);
    CheckDlgButton(window, CONTROL_STORE, fields.isToBeStored ? BST_CHECKED : BST_UNCHECKED);
    SetDlgItemTextW(window, CONTROL_INSTRUCTION,
                    PromptText(InstructionFor(fields.failure)).c_str());
    SetDlgItemTextW(window, CONTROL_SERVER, fields.serverName.c_str());
    FillField(window, CONTROL_USER, fields.userName);
    FillField(window, CONTROL_PASSWORD, fields.password.Plain());
    // What the user did not type here is not shown to whoever sits here now.
    EnableWindow(GetDlgItem(window, CONTROL_SHOW_PASSWORD), fields.password.Plain().empty());
    AddHint(window, CONTROL_SERVER, fields.serverName);
    ShowNameForm(window, fields.userNameExample);
    ShowCapsLock(window);
    SetTimer(window, kCapsLockTimer, kCapsLockMilliseconds, nullptr);
    StartIn(window, FieldToStartIn(fields));
}

// Overwrites what the password's field holds, and then empties it: the control keeps its memory.
void WipeField(HWND window) {
    const HWND field = GetDlgItem(window, CONTROL_PASSWORD);
    const auto length = static_cast<std::size_t>(GetWindowTextLengthW(field));
    SetWindowTextW(field, std::wstring(length, L'*').c_str());
    SetWindowTextW(field, L"");
}

// Returns the first field with a text that cannot be used, or 0.
int UnusableField(const PromptFields& fields) {
    if (!fields.onlyAnsi) return 0;
    if (!ExactAnsiFromWide(fields.userName)) return CONTROL_USER;
    std::optional<std::string> password = ExactAnsiFromWide(fields.password.Plain());
    if (!password) return CONTROL_PASSWORD;
    Wipe(*password);
    return 0;
}

// Explains in place what is wrong and has the user correct it.
void Refuse(HWND window, int control) {
    SetDlgItemTextW(window, CONTROL_INSTRUCTION, PromptText(IDS_CREDENTIALS_CHARACTERS).c_str());
    MessageBeep(MB_ICONERROR);
    StartIn(window, control);
}

void Confirm(HWND window, PromptFields& fields) {
    PromptFields typed = fields;
    typed.userName = TextOf(GetDlgItem(window, CONTROL_USER));
    typed.password = TextOf(GetDlgItem(window, CONTROL_PASSWORD));
    typed.isToBeStored = IsDlgButtonChecked(window, CONTROL_STORE) == BST_CHECKED;
    if (const int control = UnusableField(typed)) return Refuse(window, control);
    fields = std::move(typed);
    EndDialog(window, IDOK);
}

// One open dialog.
struct OpenPrompt {
    PromptFields& fields;
    std::optional<DialogLook> look = {};  // once all controls have their places
};

bool HandleCommand(HWND window, WPARAM first, PromptFields& fields) {
    const int control = LOWORD(first);
    if (control == CONTROL_SHOW_PASSWORD) ShowOrMaskPassword(window);
    if (control == CONTROL_PASSWORD && HIWORD(first) == EN_CHANGE) PasswordEdited(window);
    if (control == IDOK) Confirm(window, fields);
    if (control == IDCANCEL) EndDialog(window, IDCANCEL);
    return control == IDOK || control == IDCANCEL;
}

// No exception may cross the system's own frames.
INT_PTR CALLBACK HandleMessage(HWND window, UINT message, WPARAM first, LPARAM second) noexcept
    try {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, second);
        auto& prompt = *reinterpret_cast<OpenPrompt*>(second);
        Fill(window, prompt.fields);
        prompt.look.emplace(window);
        return FALSE;  // the focus is set
    }
    if (message == WM_DESTROY) WipeField(window);
    if (message == WM_TIMER) ShowCapsLock(window);
    auto* const prompt = reinterpret_cast<OpenPrompt*>(GetWindowLongPtrW(window, DWLP_USER));
    if (prompt == nullptr) return FALSE;
    if (message == WM_COMMAND) return HandleCommand(window, first, prompt->fields);
    return prompt->look ? prompt->look->HandleMessage(message, first, second).value_or(FALSE)
                        : FALSE;
} catch (...) {
    EndDialog(window, -1);
    return TRUE;
}

}  // namespace

PromptOutcome ShowPromptWindow(HWND owner, PromptFields& fields) {
    const DialogTemplate dialog = LoadDialogTemplate(OwnModule(), DIALOG_PROMPT);
    if (dialog.empty()) return PromptOutcome::kNotShown;
    OpenPrompt prompt{fields};
    const INT_PTR result =
        DialogBoxIndirectParamW(OwnModule(), reinterpret_cast<const DLGTEMPLATE*>(dialog.data()),
                                owner, HandleMessage, reinterpret_cast<LPARAM>(&prompt));
    if (result == IDOK) return PromptOutcome::kConfirmed;
    // Zero: the window was closed with its owner.
    return result == -1 ? PromptOutcome::kNotShown : PromptOutcome::kCancelled;
}

}  // namespace depot
