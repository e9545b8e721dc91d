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
    GetDesktopWindow();
    running_ = true;
    std::vector<HWND> confirmed;
    while (!ending_) {
        std::vector<HWND> shown;
        EnumWindows(&Collect, reinterpret_cast<LPARAM>(&shown));
        for (const HWND box : shown) {
            if (std::find(confirmed.begin(), confirmed.end(), box) == confirmed.end()) Confirm(box);
        }
        confirmed = shown;
        Sleep(2);
    }
}

void BoxLog::Confirm(HWND box) {
    char caption[256] = {};
    char text[2048] = {};
    GetWindowTextA(box, caption, sizeof(caption));
    GetDlgItemTextA(box, kTextControl, text, sizeof(text));
    const auto icon =
        reinterpret_cast<HICON>(SendDlgItemMessageA(box, kIconControl, STM_GETICON, 0, 0));
    {
        const std::lock_guard lock(mutex_);
        boxes_.push_back({caption, text, icon != nullptr && icon == LoadIconA(nullptr, IDI_ERROR),
                          GetWindow(box, GW_OWNER)});
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
