#include "support/box_log.h"

#include <algorithm>

namespace depot::test {
namespace {

constexpr int kTextControl = 0xFFFF;
constexpr int kIconControl = 1088;

BOOL CALLBACK Collect(HWND window, LPARAM found) {
    char className[16] = {};
    GetClassNameA(window, className, sizeof(className));
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    // A dialog with fields is no message box.
    if (process == GetCurrentProcessId() && IsWindowVisible(window) &&
        std::string(className) == "#32770" &&
        FindWindowExA(window, nullptr, "Edit", nullptr) == nullptr) {
        reinterpret_cast<std::vector<HWND>*>(found)->push_back(window);
    }
    return TRUE;
}

BOOL CALLBACK CountButton(HWND window, LPARAM count) {
    char className[16] = {};
    GetClassNameA(window, className, sizeof(className));
    if (std::string(className) == "Button") ++*reinterpret_cast<int*>(count);
    return TRUE;
}

ShownBox Describe(HWND window, HICON errorIcon) {
    char caption[256] = {};
    char text[4096] = {};
    GetWindowTextA(window, caption, sizeof(caption));
    GetDlgItemTextA(window, kTextControl, text, sizeof(text));
    ShownBox box{.caption = caption, .text = text};
    const auto icon =
        reinterpret_cast<HICON>(SendDlgItemMessageA(window, kIconControl, STM_GETICON, 0, 0));
    box.hasErrorIcon = icon != nullptr && icon == errorIcon;
    box.isTopmost = (GetWindowLongPtrA(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
    box.isForeground = GetForegroundWindow() == window;
    box.owner = GetWindow(window, GW_OWNER);
    EnumChildWindows(window, &CountButton, reinterpret_cast<LPARAM>(&box.buttons));
    return box;
}

}  // namespace

BoxLog::BoxLog() : thread_([this] { Watch(); }) {
    // A box that appears before the watching has begun would be waited for in vain.
    while (!running_) Sleep(1);
}

BoxLog::~BoxLog() {
    ending_ = true;
    thread_.join();
}

void BoxLog::Watch() {
    // Neither connecting to the desktop nor finding an icon is possible while another thread is
    // loading a library.
    GetDesktopWindow();
    const HICON errorIcon = LoadIconA(nullptr, IDI_ERROR);
    running_ = true;
    std::vector<HWND> confirmed;
    while (!ending_) {
        std::vector<HWND> shown;
        EnumWindows(&Collect, reinterpret_cast<LPARAM>(&shown));
        for (const HWND box : shown) {
            if (std::find(confirmed.begin(), confirmed.end(), box) != confirmed.end()) continue;
            Confirm(box, errorIcon);
        }
        confirmed = shown;
        Sleep(2);
    }
}

void BoxLog::Confirm(HWND box, HICON errorIcon) {
    const ShownBox shown = Describe(box, errorIcon);
    {
        const std::lock_guard lock(mutex_);
        boxes_.push_back(shown);
    }
    PostMessageA(box, WM_COMMAND, IDOK, 0);
}

std::vector<ShownBox> BoxLog::Boxes() const {
    const std::lock_guard lock(mutex_);
    return boxes_;
}

std::vector<std::string> BoxLog::Texts() const {
    std::vector<std::string> texts;
    for (const ShownBox& box : Boxes()) texts.push_back(box.text);
    return texts;
}

}  // namespace depot::test
