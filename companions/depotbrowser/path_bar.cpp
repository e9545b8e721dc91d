#include "depotbrowser/path_bar.h"

#include <algorithm>
#include <utility>

#include "depotbrowser/bar_drawing.h"
#include "depotbrowser/browse_ids.h"
#include "depotbrowser/context_menu.h"
#include "depotbrowser/crumbs.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/label_text.h"
#include "depotbrowser/status_line.h"
#include "platform/module_state.h"
#include "resource_ids.h"
// After the Windows headers.
#include <commctrl.h>

namespace depot {
namespace {

struct SignButton {
    int control;
    UINT text;
    BarSign sign;
};

constexpr SignButton kSigns[] = {{CONTROL_BACK, IDS_BROWSE_BACK, BarSign::kBack},
                                 {CONTROL_FORWARD, IDS_BROWSE_FORWARD, BarSign::kForward},
                                 {CONTROL_UP, IDS_BROWSE_UP, BarSign::kUp}};

// No screen has room for more.
constexpr std::size_t kMostButtons = 60;

}  // namespace

PathBar::PathBar(HWND dialog, const BrowseTexts& texts, Open open)
    : dialog_(dialog), texts_(texts), open_(std::move(open)) {
    hints_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP, 0,
                             0, 0, 0, dialog_, nullptr, OwnModule(), nullptr);
    for (const SignButton& sign : kSigns) {
        const HWND button = GetDlgItem(dialog_, sign.control);
        SetWindowTextW(button, texts_.Text(sign.text).c_str());
        AddHint(button, texts_.Text(sign.text));
    }
    Button(0);
}

