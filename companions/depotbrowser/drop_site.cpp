#include "depotbrowser/drop_site.h"

#include "depotbrowser/dialog_template.h"
#include "depotbrowser/drag_rules.h"

namespace depot {
namespace {

constexpr UINT kScrollMilliseconds = 60;
constexpr int kEdge = 10;  // in dialog units

POINT InControl(HWND control, POINT screen) {
    ScreenToClient(control, &screen);
    return screen;
}

}  // namespace

std::optional<FolderRef> DropSite::FolderAt(POINT screen) const {
    const HWND over = WindowFromPoint(screen);
    if (over == tree_.Control()) return tree_.FolderAt(InControl(over, screen));
    if (over != list_.Control() || !navigator_.IsLoaded()) return std::nullopt;
    const BrowseEntry* const entry = list_.EntryAt(list_.RowAt(InControl(over, screen)));
    if (entry == nullptr || !entry->isFolder) return navigator_.Current();
    const FolderRef above = navigator_.FolderOf(*entry);
    return FolderRef{above.depot, above.relative + entry->name + "\\"};
}

void DropSite::Hover(POINT screen, bool takes) {
    if (!hovers_) SetTimer(dialog_, kScrollTimer, kScrollMilliseconds, nullptr);
    hovers_ = true;
    place_ = screen;
    takes_ = takes;
    if (takes) {
        Mark(screen);
    } else {
        Unmark();
    }
}

void DropSite::Leave() {
    if (!hovers_) return;
    hovers_ = false;
    KillTimer(dialog_, kScrollTimer);
    Unmark();
}

void DropSite::TimerElapsed() {
    if (!hovers_) return;
    ScrollAt(place_);
    if (takes_) Mark(place_);
}

void DropSite::Mark(POINT screen) const {
    const HWND over = WindowFromPoint(screen);
    const bool isList = over == list_.Control();
    const int row = isList ? list_.RowAt(InControl(over, screen)) : -1;
    const BrowseEntry* const entry = list_.EntryAt(row);
    list_.Mark(entry != nullptr && entry->isFolder ? row : -1);
    tree_.Mark(over == tree_.Control() ? std::optional(InControl(over, screen)) : std::nullopt);
}

void DropSite::Unmark() const {
    list_.Mark(-1);
    tree_.Mark(std::nullopt);
}

void DropSite::ScrollAt(POINT screen) const {
    const HWND over = WindowFromPoint(screen);
    if (over != list_.Control() && over != tree_.Control()) return;
    RECT area = {};
    GetClientRect(over, &area);
    // The header of the list stands within it.
    const HWND header = over == list_.Control() ? ListView_GetHeader(over) : nullptr;
    RECT above = {};
    if (header != nullptr) GetClientRect(header, &above);
    const int lines = ScrollStep(static_cast<int>(InControl(over, screen).y - above.bottom),
                                 static_cast<int>(area.bottom - above.bottom),
                                 static_cast<int>(PixelsOf(over, 0, kEdge).cy));
    if (lines == 0) return;
    if (over == list_.Control()) return ScrollList(lines);
    SendMessageW(over, WM_VSCROLL, lines < 0 ? SB_LINEUP : SB_LINEDOWN, 0);
}

void DropSite::ScrollList(int lines) const {
    RECT row = {};
    const HWND list = list_.Control();
    if (ListView_GetItemRect(list, ListView_GetTopIndex(list), &row, LVIR_BOUNDS)) {
        ListView_Scroll(list, 0, lines * static_cast<int>(row.bottom - row.top));
    }
}

}  // namespace depot
