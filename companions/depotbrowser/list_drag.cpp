#include "depotbrowser/list_drag.h"

#include <utility>

#include "depotbrowser/drag_rules.h"
// After the Windows headers.
#include <windowsx.h>

namespace depot {
namespace {

// The numbers of the pointers that the system shows while something is dragged, in its library.
constexpr int kRefusedPointer = 1;
constexpr int kMovePointer = 2;
constexpr int kCopyPointer = 3;

const LPCWSTR kArrow = MAKEINTRESOURCEW(32512);
const LPCWSTR kCrossedOut = MAKEINTRESOURCEW(32648);

void ShowPointer(int number) {
    HCURSOR pointer = LoadCursorW(GetModuleHandleW(L"ole32.dll"), MAKEINTRESOURCEW(number));
    if (pointer == nullptr) {
        pointer = LoadCursorW(nullptr, number == kRefusedPointer ? kCrossedOut : kArrow);
    }
    SetCursor(pointer);
}

}  // namespace

void ListDrag::Begin() {
    if (entries_ || !drops_.CanChange()) return;
    Entries entries = {*parts_.navigator.Current(), {}, {}};
    for (const BrowseEntry* entry : parts_.list.Selected()) {
        if (entry->elsewhere) return;
        entries.paths.push_back(parts_.navigator.PathOf(*entry));
        if (entry->isFolder) entries.folderNames.push_back(entry->name);
    }
    if (entries.paths.empty()) return;
    SetCapture(parts_.dialog);
    entries_ = std::move(entries);
}

bool ListDrag::HandleMessage(UINT message, WPARAM first, LPARAM second) {
    if (!entries_) return false;
    switch (message) {
        case WM_MOUSEMOVE:
            Hover(OnScreen(second), (first & MK_CONTROL) != 0);
            return true;
        case WM_LBUTTONUP:
            DropAt(OnScreen(second), (first & MK_CONTROL) != 0);
            return true;
        case WM_RBUTTONDOWN:
        case WM_MBUTTONDOWN:
        case WM_CAPTURECHANGED:
            End();
            return true;
        default:
            return false;
    }
}

// No other key does anything while something is dragged.
bool ListDrag::HandleKey(const MSG& message) {
    if (!entries_ || message.message < WM_KEYFIRST || message.message > WM_KEYLAST) return false;
    if (message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE) {
        End();
    } else if (message.wParam == VK_CONTROL) {
        POINT place = {};
        GetCursorPos(&place);
        Hover(place, message.message == WM_KEYDOWN);
    }
    return true;
}

std::optional<FolderRef> ListDrag::TargetAt(POINT screen) const {
    const std::optional<FolderRef> folder = site_.FolderAt(screen);
    if (!folder || !drops_.CanChange()) return std::nullopt;
    const bool takes =
        folder->depot != entries_->from.depot ||
        CanTakeEntries(folder->relative, entries_->from.relative, entries_->folderNames);
    return takes ? folder : std::nullopt;
}

void ListDrag::Hover(POINT screen, bool copies) {
    const bool takes = TargetAt(screen).has_value();
    site_.Hover(screen, takes);
    const int pointer = copies ? kCopyPointer : kMovePointer;
    ShowPointer(takes ? pointer : kRefusedPointer);
}

void ListDrag::DropAt(POINT screen, bool copies) {
    const std::optional<FolderRef> target = TargetAt(screen);
    const Entries entries = *entries_;
    End();
    if (target) drops_.Transfer(entries.paths, entries.from, *target, !copies);
}

// Giving up the mouse is reported like the loss of it.
void ListDrag::End() {
    entries_.reset();
    site_.Leave();
    if (GetCapture() == parts_.dialog) ReleaseCapture();
}

POINT ListDrag::OnScreen(LPARAM place) const {
    POINT point = {GET_X_LPARAM(place), GET_Y_LPARAM(place)};
    ClientToScreen(parts_.dialog, &point);
    return point;
}

}  // namespace depot
