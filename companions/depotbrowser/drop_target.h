// Files that are dropped onto a window from the desktop or from another program.
#pragma once

#include <functional>
#include <memory>

#include "depotbrowser/dropped_files.h"
#include "platform/win32.h"

namespace depot {

// What a window does with files that are dragged over it. Called on its thread.
struct DropEvents {
    // Returns whether files would be taken at this place of the screen.
    std::function<bool(POINT screen)> hover;
    std::function<void()> leave;
    std::function<void(const DroppedPaths& paths, POINT screen)> drop;
};

// Takes files for a window from Begin to End, or to its own end. On a thread whose apartment OLE
// cannot work in nothing is taken. Files are only ever copied: the other program keeps its own.
class DropRegistration {
public:
    DropRegistration(HWND window, DropEvents events);
    ~DropRegistration();
    // Asks for a call of Begin once the window has been drawn, which OLE would delay. The window
    // hands on its timer of this number.
    static constexpr UINT_PTR kBeginTimer = 5;
    void Begin();

    DropRegistration(const DropRegistration&) = delete;
    DropRegistration& operator=(const DropRegistration&) = delete;

    // Takes nothing any more. REQUIRES: the window still exists.
    void End();

private:
    struct Registered;
    const HWND window_;
    const DropEvents events_;
    std::unique_ptr<Registered> registered_;  // null for none
};

}  // namespace depot
