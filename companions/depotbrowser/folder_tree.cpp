#include "depotbrowser/folder_tree.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "depotbrowser/flag_scope.h"
#include "depotbrowser/name_rules.h"
#include "platform/not_copied.h"
#include "platform/paths.h"
#include "platform/wide_text.h"
// After the Windows headers.
#include <windowsx.h>

namespace depot {
namespace {

// Keeps a control from drawing itself while much of it changes.
class DrawingPaused : NotCopied {
public:
    explicit DrawingPaused(HWND control) : control_(control) {
        SendMessageW(control_, WM_SETREDRAW, FALSE, 0);
    }
    ~DrawingPaused() {
        SendMessageW(control_, WM_SETREDRAW, TRUE, 0);
        InvalidateRect(control_, nullptr, TRUE);
    }

private:
    HWND control_;
};

}  // namespace

FolderTree::FolderTree(HWND control, BrowseIcons& icons, Events events)
    : control_(control), icons_(icons), events_(std::move(events)) {
    ShowIcons();
}

void FolderTree::ShowIcons() const {
    TreeView_SetImageList(control_, icons_.List(), TVSIL_NORMAL);
    // A line has to have room for an image.
    int width = 0, height = 0;
    ImageList_GetIconSize(icons_.List(), &width, &height);
    if (TreeView_GetItemHeight(control_) < height) TreeView_SetItemHeight(control_, height + 2);
}

void FolderTree::Fill(const std::vector<ShownDepot>& depots, bool showFolders) {
    const FlagScope scope(silent_);
    depots_ = depots;
    showFolders_ = showFolders;
    for (const ShownDepot& depot : depots) {
        roots_.push_back(Insert({TVI_ROOT, TVI_LAST}, {{depot.ref, {}}, {}}, depot.name,
                                icons_.Depot(depot.icon)));
    }
}

HTREEITEM FolderTree::Insert(Branch branch, Node node, const std::wstring& name, int image) {
    std::wstring text = name;
    TVINSERTSTRUCTW insertion = {};
    insertion.hParent = branch.parent;
    insertion.hInsertAfter = branch.after;
    insertion.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_CHILDREN;
    insertion.item.pszText = text.data();
    insertion.item.iImage = insertion.item.iSelectedImage = image;
    // Every folder may have others until they are known.
    insertion.item.cChildren = showFolders_ ? 1 : 0;
    const auto item = reinterpret_cast<HTREEITEM>(
        SendMessageW(control_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insertion)));
    nodes_[item] = std::move(node);
    return item;
}

HTREEITEM FolderTree::InsertFolder(Branch branch, const TreeName& wanted) {
    Node& parent = nodes_.at(branch.parent);
    const FolderRef folder = {parent.folder.depot, parent.folder.relative + wanted.name + "\\"};
    const HTREEITEM item = Insert(branch, {folder, wanted.folded}, wanted.shown, icons_.Folder());
    nodes_.at(branch.parent).children[wanted.folded] = item;
    return item;
}

// For one folder alone: looks through all of its neighbours.
HTREEITEM FolderTree::InsertAmong(HTREEITEM parent, const TreeName& wanted) {
    HTREEITEM after = TVI_FIRST;
    for (HTREEITEM child = TreeView_GetChild(control_, parent); child != nullptr;
         child = TreeView_GetNextSibling(control_, child)) {
        const std::string name =
            NamePart(RemoveTrailingBackslash(nodes_.at(child).folder.relative));
        if (ComesBefore(wanted, TreeNameOf(name))) break;
        after = child;
    }
    return InsertFolder({parent, after}, wanted);
}

HTREEITEM FolderTree::FindDepot(const DepotRef& depot) const {
    const auto found = std::find_if(roots_.begin(), roots_.end(), [&](HTREEITEM item) {
        return nodes_.at(item).folder.depot == depot;
    });
    return found == roots_.end() ? nullptr : *found;
}

HTREEITEM FolderTree::FindChild(HTREEITEM parent, const std::string& name) const {
    const auto& children = nodes_.at(parent).children;
    const auto found = children.find(TreeNameOf(name).folded);
    return found == children.end() ? nullptr : found->second;
}

HTREEITEM FolderTree::FindFolder(const FolderRef& folder) const {
    HTREEITEM item = FindDepot(folder.depot);
    for (const std::string& name : FolderNames(folder.relative)) {
        if (item != nullptr) item = FindChild(item, name);
    }
    return item;
}

HTREEITEM FolderTree::MakeFolder(const FolderRef& folder) {
    HTREEITEM item = FindDepot(folder.depot);
    if (item == nullptr || !showFolders_) return item;
    for (const std::string& name : FolderNames(folder.relative)) {
        const HTREEITEM child = FindChild(item, name);
        item = child != nullptr ? child : InsertAmong(item, TreeNameOf(name));
    }
    return item;
}

