#include "depotbrowser/drag_user.h"

#include <shlobj.h>

#include <algorithm>
#include <cstring>

namespace depot::test {
namespace {

constexpr UINT kCall = WM_APP + 99;
constexpr int kLongestText = 300;

WNDPROC ownProcedure = nullptr;

LRESULT CALLBACK CallOrPassOn(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message != kCall) return CallWindowProcW(ownProcedure, window, message, first, second);
    (*reinterpret_cast<const std::function<void()>*>(second))();
    return 0;
}

POINT MiddleOf(HWND control, const RECT& area) {
    POINT middle = {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
    ClientToScreen(control, &middle);
    return middle;
}

int RowNamed(const OpenBrowser& browser, const std::wstring& name) {
    const Names rows = browser.Rows();
    const auto found = std::find(rows.begin(), rows.end(), name);
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

HTREEITEM DepotNamed(HWND tree, const std::wstring& name) {
    for (HTREEITEM item = TreeView_GetRoot(tree); item != nullptr;
         item = TreeView_GetNextSibling(tree, item)) {
        wchar_t text[kLongestText] = {};
        TVITEMW read = {};
        read.mask = TVIF_TEXT;
        read.hItem = item;
        read.pszText = text;
        read.cchTextMax = kLongestText;
        SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&read));
        if (name == text) return item;
    }
    return nullptr;
}

RECT RowArea(const OpenBrowser& browser, int row) {
    RECT area = {};
    ListView_GetItemRect(browser.Control(CONTROL_LIST), row, &area, LVIR_LABEL);
    return area;
}

LPARAM InWindow(HWND window, POINT screen) {
    ScreenToClient(window, &screen);
    return MAKELPARAM(screen.x, screen.y);
}

}  // namespace

void CallOnThreadOf(HWND window, const std::function<void()>& function) {
    const auto replacement = reinterpret_cast<LONG_PTR>(CallOrPassOn);
    ownProcedure = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(window, GWLP_WNDPROC, replacement));
    SendMessageW(window, kCall, 0, reinterpret_cast<LPARAM>(&function));
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(ownProcedure));
}

POINT PlaceOfRow(const OpenBrowser& browser, const std::wstring& name) {
    return MiddleOf(browser.Control(CONTROL_LIST), RowArea(browser, RowNamed(browser, name)));
}

POINT PlaceOfDepot(const OpenBrowser& browser, const std::wstring& name) {
    const HWND tree = browser.Control(CONTROL_TREE);
    RECT area = {};
    TreeView_GetItemRect(tree, DepotNamed(tree, name), &area, TRUE);
    return MiddleOf(tree, area);
}

POINT PlaceBelowRows(const OpenBrowser& browser) {
    RECT area = {};
    GetClientRect(browser.Control(CONTROL_LIST), &area);
    area.top = area.bottom - 4;
    return MiddleOf(browser.Control(CONTROL_LIST), area);
}

std::string FileBlock(const std::vector<std::wstring>& paths) {
    std::wstring list;
    for (const std::wstring& path : paths) list += path + L'\0';
    list += L'\0';
    const DROPFILES header = {sizeof(DROPFILES), {}, FALSE, TRUE};
    std::string block(reinterpret_cast<const char*>(&header), sizeof(header));
    block.append(reinterpret_cast<const char*>(list.data()), list.size() * sizeof(wchar_t));
    return block;
}

HRESULT DraggedFiles::QueryInterface(REFIID interfaceId, void** object) {
    const bool known =
        IsEqualIID(interfaceId, IID_IUnknown) || IsEqualIID(interfaceId, IID_IDataObject);
    *object = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
}

HRESULT DraggedFiles::GetData(FORMATETC* format, STGMEDIUM* medium) {
    *medium = {};
    if (QueryGetData(format) != S_OK) return DV_E_FORMATETC;
    ++requests_;
    medium->tymed = TYMED_HGLOBAL;
    medium->hGlobal = GlobalAlloc(GMEM_MOVEABLE, block_.size());
    std::memcpy(GlobalLock(medium->hGlobal), block_.data(), block_.size());
    GlobalUnlock(medium->hGlobal);
    return S_OK;
}

