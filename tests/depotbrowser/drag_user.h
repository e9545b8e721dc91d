// A person who drags over the browse dialog: entries with the mouse, files from a desktop.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "depotbrowser/browse_user.h"
// After the Windows headers.
#include <ole2.h>

namespace depot::test {

// Calls the function on the thread of a window of this process.
void CallOnThreadOf(HWND window, const std::function<void()>& function);

// The middle of a row, or of a depot in the tree, and the last line of the list, on the screen.
POINT PlaceOfRow(const OpenBrowser& browser, const std::wstring& name);
POINT PlaceOfDepot(const OpenBrowser& browser, const std::wstring& name);
POINT PlaceBelowRows(const OpenBrowser& browser);

// The list of files that a desktop hands over, in its clipboard format.
std::string FileBlock(const std::vector<std::wstring>& paths);

// What a desktop drags: a block of CF_HDROP, whatever it holds. Lives on the stack.
class DraggedFiles final : public IDataObject {
public:
    explicit DraggedFiles(std::string block) : block_(std::move(block)) {}
    explicit DraggedFiles(const std::vector<std::wstring>& paths) : block_(FileBlock(paths)) {}

    // How often the files were asked for.
    int Requests() const { return requests_; }

    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetData(FORMATETC* format, STGMEDIUM* medium) override;
    STDMETHODIMP QueryGetData(FORMATETC* format) override;
    STDMETHODIMP GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }
    STDMETHODIMP GetCanonicalFormatEtc(FORMATETC*, FORMATETC*) override { return E_NOTIMPL; }
    STDMETHODIMP SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFormatEtc(DWORD, IEnumFORMATETC**) override { return E_NOTIMPL; }
    STDMETHODIMP DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP DUnadvise(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP EnumDAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }

private:
    const std::string block_;
    int requests_ = 0;
};

// What OLE calls when something is dragged over the window; null where it takes nothing.
IDropTarget* DropTargetOf(HWND window);
// The window is drawn before it takes anything.
bool WaitForDropTarget(HWND window);

inline constexpr DWORD kOffered = DROPEFFECT_COPY | DROPEFFECT_MOVE | DROPEFFECT_LINK;

// Drags over a place and drops there, as OLE does. Returns the effect that was shown before the
// drop.
DWORD DropAt(const OpenBrowser& browser, IDataObject& data, POINT place, DWORD offered = kOffered);
// The same without the drop: enters, calls `look` while it hovers, and leaves.
DWORD HoverAt(const OpenBrowser& browser, IDataObject& data, POINT place,
              const std::function<void()>& look = {});

// The mouse with its left button down on a row, which it begins to drag. Returns whether the dialog
// has taken the mouse.
bool BeginDrag(const OpenBrowser& browser, const std::wstring& row);
bool IsDragging(const OpenBrowser& browser);
// Moves it, with or without the Ctrl key, and releases the button.
void DragTo(const OpenBrowser& browser, POINT place, WPARAM keys = 0);
void ReleaseAt(const OpenBrowser& browser, POINT place, WPARAM keys = 0);

// Whether a row or a depot is marked as the one on which something would be dropped.
bool IsRowMarked(const OpenBrowser& browser, const std::wstring& name);
bool IsDepotMarked(const OpenBrowser& browser, const std::wstring& name);

}  // namespace depot::test
