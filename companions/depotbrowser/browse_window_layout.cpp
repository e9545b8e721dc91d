// How the browse dialog looks: its texts, its measures and the places of its controls.
#include <algorithm>
#include <optional>

#include "config/file_types.h"
#include "depotbrowser/browse_ids.h"
#include "depotbrowser/browse_window.h"
#include "depotbrowser/browse_window_parts.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/kept_ids.h"
#include "depotbrowser/label_text.h"
#include "depotbrowser/name_rules.h"
#include "platform/wide_text.h"
#include "resource_ids.h"

namespace depot {
namespace {

// Measures in dialog units, a quarter of a character's width and an eighth of its height.
constexpr int kMargin = 7;
constexpr int kGap = 4;
constexpr int kLabelHeight = 9;
constexpr int kFieldHeight = 13;
constexpr int kButtonHeight = 14;
constexpr int kButtonWidth = 54;
constexpr int kButtonEdges = 12;
constexpr int kMessageHeight = 18;
constexpr int kProgressWidth = 80;
constexpr int kLeastListHeight = 60;
constexpr int kLeastTreeWidth = 80;
constexpr int kLeastPathWidth = 90;
constexpr int kSearchWidth = 100;

constexpr int kCommandControls[] = {CONTROL_NEW_FOLDER, CONTROL_RENAME, CONTROL_MAKE_COPY,
                                    CONTROL_DELETE};

RECT WorkAreaAround(const RECT& area) {
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromRect(&area, MONITOR_DEFAULTTONEAREST), &monitor);
    return monitor.rcWork;
}

RECT WorkAreaAround(HWND window) {
    RECT area = {};
    GetWindowRect(window, &area);
    return WorkAreaAround(area);
}

// A side of a window or of the screen.
struct Side {
    LONG start, end;
};

// Where a side of that length begins so that it is in the middle of the other and on the screen.
int Centred(LONG length, Side other, Side screen) {
    const LONG start = (other.start + other.end - length) / 2;
    return static_cast<int>(std::max(screen.start, std::min(start, screen.end - length)));
}

}  // namespace

void BrowseWindow::FillTexts() const {
    const struct {
        int control;
        UINT text;
    } rows[] = {
        {CONTROL_NEW_FOLDER, IDS_BROWSE_NEW_FOLDER},
        {CONTROL_RENAME, IDS_BROWSE_RENAME},
        {CONTROL_MAKE_COPY, IDS_BROWSE_MAKE_COPY},
        {CONTROL_DELETE, IDS_BROWSE_DELETE},
        {CONTROL_SEARCH_LABEL, IDS_BROWSE_SEARCH},
        {CONTROL_TREE_LABEL, IDS_BROWSE_DEPOTS},
        {CONTROL_LIST_LABEL, IDS_BROWSE_FILES},
        {CONTROL_STOP, IDS_BROWSE_STOP},
        {CONTROL_NAME_LABEL, IDS_BROWSE_FILE_NAME},
        {CONTROL_TYPE_LABEL, IDS_BROWSE_FILE_TYPE},
        {CONTROL_HELP, IDS_BROWSE_HELP},
        {IDOK, settings_.saves ? UINT{IDS_BROWSE_SAVE} : UINT{IDS_BROWSE_OPEN}},
        {IDCANCEL, IDS_CANCEL},
    };
    for (const auto& row : rows) {
        SetDlgItemTextW(window_, row.control, texts_.Text(row.text).c_str());
    }
    const UINT title = settings_.saves ? IDS_BROWSE_SAVE_AS : IDS_BROWSE_OPEN;
    SetWindowTextW(window_, WithoutAccessKey(texts_.Text(title)).c_str());
}

// The texts that a screen reader reads for controls that show none of their own.
void BrowseWindow::SetAccessibleNames() const {
    const auto name = [this](int control, UINT text) {
        SetDlgItemTextW(window_, control, WithoutAccessKey(texts_.Text(text)).c_str());
    };
    name(CONTROL_LIST, IDS_BROWSE_FILES);
    name(CONTROL_PROGRESS, IDS_BROWSE_LOADING);
    name(CONTROL_TREE, IDS_BROWSE_DEPOTS);
}

