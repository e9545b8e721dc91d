// Dragging entries of the list with the mouse.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "depotbrowser/drop_site.h"
#include "depotbrowser/file_drops.h"

namespace depot {

// Moves the selected entries to the folder on which the button is released, and copies them with
// the Ctrl key held down. Escape, another button or whatever else takes the mouse away ends it.
// Needs no OLE: it works on every thread that shows the dialog. Borrows the parts of the window.
class ListDrag {
public:
    ListDrag(const BrowseParts& parts, DropSite& site, FileDrops& drops)
        : parts_(parts), site_(site), drops_(drops) {}

    // The user has begun to drag with the left button. Nothing is dragged that cannot be changed:
    // what was found in other folders, or anything where changes are not offered.
    void Begin();

    // Handle what reaches the dialog while something is dragged; false for what is not of interest.
    bool HandleMessage(UINT message, WPARAM first, LPARAM second);
    bool HandleKey(const MSG& message);

private:
    // What is dragged.
    struct Entries {
        FolderRef from;
        std::vector<std::string> paths;
        std::vector<std::string> folderNames;
    };

    std::optional<FolderRef> TargetAt(POINT screen) const;
    void Hover(POINT screen, bool copies);
    void DropAt(POINT screen, bool copies);
    void End();
    POINT OnScreen(LPARAM place) const;

    const BrowseParts parts_;
    DropSite& site_;
    FileDrops& drops_;
    std::optional<Entries> entries_;  // nothing while nothing is dragged
};

}  // namespace depot
