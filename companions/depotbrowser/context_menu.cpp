#include "depotbrowser/context_menu.h"

namespace depot {

void ContextMenu::Add(int command, const std::wstring& text, bool isUsable) {
    AppendMenuW(menu_.get(), MF_STRING | (isUsable ? MF_ENABLED : MF_GRAYED),
                static_cast<UINT_PTR>(command), text.c_str());
}

void ContextMenu::AddDefault(int command, const std::wstring& text) {
    Add(command, text, true);
    SetMenuDefaultItem(menu_.get(), static_cast<UINT>(command), FALSE);
}

void ContextMenu::AddLine() {
    AppendMenuW(menu_.get(), MF_SEPARATOR, 0, nullptr);
}

int ContextMenu::Show(HWND owner, POINT place) const {
    constexpr UINT kFlags = TPM_RETURNCMD | TPM_NONOTIFY | TPM_RIGHTBUTTON;
    return TrackPopupMenu(menu_.get(), kFlags, static_cast<int>(place.x), static_cast<int>(place.y),
                          0, owner, nullptr);
}

}  // namespace depot