void BrowseWindow::FillFileTypes() const {
    const auto add = [this](UINT name, const std::string& pattern) {
        const std::wstring text = texts_.Text(name) + L" (" + WideFromAnsi(pattern) + L")";
        SendDlgItemMessageW(window_, CONTROL_TYPE, CB_ADDSTRING, 0,
                            reinterpret_cast<LPARAM>(text.c_str()));
    };
    if (settings_.fileType != 0) {
        const UINT name =
            settings_.fileType == kKickoffProfile ? IDS_BROWSE_KICKOFF_FILE : IDS_BROWSE_SKEIN_FILE;
        add(name, PatternOfType(settings_.fileType));
    }
    add(IDS_BROWSE_ALL_FILES, PatternOfType(0));
    SendDlgItemMessageW(window_, CONTROL_TYPE, CB_SETCURSEL, 0, 0);
    parts_->list.SetPattern(PatternOfType(settings_.fileType));
}

void BrowseWindow::HideWhatIsNotOffered() const {
    for (const int control : kCommandControls) {
        if (!settings_.OffersCommands()) ShowWindow(Control(control), SW_HIDE);
    }
    if (settings_.helpTopic == 0) ShowWindow(Control(CONTROL_HELP), SW_HIDE);
    ShowWindow(Control(CONTROL_PROGRESS), SW_HIDE);
    ShowWindow(Control(CONTROL_STOP), SW_HIDE);
}

int BrowseWindow::ButtonWidth(int control, int least) const {
    return std::max(least, ButtonWidth(control, TextOf(Control(control))));
}

int BrowseWindow::ButtonWidth(int control, const std::wstring& text) const {
    const HWND button = Control(control);
    return TextWidth(button, text) + static_cast<int>(PixelsOf(button, kButtonEdges, 0).cx);
}

LayoutMetrics BrowseWindow::Measure() const {
    const auto pixels = [this](int across, int down) {
        return PixelsOf(Control(IDOK), across, down);
    };
    LayoutMetrics m;
    m.margin = static_cast<int>(pixels(kMargin, 0).cx);
    m.gap = static_cast<int>(pixels(kGap, 0).cx);
    m.labelHeight = static_cast<int>(pixels(0, kLabelHeight).cy);
    m.fieldHeight = static_cast<int>(pixels(0, kFieldHeight).cy);
    m.buttonHeight = static_cast<int>(pixels(0, kButtonHeight).cy);
    m.messageHeight = static_cast<int>(pixels(0, kMessageHeight).cy);
    m.progressWidth = static_cast<int>(pixels(kProgressWidth, 0).cx);
    m.listMinimumHeight = static_cast<int>(pixels(0, kLeastListHeight).cy);
    m.searchWidth = static_cast<int>(pixels(kSearchWidth, 0).cx);
    m.iconSide = MulDiv(kSmallIcon, pixelsPerInch_, kUsualResolution);
    m.gripSide = static_cast<int>(pixels(0, kLabelHeight).cy);
    m.searchLabelWidth = TextWidth(Control(CONTROL_SEARCH_LABEL), texts_.Text(IDS_BROWSE_SEARCH));
    m.pathMinimumWidth = static_cast<int>(pixels(kLeastPathWidth, 0).cx);
    m.treeMinimumWidth = static_cast<int>(pixels(kLeastTreeWidth, 0).cx);
    const int least = static_cast<int>(pixels(kButtonWidth, 0).cx);
    m.okWidth = std::max({ButtonWidth(IDOK, least), ButtonWidth(IDOK, texts_.Text(IDS_BROWSE_OPEN)),
                          ButtonWidth(IDCANCEL, least), ButtonWidth(CONTROL_HELP, least)});
    m.stopWidth = ButtonWidth(CONTROL_STOP, least);
    for (const int label : {CONTROL_NAME_LABEL, CONTROL_TYPE_LABEL}) {
        const int width = TextWidth(Control(label), TextOf(Control(label)));
        m.labelWidth = std::max(m.labelWidth, width);
    }
    if (settings_.OffersCommands()) {
        for (const int command : kCommandControls) {
            m.commandWidths.push_back(ButtonWidth(command, least));
        }
    }
    m.hasHelp = settings_.helpTopic != 0;
    if (parts_ && parts_->kept.IsShown()) m.keptWidth = ButtonWidth(CONTROL_KEPT_LINE, least);
    return m;
}

// What is shown has changed. A window that has become too small for it grows.
void BrowseWindow::MeasureAnew() {
    metrics_ = Measure();
    RECT place = {};
    GetWindowRect(window_, &place);
    if (!IsZoomed(window_) && !IsIconic(window_)) {
        MoveTo(window_, {static_cast<int>(place.left), static_cast<int>(place.top),
                         static_cast<int>(place.right - place.left),
                         static_cast<int>(place.bottom - place.top)});
    }
    Place();
}

