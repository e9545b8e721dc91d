#include "support/box_watcher.h"

#include <atomic>
#include <thread>

namespace depot::test {
namespace {

constexpr char kDialogClass[] = "#32770";
constexpr int kTextControl = 0xFFFF;
constexpr int kIconControl = 1088;
constexpr int kPollMilliseconds = 10;
constexpr int kPolls = 1000;

BOOL CALLBACK CountButton(HWND window, LPARAM count) {
    char name[16] = {};
    GetClassNameA(window, name, sizeof(name));
    if (std::string(name) == "Button") ++*reinterpret_cast<int*>(count);
    return TRUE;
}

// Returns the visible box of this process with that caption, or with any caption for a null one.
HWND FindBox(const char* caption) {
    HWND window = nullptr;
    while ((window = FindWindowExA(nullptr, window, kDialogClass, caption)) != nullptr) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        if (process == GetCurrentProcessId() && IsWindowVisible(window)) break;
    }
    return window;
}

void Dismiss(HWND window) {
    PostMessageA(window, WM_COMMAND, IDOK, 0);
}

BoxContents Read(HWND window) {
    BoxContents contents;
    contents.appeared = true;
    char text[4096] = {};
    GetDlgItemTextA(window, kTextControl, text, sizeof(text));
    contents.text = text;
    contents.icon =
        reinterpret_cast<HICON>(SendDlgItemMessageA(window, kIconControl, STM_GETICON, 0, 0));
    contents.owner = GetWindow(window, GW_OWNER);
    EnumChildWindows(window, CountButton, reinterpret_cast<LPARAM>(&contents.buttons));
    return contents;
}

void Watch(const std::string& caption, const std::atomic<bool>& done, BoxContents& contents) {
    for (int poll = 0; !done; ++poll, Sleep(kPollMilliseconds)) {
        const bool patient = poll < kPolls;
        const HWND window = FindBox(patient ? caption.c_str() : nullptr);
        if (window == nullptr) continue;
        if (patient && !contents.appeared) contents = Read(window);
        Dismiss(window);
    }
}

}  // namespace

BoxContents WatchBox(const std::string& caption, const std::function<void()>& call) {
    BoxContents contents;
    std::atomic<bool> done = false;
    std::thread watcher([&] { Watch(caption, done, contents); });
    call();
    done = true;
    watcher.join();
    return contents;
}

}  // namespace depot::test