HRESULT DraggedFiles::QueryGetData(FORMATETC* format) {
    return format->cfFormat == CF_HDROP && !block_.empty() ? S_OK : S_FALSE;
}

IDropTarget* DropTargetOf(HWND window) {
    return static_cast<IDropTarget*>(GetPropW(window, L"OleDropTargetInterface"));
}

bool WaitForDropTarget(HWND window) {
    return Eventually([&] { return DropTargetOf(window) != nullptr; });
}

DWORD DropAt(const OpenBrowser& browser, IDataObject& data, POINT place, DWORD offered) {
    DWORD shown = DROPEFFECT_NONE;
    if (!WaitForDropTarget(browser.Window())) return shown;
    CallOnThreadOf(browser.Window(), [&] {
        IDropTarget* const target = DropTargetOf(browser.Window());
        DWORD effect = offered;
        target->DragEnter(&data, MK_LBUTTON, {place.x, place.y}, &effect);
        shown = offered;
        target->DragOver(MK_LBUTTON, {place.x, place.y}, &shown);
        effect = offered;
        if (shown != DROPEFFECT_NONE) {
            target->Drop(&data, 0, {place.x, place.y}, &effect);
        } else {
            target->DragLeave();
        }
    });
    return shown;
}

DWORD HoverAt(const OpenBrowser& browser, IDataObject& data, POINT place,
              const std::function<void()>& look) {
    DWORD shown = kOffered;
    if (!WaitForDropTarget(browser.Window())) return shown;
    CallOnThreadOf(browser.Window(), [&] {
        DropTargetOf(browser.Window())->DragEnter(&data, MK_LBUTTON, {place.x, place.y}, &shown);
    });
    if (look) look();
    CallOnThreadOf(browser.Window(), [&] { DropTargetOf(browser.Window())->DragLeave(); });
    return shown;
}

bool IsDragging(const OpenBrowser& browser) {
    GUITHREADINFO info = {};
    info.cbSize = sizeof(info);
    GetGUIThreadInfo(GetWindowThreadProcessId(browser.Window(), nullptr), &info);
    return info.hwndCapture == browser.Window();
}

bool BeginDrag(const OpenBrowser& browser, const std::wstring& row) {
    browser.WaitForRow(row);
    const HWND list = browser.Control(CONTROL_LIST);
    const RECT area = RowArea(browser, RowNamed(browser, row));
    const LONG x = area.left + 3;
    const LONG y = (area.top + area.bottom) / 2;
    PostMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y));
    for (const LONG step : {10, 20, 30}) {
        PostMessageW(list, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(x + step, y));
    }
    return Eventually([&] { return IsDragging(browser); });
}

void DragTo(const OpenBrowser& browser, POINT place, WPARAM keys) {
    SendMessageW(browser.Window(), WM_MOUSEMOVE, MK_LBUTTON | keys,
                 InWindow(browser.Window(), place));
}

void ReleaseAt(const OpenBrowser& browser, POINT place, WPARAM keys) {
    DragTo(browser, place, keys);
    PostMessageW(browser.Window(), WM_LBUTTONUP, keys, InWindow(browser.Window(), place));
}

bool IsRowMarked(const OpenBrowser& browser, const std::wstring& name) {
    return ListView_GetItemState(browser.Control(CONTROL_LIST), RowNamed(browser, name),
                                 LVIS_DROPHILITED) != 0;
}

bool IsDepotMarked(const OpenBrowser& browser, const std::wstring& name) {
    const HWND tree = browser.Control(CONTROL_TREE);
    const HTREEITEM item = DepotNamed(tree, name);
    return item != nullptr && TreeView_GetDropHilight(tree) == item;
}

}  // namespace depot::test