void BrowseWindow::Place() {
    if (!parts_) return;
    RECT area = {};
    GetClientRect(window_, &area);
    const BrowseLayout layout =
        ComputeLayout(static_cast<int>(area.right), static_cast<int>(area.bottom), metrics_);
    for (std::size_t index = 0; index < layout.commands.size(); ++index) {
        MoveTo(Control(kCommandControls[index]), layout.commands[index]);
    }
    MoveTo(Control(CONTROL_TREE_LABEL), layout.treeLabel);
    MoveTo(Control(CONTROL_TREE), layout.tree);
    MoveTo(Control(CONTROL_LOCATION), layout.path);
    MoveTo(Control(CONTROL_SEARCH_LABEL), layout.searchLabel);
    MoveTo(Control(CONTROL_SEARCH), layout.search);
    MoveTo(Control(CONTROL_LIST_LABEL), layout.listLabel);
    MoveTo(Control(CONTROL_LIST), layout.list);
    MoveTo(Control(CONTROL_NAME_LABEL), layout.nameLabel);
    MoveTo(Control(CONTROL_NAME), layout.name);
    MoveTo(Control(CONTROL_TYPE_LABEL), layout.typeLabel);
    // A combo box is given the height of its list as well.
    constexpr int kDroppedLines = 8;
    Box type = layout.type;
    type.height *= kDroppedLines;
    MoveTo(Control(CONTROL_TYPE), type);
    MoveTo(Control(CONTROL_HELP), layout.help);
    MoveTo(Control(IDOK), layout.ok);
    MoveTo(Control(IDCANCEL), layout.cancel);
    MoveTo(Control(CONTROL_DETAILS), layout.details);
    MoveTo(Control(CONTROL_KEPT_LINE), layout.kept);
    MoveTo(Control(CONTROL_STATUS), layout.status);
    MoveTo(Control(CONTROL_GRIP), layout.grip);
    ShowWindow(Control(CONTROL_GRIP), IsZoomed(window_) ? SW_HIDE : SW_SHOW);
    parts_->path.Place(layout);
    parts_->suggestions.Hide();
    parts_->status.Place(layout);
    // Nothing that was drawn for the last size is left anywhere, nor in the parts of the controls.
    RedrawWindow(window_, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
}

void BrowseWindow::LimitSize(MINMAXINFO& limits) const {
    if (metrics_.margin == 0) return;
    const Box least = MinimumSize(metrics_);
    RECT frame = {0, 0, least.width, least.height};
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongW(window_, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongW(window_, GWL_EXSTYLE)));
    limits.ptMinTrackSize = {frame.right - frame.left, frame.bottom - frame.top};
}

// Gives the window the remembered size and place, or puts it over its owner, all of it on the
// screen.
void BrowseWindow::PlaceWindow() const {
    RECT now = {};
    GetWindowRect(window_, &now);
    SIZE size = {now.right - now.left, now.bottom - now.top};
    size = memory_.Size(pixelsPerInch_).value_or(size);
    MINMAXINFO limits = {};
    LimitSize(limits);
    const std::optional<POINT> last = memory_.Position();
    const RECT there = last ? RECT{last->x, last->y, last->x + size.cx, last->y + size.cy} : now;
    const RECT screen =
        last ? WorkAreaAround(there) : WorkAreaAround(settings_.owner ? settings_.owner : window_);
    size.cx = std::min(std::max(size.cx, limits.ptMinTrackSize.x), screen.right - screen.left);
    size.cy = std::min(std::max(size.cy, limits.ptMinTrackSize.y), screen.bottom - screen.top);
    RECT over = screen;
    if (last) {
        over = {last->x, last->y, last->x + size.cx, last->y + size.cy};
    } else if (settings_.owner != nullptr && !IsIconic(settings_.owner)) {
        GetWindowRect(settings_.owner, &over);
    }
    const int x = Centred(size.cx, {over.left, over.right}, {screen.left, screen.right});
    const int y = Centred(size.cy, {over.top, over.bottom}, {screen.top, screen.bottom});
    MoveTo(window_, {x, y, static_cast<int>(size.cx), static_cast<int>(size.cy)});
}

void BrowseWindow::KeepWhatIsRemembered() const {
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof(placement);
    if (GetWindowPlacement(window_, &placement)) {
        memory_.KeepPlace(placement.rcNormalPosition, pixelsPerInch_);
    }
    if (!parts_) return;
    memory_.KeepColumns(parts_->list.ColumnWidths(), pixelsPerInch_);
    memory_.KeepOrder(parts_->list.Order());
}

}  // namespace depot
