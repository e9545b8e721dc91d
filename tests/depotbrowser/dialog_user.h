// A person at the keyboard in front of the credentials dialog.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "depotbrowser/prompt_ids.h"
#include "platform/handles.h"
#include "platform/win32.h"

namespace depot::test {

// What the dialogs return of the user's answer.
inline constexpr LONG kConfirmed = 1;
inline constexpr LONG kNotConfirmed = 0;

// Waits until the condition holds, for five seconds at most. Returns whether it holds.
bool Eventually(const std::function<bool()>& condition);

// The open dialog, as seen and used from another thread.
class OpenDialog {
public:
    explicit OpenDialog(HWND window) : window_(window) {}

    HWND Window() const { return window_; }
    HWND Control(int control) const { return GetDlgItem(window_, control); }

    // Returns the text of a control, or of the window itself for 0.
    std::wstring Text(int control) const;

    // The number of the control that has the keyboard focus; 0 when none has.
    int FocusedControl() const;
    bool WaitForFocus(int control) const;
    bool WaitForText(int control, const std::wstring& text) const;

    // Clicks a button.
    void Click(int control) const { PostMessageW(Control(control), BM_CLICK, 0, 0); }

    // Presses and releases a key, with the other held down when it is not 0.
    void Press(WORD key, WORD held = 0) const;

    // Types a text, character by character, into whatever has the focus.
    void Type(const std::wstring& text) const;

private:
    HWND window_;
};

// Waits on a thread of its own for the dialog that shows this server, or another one, then acts.
// Made before the call that shows the dialog, removed after it. A dialog that the script leaves
// open is a failure and is cancelled; when that does not help either, the program ends: no test
// ever hangs.
class DialogUser {
public:
    using Script = std::function<void(const OpenDialog& dialog)>;

    // Distinguishes a dialog from all other windows of the program.
    using Recognises = std::function<bool(HWND window)>;

    DialogUser(std::wstring server, Script script);
    DialogUser(Recognises recognises, Script script);
    ~DialogUser();
    DialogUser(const DialogUser&) = delete;
    DialogUser& operator=(const DialogUser&) = delete;

private:
    void Run();
    void EndDialogOf(HWND window) const;

    Recognises recognises_;
    Script script_;
    UniqueHandle running_;
    UniqueHandle callReturned_;
    std::thread thread_;
};

}  // namespace depot::test
