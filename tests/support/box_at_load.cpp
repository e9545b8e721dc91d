#include "support/box_at_load.h"

#include <utility>

namespace depot::test {
namespace {

constexpr int kTextControl = 0xFFFF;
constexpr int kIconControl = 1088;
constexpr DWORD kPauseMilliseconds = 5;

// Returns the visible box of this process with that caption, or null.
HWND FindBox(const std::string& caption) {
    const HWND window = FindWindowA("#32770", caption.c_str());
    DWORD process = 0;
    if (window == nullptr || !IsWindowVisible(window)) return nullptr;
    GetWindowThreadProcessId(window, &process);
    return process == GetCurrentProcessId() ? window : nullptr;
}

SeenBox Describe(HWND window, HICON hand) {
    SeenBox box;
    char text[1024] = {};
    GetDlgItemTextA(window, kTextControl, text, sizeof(text));
    box.text = text;
    const auto icon = SendDlgItemMessageA(window, kIconControl, STM_GETICON, 0, 0);
    box.hasHandIcon = icon == reinterpret_cast<LRESULT>(hand);
    box.isTopmost = (GetWindowLongPtrA(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
    box.isForeground = GetForegroundWindow() == window;
    box.hasOwner = GetWindow(window, GW_OWNER) != nullptr;
    return box;
}

}  // namespace

BoxWatcher::BoxWatcher(std::string caption)
    : caption_(std::move(caption)), thread_([this] { Watch(); }) {
    while (!running_) Sleep(1);
}

BoxWatcher::~BoxWatcher() {
    Finish();
}

std::optional<SeenBox> BoxWatcher::Finish() {
    finished_ = true;
    if (thread_.joinable()) thread_.join();
    return last_;
}

void BoxWatcher::Watch() {
    // Neither connecting to the desktop nor finding an icon is possible while another thread is
    // loading a library.
    GetDesktopWindow();
    handIcon_ = LoadIconA(nullptr, IDI_HAND);
    running_ = true;
    while (!finished_) {
        const HWND window = FindBox(caption_);
        if (window != nullptr) Answer(window);
        Sleep(kPauseMilliseconds);
    }
}

void BoxWatcher::Answer(HWND window) {
    last_ = Describe(window, handIcon_);
    ++count_;
    PostMessageA(window, WM_COMMAND, IDOK, 0);
    for (int wait = 0; wait < 1000 && IsWindow(window); ++wait) Sleep(kPauseMilliseconds);
}

}  // namespace depot::test
