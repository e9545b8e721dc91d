// The way to the shown folder: buttons that lead back, forward and up, and one for each folder
// above.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "depotbrowser/browse_layout.h"
#include "depotbrowser/browse_texts.h"
#include "depotbrowser/dark_palette.h"
#include "depotbrowser/depot_place.h"
#include "platform/win32.h"

namespace depot {

// Borrows three buttons of the dialog and makes those of the folders, which the dialog owns. They
// draw themselves in the dialog's colours when the dialog hands on what it is asked to draw.
class PathBar {
public:
    using Open = std::function<void(const FolderRef& folder)>;
    PathBar(HWND dialog, const BrowseTexts& texts, Open open);

    // Shows the way to a folder; `names` are the depot's and those of the folders on the way.
    void Show(const FolderRef& folder, const std::vector<std::wstring>& names);
    // Where nothing leads, a button cannot be used.
    void Enable(bool back, bool forward, bool up) const;
    void Place(const BrowseLayout& layout);

    // Opens what the button of that number leads to; false for any other control.
    bool HandleCommand(int control);
    // Presses the button that this is, as Enter does; false for any other window.
    static bool Press(HWND focus);
    // Draws one of the buttons; false for any other control.
    bool Draw(const DRAWITEMSTRUCT& item, const Palette& palette) const;

    // The folders above that have no button, from the depot on.
    std::vector<std::wstring> HiddenNames() const;

private:
    void Arrange();
    void MoveFocusFromHidden() const;
    HWND Button(std::size_t index);
    HWND MakeButton(std::size_t index, HWND after) const;
    int Width(const std::wstring& name) const;
    void OpenAbove(std::size_t index);
    void ShowHidden();
    void AddHint(HWND button, const std::wstring& text) const;
    bool IsCrumb(int control) const;

    HWND dialog_;
    const BrowseTexts& texts_;
    Open open_;
    HWND hints_ = nullptr;
    Box area_;
    FolderRef folder_;
    std::vector<std::wstring> names_;
    std::size_t first_ = 0;      // the first name that is shown
    std::vector<HWND> buttons_;  // the first stands for the names that are not shown
};

}  // namespace depot