void FolderTree::Select(const FolderRef& folder) {
    const FlagScope scope(silent_);
    const HTREEITEM item = MakeFolder(folder);
    if (item == nullptr) return;
    TreeView_SelectItem(control_, item);
    TreeView_EnsureVisible(control_, item);
}

void FolderTree::SetFolders(const FolderRef& folder, const std::vector<TreeName>& names,
                            bool known) {
    const FlagScope scope(silent_);
    const HTREEITEM item = FindFolder(folder);
    if (item == nullptr || !showFolders_) return;
    const bool firstTime = known && !nodes_.at(item).loaded;
    nodes_.at(item).loaded = known;
    {
        const DrawingPaused paused(control_);
        RemoveOthers(item, names);
        InsertMissing(item, names);
    }
    ShowsButton(item, !names.empty() || !known);
    // A depot that is shown shows its folders, too.
    const bool isShownDepot = folder.relative.empty() && item == TreeView_GetSelection(control_);
    if (firstTime && isShownDepot) TreeView_Expand(control_, item, TVE_EXPAND);
}

void FolderTree::RemoveOthers(HTREEITEM parent, const std::vector<TreeName>& wanted) {
    std::set<std::wstring_view> stay;
    for (const TreeName& folder : wanted) stay.insert(folder.folded);
    const auto children = nodes_.at(parent).children;
    for (const auto& [name, child] : children) {
        if (stay.contains(name)) continue;
        Remove(child);
        nodes_.at(parent).children.erase(name);
    }
}

// Each folder is put behind the one before it in the order: the control has to look for nothing,
// however many there are.
void FolderTree::InsertMissing(HTREEITEM parent, const std::vector<TreeName>& wanted) {
    HTREEITEM after = TVI_FIRST;
    for (const TreeName& folder : wanted) {
        const auto& children = nodes_.at(parent).children;
        const auto found = children.find(folder.folded);
        after = found != children.end() ? found->second : InsertFolder({parent, after}, folder);
    }
}

void FolderTree::Remove(HTREEITEM item) {
    const auto children = std::move(nodes_.at(item).children);
    for (const auto& [name, child] : children) Remove(child);
    nodes_.erase(item);
    TreeView_DeleteItem(control_, item);
}

void FolderTree::ShowsButton(HTREEITEM item, bool shows) {
    TVITEMW change = {};
    change.mask = TVIF_CHILDREN;
    change.hItem = item;
    change.cChildren = shows ? 1 : 0;
    SendMessageW(control_, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&change));
}

std::wstring FolderTree::ShownPath(const FolderRef& folder) const {
    std::wstring path;
    for (const std::wstring& name : ShownNames(folder)) path += (path.empty() ? L"" : L"\\") + name;
    return path;
}

std::vector<std::wstring> FolderTree::ShownNames(const FolderRef& folder) const {
    const auto depot = std::find_if(depots_.begin(), depots_.end(), [&](const ShownDepot& shown) {
        return shown.ref == folder.depot;
    });
    std::vector<std::wstring> names = {depot == depots_.end() ? std::wstring() : depot->name};
    for (const std::string& name : FolderNames(folder.relative)) {
        names.push_back(WideFromAnsi(name));
    }
    return names;
}

void FolderTree::SelectAtMouse(LPARAM place) const {
    if (place == -1) return;
    POINT point = {GET_X_LPARAM(place), GET_Y_LPARAM(place)};
    ScreenToClient(control_, &point);
    const HTREEITEM item = ItemAt(point);
    if (item != nullptr) TreeView_SelectItem(control_, item);
}

HTREEITEM FolderTree::ItemAt(POINT place) const {
    TVHITTESTINFO hit = {};
    hit.pt = place;
    return TreeView_HitTest(control_, &hit);
}

std::optional<FolderRef> FolderTree::FolderAt(POINT place) const {
    const auto node = nodes_.find(ItemAt(place));
    return node != nodes_.end() ? std::optional(node->second.folder) : std::nullopt;
}

void FolderTree::Mark(std::optional<POINT> place) const {
    const HTREEITEM item = place ? ItemAt(*place) : nullptr;
    if (item != TreeView_GetDropHilight(control_)) TreeView_SelectDropTarget(control_, item);
}

std::optional<LRESULT> FolderTree::HandleNotify(const NMHDR& header) {
    if (silent_) return std::nullopt;
    const auto& change = reinterpret_cast<const NMTREEVIEWW&>(header);
    switch (header.code) {
        case TVN_SELCHANGEDW: {
            const auto node = nodes_.find(change.itemNew.hItem);
            if (node != nodes_.end()) events_.selected(FolderRef(node->second.folder));
            return 0;
        }
        case TVN_ITEMEXPANDINGW:
            Open(change);
            return 0;
        default:
            return std::nullopt;
    }
}

void FolderTree::Open(const NMTREEVIEWW& change) {
    if (change.action != TVE_EXPAND) return;
    const auto node = nodes_.find(change.itemNew.hItem);
    if (node != nodes_.end() && !node->second.loaded) {
        events_.opened(FolderRef(node->second.folder));
    }
}

}  // namespace depot