void PathBar::AddHint(HWND button, const std::wstring& text) const {
    std::wstring hint = text;
    TTTOOLINFOW tool = {};
    tool.cbSize = sizeof(tool);
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = dialog_;
    tool.uId = reinterpret_cast<UINT_PTR>(button);
    tool.lpszText = hint.data();
    SendMessageW(hints_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

HWND PathBar::MakeButton(std::size_t index, HWND after) const {
    const bool isFirst = index == 0;
    const DWORD style = WS_CHILD | BS_OWNERDRAW | (isFirst ? WS_GROUP | WS_TABSTOP : 0);
    const auto number = static_cast<INT_PTR>(CONTROL_FIRST_CRUMB + static_cast<int>(index));
    const HWND button = CreateWindowExW(0, WC_BUTTONW, L"", style, 0, 0, 0, 0, dialog_,
                                        reinterpret_cast<HMENU>(number), OwnModule(), nullptr);
    const LRESULT font = SendDlgItemMessageW(dialog_, CONTROL_UP, WM_GETFONT, 0, 0);
    SendMessageW(button, WM_SETFONT, static_cast<WPARAM>(font), FALSE);
    SetWindowPos(button, after, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    return button;
}

HWND PathBar::Button(std::size_t index) {
    while (buttons_.size() <= index) {
        const HWND after = buttons_.empty() ? GetDlgItem(dialog_, CONTROL_UP) : buttons_.back();
        buttons_.push_back(MakeButton(buttons_.size(), after));
        if (buttons_.size() != 1) continue;
        SetWindowTextW(buttons_.front(), texts_.Text(IDS_BROWSE_FOLDERS_ABOVE).c_str());
        AddHint(buttons_.front(), texts_.Text(IDS_BROWSE_FOLDERS_ABOVE));
    }
    return buttons_[index];
}

void PathBar::Show(const FolderRef& folder, const std::vector<std::wstring>& names) {
    folder_ = folder;
    names_ = names;
    Arrange();
}

void PathBar::Enable(bool back, bool forward, bool up) const {
    const bool usable[] = {back, forward, up};
    for (std::size_t index = 0; index < std::size(kSigns); ++index) {
        const HWND button = GetDlgItem(dialog_, kSigns[index].control);
        // The focus must not stay on a button that cannot be used any more.
        if (!usable[index] && GetFocus() == button) SetFocus(GetDlgItem(dialog_, CONTROL_LIST));
        EnableWindow(button, usable[index]);
    }
}

void PathBar::Place(const BrowseLayout& layout) {
    MoveTo(GetDlgItem(dialog_, CONTROL_BACK), layout.back);
    MoveTo(GetDlgItem(dialog_, CONTROL_FORWARD), layout.forward);
    MoveTo(GetDlgItem(dialog_, CONTROL_UP), layout.up);
    area_ = layout.path;
    Arrange();
}

int PathBar::Width(const std::wstring& name) const {
    return TextWidth(buttons_.front(), AsLabel(name)) + TextButtonEdges(buttons_.front());
}

void PathBar::Arrange() {
    std::vector<int> widths;
    for (const std::wstring& name : names_) widths.push_back(Width(name));
    first_ = FirstShownCrumb(widths, area_.width, area_.height);
    if (names_.size() > kMostButtons) first_ = std::max(first_, names_.size() - kMostButtons);
    int x = area_.x;
    const HWND more = Button(0);
    if (first_ > 0) {
        MoveTo(more, {x, area_.y, area_.height, area_.height});
        x += area_.height;
    }
    ShowWindow(more, first_ > 0 ? SW_SHOW : SW_HIDE);
    std::size_t used = 1;
    for (std::size_t index = first_; index < names_.size(); ++index, ++used) {
        const int width = std::min(widths[index], std::max(0, area_.Right() - x));
        const HWND button = Button(used);
        SetWindowTextW(button, AsLabel(names_[index]).c_str());
        // One press of the tab key reaches them all; the arrows lead from one to the next.
        const LONG_PTR style = GetWindowLongPtrW(button, GWL_STYLE) & ~LONG_PTR{WS_TABSTOP};
        const bool isReached = used == 1 && first_ == 0;
        SetWindowLongPtrW(button, GWL_STYLE, style | (isReached ? LONG_PTR{WS_TABSTOP} : 0));
        MoveTo(button, {x, area_.y, width, area_.height});
        ShowWindow(button, SW_SHOW);
        InvalidateRect(button, nullptr, TRUE);
        x += width;
    }
    for (; used < buttons_.size(); ++used) ShowWindow(buttons_[used], SW_HIDE);
    MoveFocusFromHidden();
}

void PathBar::MoveFocusFromHidden() const {
    const HWND focus = GetFocus();
    const auto found = std::find(buttons_.begin(), buttons_.end(), focus);
    if (found == buttons_.end() || (GetWindowLongPtrW(focus, GWL_STYLE) & WS_VISIBLE) != 0) return;
    SetFocus(GetDlgItem(dialog_, CONTROL_LIST));
}

bool PathBar::IsCrumb(int control) const {
    return control >= CONTROL_FIRST_CRUMB &&
           control < CONTROL_FIRST_CRUMB + static_cast<int>(buttons_.size());
}

bool PathBar::Press(HWND focus) {
    if (focus == nullptr || (GetWindowLongW(focus, GWL_STYLE) & BS_TYPEMASK) != BS_OWNERDRAW) {
        return false;
    }
    wchar_t kind[16] = {};
    GetClassNameW(focus, kind, static_cast<int>(std::size(kind)));
    if (lstrcmpiW(kind, WC_BUTTONW) != 0) return false;
    SendMessageW(focus, BM_CLICK, 0, 0);
    return true;
}

bool PathBar::HandleCommand(int control) {
    if (!IsCrumb(control)) return false;
    const auto index = static_cast<std::size_t>(control - CONTROL_FIRST_CRUMB);
    if (index == 0) {
        ShowHidden();
    } else {
        OpenAbove(first_ + index - 1);
    }
    return true;
}

void PathBar::OpenAbove(std::size_t index) {
    if (index < names_.size()) open_({folder_.depot, LeadingFolder(folder_.relative, index)});
}

std::vector<std::wstring> PathBar::HiddenNames() const {
    return {names_.begin(), names_.begin() + static_cast<std::ptrdiff_t>(first_)};
}

void PathBar::ShowHidden() {
    ContextMenu menu;
    const std::vector<std::wstring> names = HiddenNames();
    for (std::size_t index = 0; index < names.size(); ++index) {
        menu.Add(static_cast<int>(index) + 1, AsLabel(names[index]), true);
    }
    RECT button = {};
    GetWindowRect(buttons_.front(), &button);
    const auto chosen = static_cast<std::size_t>(menu.Show(dialog_, {button.left, button.bottom}));
    // The user may have left by another way meanwhile.
    if (chosen != 0 && HiddenNames() == names) OpenAbove(chosen - 1);
}

bool PathBar::Draw(const DRAWITEMSTRUCT& item, const Palette& palette) const {
    const auto control = static_cast<int>(item.CtlID);
    for (const SignButton& sign : kSigns) {
        if (sign.control != control) continue;
        DrawSignButton(item, sign.sign, palette);
        return true;
    }
    if (!IsCrumb(control)) return false;
    const auto index = static_cast<std::size_t>(control - CONTROL_FIRST_CRUMB);
    if (index == 0) {
        DrawSignButton(item, BarSign::kMore, palette);
    } else if (first_ + index - 1 < names_.size()) {
        const std::size_t name = first_ + index - 1;
        DrawTextButton(item, names_[name], name > 0, palette);
    }
    return true;
}

}  // namespace depot
