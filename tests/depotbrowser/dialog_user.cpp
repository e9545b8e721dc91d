#include "depotbrowser/dialog_user.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace depot::test {
namespace {

constexpr DWORD kPatience = 5000;
constexpr DWORD kPollInterval = 5;

// Control texts of another thread's window come only through its message loop.
std::wstring WindowText(HWND window) {
    const auto length = static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
    std::wstring text(length + 1, L'\0');
    const LRESULT copied =
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(copied));
    return text;
}

struct Search {
    const DialogUser::Recognises& recognises;
    HWND found = nullptr;
};

BOOL CALLBACK Examine(HWND window, LPARAM parameter) {
    auto* const search = reinterpret_cast<Search*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId() || !IsWindowVisible(window)) return TRUE;
    if (!search->recognises(window)) return TRUE;
    search->found = window;
    return FALSE;
}

HWND FindDialog(const DialogUser::Recognises& recognises) {
    Search search = {recognises};
    EnumWindows(Examine, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

INPUT KeyInput(WORD key, WORD scan, DWORD flags) {
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = scan;
    input.ki.dwFlags = flags;
    return input;
}

void Send(std::vector<INPUT> inputs) {
    EXPECT_EQ(inputs.size(),
              SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT)));
}

}  // namespace

bool Eventually(const std::function<bool()>& condition) {
    for (DWORD waited = 0; waited < kPatience; waited += kPollInterval) {
        if (condition()) return true;
        Sleep(kPollInterval);
    }
    return condition();
}

std::wstring OpenDialog::Text(int control) const {
    return WindowText(control == 0 ? window_ : Control(control));
}

int OpenDialog::FocusedControl() const {
    GUITHREADINFO info = {};
    info.cbSize = sizeof(info);
    const DWORD thread = GetWindowThreadProcessId(window_, nullptr);
    if (!GetGUIThreadInfo(thread, &info) || info.hwndFocus == nullptr) return 0;
    return GetDlgCtrlID(info.hwndFocus);
}

bool OpenDialog::WaitForFocus(int control) const {
    const bool focused = Eventually([&] { return FocusedControl() == control; });
    EXPECT_TRUE(focused) << "focus on " << FocusedControl() << ", expected " << control;
    return focused;
}

bool OpenDialog::WaitForText(int control, const std::wstring& text) const {
    const bool typed = Eventually([&] { return Text(control) == text; });
    EXPECT_TRUE(typed) << "control " << control << " holds "
                       << testing::PrintToString(Text(control));
    return typed;
}

void OpenDialog::Press(WORD key, WORD held) const {
    std::vector<INPUT> inputs;
    if (held != 0) inputs.push_back(KeyInput(held, 0, 0));
    inputs.push_back(KeyInput(key, 0, 0));
    inputs.push_back(KeyInput(key, 0, KEYEVENTF_KEYUP));
    if (held != 0) inputs.push_back(KeyInput(held, 0, KEYEVENTF_KEYUP));
    Send(std::move(inputs));
}

void OpenDialog::Type(const std::wstring& text) const {
    std::vector<INPUT> inputs;
    for (const wchar_t character : text) {
        inputs.push_back(KeyInput(0, character, KEYEVENTF_UNICODE));
        inputs.push_back(KeyInput(0, character, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP));
    }
    Send(std::move(inputs));
}

DialogUser::DialogUser(std::wstring server, Script script)
    : DialogUser(
          [server = std::move(server)](HWND window) {
              const HWND shown = GetDlgItem(window, CONTROL_SERVER);
              return shown != nullptr && WindowText(shown) == server;
          },
          std::move(script)) {}

DialogUser::DialogUser(Recognises recognises, Script script)
    : recognises_(std::move(recognises)),
      script_(std::move(script)),
      running_(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      callReturned_(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      thread_([this] { Run(); }) {
    WaitForSingleObject(running_.get(), INFINITE);
}

DialogUser::~DialogUser() {
    SetEvent(callReturned_.get());
    thread_.join();
}

void DialogUser::Run() {
    GetDesktopWindow();
    SetEvent(running_.get());
    HWND window = nullptr;
    const bool found = Eventually([&] {
        window = FindDialog(recognises_);
        return window != nullptr && GetForegroundWindow() == window;
    });
    EXPECT_TRUE(found) << "no dialog in front";
    if (found) script_(OpenDialog(window));
    EndDialogOf(window);
}

void DialogUser::EndDialogOf(HWND window) const {
    if (WaitForSingleObject(callReturned_.get(), kPatience) == WAIT_OBJECT_0) return;
    ADD_FAILURE() << "the dialog is still open";
    if (window != nullptr) PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    if (WaitForSingleObject(callReturned_.get(), kPatience) == WAIT_OBJECT_0) return;
    std::fputs("The call that shows the dialog does not return.\n", stderr);
    TerminateProcess(GetCurrentProcess(), 98);
}

}  // namespace depot::test
