// The tree of depots and their folders.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "depotbrowser/browse_icons.h"
#include "depotbrowser/depot_place.h"
#include "depotbrowser/tree_names.h"

namespace depot {

// Borrows the dialog's tree control. Folders become known one by one: those below a folder when the
// user opens it.
class FolderTree {
public:
    struct Events {
        std::function<void(const FolderRef& folder)> selected;
        // Asks for the folders below one that was opened; SetFolders answers.
        std::function<void(const FolderRef& folder)> opened;
    };

    FolderTree(HWND control, BrowseIcons& icons, Events events);

    // Fills the tree; without `showFolders` it has the depots alone.
    void Fill(const std::vector<ShownDepot>& depots, bool showFolders);

    // Selects a folder without reporting it. Folders on the way that are not known yet are added.
    void Select(const FolderRef& folder);

    // Sets which folders one holds. Those that stay keep what is known of them. `known` is false
    // when they could not be found out: the folder then can be opened again.
    // REQUIRES: the names are in the order of ComesBefore.
    void SetFolders(const FolderRef& folder, const std::vector<TreeName>& names, bool known);

    // Returns a folder's names as the user sees them, from the depot's name down.
    std::wstring ShownPath(const FolderRef& folder) const;
    std::vector<std::wstring> ShownNames(const FolderRef& folder) const;

    // Shows the images in their present size.
    void ShowIcons() const;

    // Selects what is at this place of the screen, as the left button does; -1 stands for none.
    void SelectAtMouse(LPARAM place) const;

    // Returns the folder at a place of the control; nothing where there is none.
    std::optional<FolderRef> FolderAt(POINT place) const;
    // Marks the folder at a place as the one on which something would be dropped, and no other.
    void Mark(std::optional<POINT> place) const;
    // Whether the tree shows the folder, or would if those above it were open.
    bool IsKnown(const FolderRef& folder) const { return FindFolder(folder) != nullptr; }

    // Handles what the control reports to the dialog; nothing when it is not of interest.
    std::optional<LRESULT> HandleNotify(const NMHDR& header);

    HWND Control() const { return control_; }

private:
    struct Node {
        FolderRef folder;
        std::wstring foldedName;
        bool loaded = false;
        std::map<std::wstring, HTREEITEM> children = {};  // by their folded names
    };
    // Where something is inserted.
    struct Branch {
        HTREEITEM parent;
        HTREEITEM after;  // or one of the control's own places
    };

    HTREEITEM Insert(Branch branch, Node node, const std::wstring& name, int image);
    HTREEITEM InsertFolder(Branch branch, const TreeName& wanted);
    HTREEITEM InsertAmong(HTREEITEM parent, const TreeName& wanted);
    void RemoveOthers(HTREEITEM parent, const std::vector<TreeName>& wanted);
    void InsertMissing(HTREEITEM parent, const std::vector<TreeName>& wanted);
    HTREEITEM ItemAt(POINT place) const;
    HTREEITEM FindDepot(const DepotRef& depot) const;
    HTREEITEM FindChild(HTREEITEM parent, const std::string& name) const;
    HTREEITEM FindFolder(const FolderRef& folder) const;
    HTREEITEM MakeFolder(const FolderRef& folder);
    void Remove(HTREEITEM item);
    void ShowsButton(HTREEITEM item, bool shows);
    void Open(const NMTREEVIEWW& change);

    HWND control_;
    BrowseIcons& icons_;
    Events events_;
    std::unordered_map<HTREEITEM, Node> nodes_;
    std::vector<HTREEITEM> roots_;  // the depots
    std::vector<ShownDepot> depots_;
    bool showFolders_ = true;
    bool silent_ = false;  // while the tree changes by itself
};

}  // namespace depot
