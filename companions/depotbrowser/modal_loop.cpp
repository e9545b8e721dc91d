#include "depotbrowser/modal_loop.h"

namespace depot {
namespace {

// Keeps the owner from being used, unless it could not be used before.
class OwnerDisabled {
public:
    explicit OwnerDisabled(HWND owner)
        : owner_(owner != nullptr && IsWindowEnabled(owner) ? owner : nullptr) {
        if (owner_ != nullptr) EnableWindow(owner_, FALSE);
    }
    ~OwnerDisabled() {
        if (owner_ != nullptr) EnableWindow(owner_, TRUE);
    }
    OwnerDisabled(const OwnerDisabled&) = delete;
    OwnerDisabled& operator=(const OwnerDisabled&) = delete;

private:
    HWND owner_;
};

}  // namespace

void RunModally(HWND window, HWND owner, const std::function<bool()>& ended,
                const std::function<bool(const MSG& message)>& translate) {
    const OwnerDisabled disabled(owner);
    ShowWindow(window, SW_SHOW);
    MSG message = {};
    while (!ended() && IsWindow(window)) {
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
        if (got == 0) PostQuitMessage(static_cast<int>(message.wParam));
        if (got <= 0) return;
        if (translate(message) || IsDialogMessageW(window, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace depot
