// A menu that opens where the user asks for it.
#pragma once

#include <memory>
#include <string>
#include <type_traits>

#include "platform/win32.h"

namespace depot {

struct MenuDestroyer {
    void operator()(HMENU menu) const { DestroyMenu(menu); }
};
using UniqueMenu = std::unique_ptr<std::remove_pointer_t<HMENU>, MenuDestroyer>;

class ContextMenu {
public:
    ContextMenu() : menu_(CreatePopupMenu()) {}

    void Add(int command, const std::wstring& text, bool isUsable);
    // The same for what a double click does.
    void AddDefault(int command, const std::wstring& text);
    void AddLine();

    // Shows the menu and waits. Returns the command that was chosen, or 0.
    int Show(HWND owner, POINT place) const;

private:
    UniqueMenu menu_;
};

}  // namespace depot
