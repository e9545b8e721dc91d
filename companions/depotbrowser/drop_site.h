// The folders of the dialog onto which something can be dragged.
#pragma once

#include <optional>

#include "depotbrowser/file_list.h"
#include "depotbrowser/folder_navigator.h"
#include "depotbrowser/folder_tree.h"

namespace depot {

// Finds the folder at a place of the screen, marks it, and scrolls list and tree while something is
// dragged along their edges. Borrows the parts of the window.
class DropSite {
public:
    DropSite(HWND dialog, FileList& list, FolderTree& tree, const FolderNavigator& navigator)
        : dialog_(dialog), list_(list), tree_(tree), navigator_(navigator) {}

    // The folder of the row or of the branch there; the shown folder where the list has no folder.
    // Nothing outside of both.
    std::optional<FolderRef> FolderAt(POINT screen) const;

    // Something is dragged there: the folder is marked if it takes it. Scrolls until Leave when the
    // place is at an edge. The dialog hands on its timer of this number.
    void Hover(POINT screen, bool takes);
    void Leave();
    static constexpr UINT_PTR kScrollTimer = 4;
    void TimerElapsed();

private:
    void Mark(POINT screen) const;
    void Unmark() const;
    void ScrollAt(POINT screen) const;
    void ScrollList(int lines) const;

    HWND dialog_;
    FileList& list_;
    FolderTree& tree_;
    const FolderNavigator& navigator_;
    POINT place_ = {};
    bool takes_ = false;
    bool hovers_ = false;
};

}  // namespace depot
