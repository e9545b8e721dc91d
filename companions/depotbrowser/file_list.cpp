#include "depotbrowser/file_list.h"

#include <algorithm>
#include <utility>

#include "depotbrowser/column_text.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/name_rules.h"
#include "platform/text.h"
#include "resource_ids.h"
// After the Windows headers.
#include <shlwapi.h>

namespace depot {
namespace {

struct ColumnStyle {
    UINT title;
    int characters;
    int format;
};

constexpr ColumnStyle kColumnStyles[kColumns] = {
    {IDS_BROWSE_COLUMN_NAME, 26, LVCFMT_LEFT},
    {IDS_BROWSE_COLUMN_TYPE, 17, LVCFMT_LEFT},
    {IDS_BROWSE_COLUMN_SIZE, 11, LVCFMT_RIGHT},
    {IDS_BROWSE_COLUMN_DATE, 19, LVCFMT_LEFT},
};

// As the system's own file lists compare names: numbers by their value.
int CompareLikeTheShell(const std::wstring& left, const std::wstring& right) {
    return StrCmpLogicalW(left.c_str(), right.c_str());
}

bool BeginsWith(const std::wstring& name, const std::wstring& beginning) {
    return StrCmpNIW(name.c_str(), beginning.c_str(), static_cast<int>(beginning.size())) == 0;
}

}  // namespace

FileList::FileList(HWND control, BrowseIcons& icons, const BrowseTexts& texts,
                   bool multipleSelection)
    : control_(control), icons_(icons), texts_(texts) {
    if (!multipleSelection) {
        SetWindowLongW(control_, GWL_STYLE,
                       GetWindowLongW(control_, GWL_STYLE) | static_cast<LONG>(LVS_SINGLESEL));
    }
    ListView_SetExtendedListViewStyle(
        control_, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP | LVS_EX_INFOTIP);
    ListView_SetImageList(control_, icons_.List(), LVSIL_SMALL);
    // The list keeps no such state of rows that it asks for.
    ListView_SetCallbackMask(control_, LVIS_DROPHILITED);
    AddColumns();
}

void FileList::AddColumns() {
    for (int index = 0; index < kColumns; ++index) {
        const ColumnStyle& style = kColumnStyles[index];
        AddColumn(ColumnOf(index), style.title, style.characters, style.format);
    }
    ShowOrder();
}

void FileList::AddColumn(Column which, UINT title, int characters, int format) {
    const auto widthOf = [this](const std::wstring& shown) {
        return static_cast<int>(SendMessageW(control_, LVM_GETSTRINGWIDTHW, 0,
                                             reinterpret_cast<LPARAM>(shown.c_str())));
    };
    // The header keeps room beside its text, for the sign of the order too.
    constexpr int kCharactersBeside = 4;
    const int digit = widthOf(L"0");
    std::wstring text = texts_.Text(title);
    LVCOLUMNW column = {};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
    column.pszText = text.data();
    column.cx = std::max(digit * characters, widthOf(text) + digit * kCharactersBeside);
    column.fmt = format;
    column.iSubItem = static_cast<int>(which);
    SendMessageW(control_, LVM_INSERTCOLUMNW, static_cast<WPARAM>(which),
                 reinterpret_cast<LPARAM>(&column));
}

// The folder is of interest only where entries are of several.
void FileList::ShowFolderColumn(bool shows) {
    if (shows == hasFolderColumn_) return;
    hasFolderColumn_ = shows;
    if (shows) {
        constexpr int kCharacters = 26;
        AddColumn(Column::kFolder, IDS_BROWSE_FOLDER, kCharacters, LVCFMT_LEFT);
    } else {
        ListView_DeleteColumn(control_, static_cast<int>(Column::kFolder));
        if (order_.column == Column::kFolder) order_ = {};
    }
    ShowOrder();
}

void FileList::SetEntries(std::vector<BrowseEntry> entries) {
    entries_ = std::move(entries);
    for (BrowseEntry& entry : entries_) entry.typeName = texts_.TypeName(entry);
    ShowFolderColumn(false);
    ShowRows();
}

void FileList::Search(const SearchWords& words) {
    words_ = words;
    std::erase_if(entries_, [](const BrowseEntry& entry) { return entry.elsewhere.has_value(); });
    ShowFolderColumn(!words.IsEmpty());
    ShowRows();
}

void FileList::AppendFound(const std::vector<BrowseEntry>& found) {
    const std::size_t first = entries_.size();
    std::vector<std::size_t> rows;
    for (const BrowseEntry& entry : found) {
        entries_.push_back(entry);
        entries_.back().typeName = texts_.TypeName(entry);
        if (IsToBeShown(entry)) rows.push_back(entries_.size() - 1);
    }
    if (first == entries_.size()) return;
    ShowFolderColumn(true);
    SortRows(rows, entries_, order_, CompareLikeTheShell);
    rows_.insert(rows_.end(), rows.begin(), rows.end());
    // Neither the selection nor what is in sight changes.
    ListView_SetItemCountEx(control_, static_cast<int>(rows_.size()),
                            LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL);
}

bool FileList::IsToBeShown(const BrowseEntry& entry) const {
    if (!entry.elsewhere && !words_.Match(entry.foldedName)) return false;
    return entry.isFolder || MatchesPattern(entry.name, pattern_);
}

void FileList::SetPattern(const std::string& pattern) {
    pattern_ = pattern;
    ShowRows();
}

void FileList::SetOrder(EntryOrder order) {
    const BrowseEntry* const focused = Focused();
    const std::string name = focused ? focused->name : std::string();
    order_ = order;
    ShowOrder();
    ShowRows();
    if (!name.empty()) Select(name);
}

void FileList::ShowRows() {
    marked_ = -1;
    rows_.clear();
    for (std::size_t index = 0; index < entries_.size(); ++index) {
        if (IsToBeShown(entries_[index])) rows_.push_back(index);
    }
    SortRows(rows_, entries_, order_, CompareLikeTheShell);
    ListView_SetItemState(control_, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    ListView_SetItemCountEx(control_, static_cast<int>(rows_.size()), 0);
    InvalidateRect(control_, nullptr, TRUE);
}

std::vector<int> FileList::ColumnWidths() const {
    std::vector<int> widths;
    for (int column = 0; column < kColumns; ++column) {
        widths.push_back(ListView_GetColumnWidth(control_, column));
    }
    return widths;
}

void FileList::SetColumnWidths(const std::vector<int>& widths) const {
    for (std::size_t column = 0; column < widths.size(); ++column) {
        ListView_SetColumnWidth(control_, static_cast<int>(column), widths[column]);
    }
}

void FileList::ResolutionChanged(int before, int now) const {
    ListView_SetImageList(control_, icons_.List(), LVSIL_SMALL);
    std::vector<int> widths = ColumnWidths();
    for (int& width : widths) width = MulDiv(width, now, before);
    SetColumnWidths(widths);
}

void FileList::ShowOrder() const {
    const HWND header = ListView_GetHeader(control_);
    for (int index = 0; index < Header_GetItemCount(header); ++index) {
        HDITEMW item = {};
        item.mask = HDI_FORMAT;
        SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(index),
                     reinterpret_cast<LPARAM>(&item));
        item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
        if (index == static_cast<int>(order_.column)) {
            item.fmt |= order_.descending ? HDF_SORTDOWN : HDF_SORTUP;
        }
        SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(index),
                     reinterpret_cast<LPARAM>(&item));
    }
}

std::vector<const BrowseEntry*> FileList::Selected() const {
    std::vector<const BrowseEntry*> selected;
    for (int row = ListView_GetNextItem(control_, -1, LVNI_SELECTED); row >= 0;
         row = ListView_GetNextItem(control_, row, LVNI_SELECTED)) {
        selected.push_back(&At(row));
    }
    return selected;
}

const BrowseEntry* FileList::Focused() const {
    const int row = ListView_GetNextItem(control_, -1, LVNI_FOCUSED | LVNI_SELECTED);
    return EntryAt(row);
}

const BrowseEntry* FileList::Find(const std::string& name) const {
    const auto found =
        std::find_if(entries_.begin(), entries_.end(), [&](const BrowseEntry& entry) {
            return !entry.elsewhere && EqualsNoCase(entry.name, name);
        });
    return found == entries_.end() ? nullptr : &*found;
}

std::string FileList::NameBesideSelected() const {
    const auto isSelected = [this](int row) {
        return ListView_GetItemState(control_, row, LVIS_SELECTED) != 0;
    };
    const int first = ListView_GetNextItem(control_, -1, LVNI_SELECTED);
    int row = first;
    while (EntryAt(row) != nullptr && isSelected(row)) ++row;
    const BrowseEntry* beside = EntryAt(row);
    if (beside == nullptr || beside->elsewhere) beside = EntryAt(first - 1);
    return beside != nullptr && !beside->elsewhere ? beside->name : std::string();
}

const BrowseEntry* FileList::EntryAt(int row) const {
    return row >= 0 && static_cast<std::size_t>(row) < rows_.size() ? &At(row) : nullptr;
}

bool FileList::Select(const std::string& name) {
    const auto found = std::find_if(rows_.begin(), rows_.end(), [&](std::size_t index) {
        return !entries_[index].elsewhere && EqualsNoCase(entries_[index].name, name);
    });
    if (found == rows_.end()) return false;
    const int row = static_cast<int>(found - rows_.begin());
    ListView_SetItemState(control_, -1, 0, LVIS_SELECTED);
    ListView_SetItemState(control_, row, LVIS_SELECTED | LVIS_FOCUSED,
                          LVIS_SELECTED | LVIS_FOCUSED);
    ListView_EnsureVisible(control_, row, FALSE);
    return true;
}

int FileList::RowAt(POINT place) const {
    LVHITTESTINFO hit = {};
    hit.pt = place;
    return ListView_SubItemHitTest(control_, &hit);
}

void FileList::Mark(int row) {
    if (row == marked_) return;
    const int before = std::exchange(marked_, row);
    for (const int changed : {before, row}) {
        if (changed >= 0) ListView_RedrawItems(control_, changed, changed);
    }
}

void FileList::FocusFirst() const {
    SetFocus(control_);
    if (rows_.empty() || ListView_GetNextItem(control_, -1, LVNI_SELECTED) >= 0) return;
    ListView_SetItemState(control_, 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
}

void FileList::EditName(const std::wstring& proposed) const {
    const int row = ListView_GetNextItem(control_, -1, LVNI_FOCUSED | LVNI_SELECTED);
    if (row < 0) return;
    SetFocus(control_);
    SendMessageW(control_, LVM_EDITLABELW, static_cast<WPARAM>(row), 0);
    const HWND field = ListView_GetEditControl(control_);
    if (field != nullptr && !proposed.empty()) SetWindowTextW(field, proposed.c_str());
}

void FileList::SelectStem() const {
    const HWND field = ListView_GetEditControl(control_);
    const BrowseEntry* const entry = Focused();
    if (field == nullptr || entry == nullptr) return;
    const std::wstring name = TextOf(field);
    const std::size_t length = entry->isFolder ? name.size() : StemLength(name);
    SendMessageW(field, EM_SETSEL, 0, static_cast<LPARAM>(length));
}

bool FileList::IsEditing() const {
    return ListView_GetEditControl(control_) != nullptr;
}

std::optional<LRESULT> FileList::HandleNotify(const NMHDR& header) {
    switch (header.code) {
        case LVN_GETDISPINFOW:
            FillCell(reinterpret_cast<NMLVDISPINFOW&>(const_cast<NMHDR&>(header)).item);
            return 0;
        case LVN_ODFINDITEMW:
            return FindByBeginning(reinterpret_cast<const NMLVFINDITEMW&>(header));
        case LVN_COLUMNCLICK:
            SetOrder(OrderAfterClick(
                order_, ColumnOf(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem)));
            return 0;
        default:
            return std::nullopt;
    }
}

void FileList::FillCell(LVITEMW& cell) {
    const BrowseEntry* const shown = EntryAt(cell.iItem);
    if (shown == nullptr) return;
    const BrowseEntry& entry = *shown;
    if ((cell.mask & LVIF_IMAGE) != 0) {
        cell.iImage = entry.isFolder ? icons_.Folder() : icons_.File();
    }
    if ((cell.mask & LVIF_STATE) != 0) {
        const UINT marked = cell.iItem == marked_ ? UINT{LVIS_DROPHILITED} : 0;
        cell.state = (cell.state & ~UINT{LVIS_DROPHILITED}) | (marked & cell.stateMask);
    }
    if ((cell.mask & LVIF_TEXT) != 0 && cell.cchTextMax > 0) {
        lstrcpynW(cell.pszText, CellText(entry, ColumnOf(cell.iSubItem)).c_str(), cell.cchTextMax);
    }
}

std::wstring FileList::CellText(const BrowseEntry& entry, Column column) const {
    switch (column) {
        case Column::kType:
            return entry.typeName;
        case Column::kSize:
            return texts_.SizeText(entry);
        case Column::kDate:
            return BrowseTexts::DateText(entry);
        case Column::kFolder:
            return entry.shownFolder;
        default:
            return entry.shownName;
    }
}

int FileList::FindByBeginning(const NMLVFINDITEMW& request) const {
    if ((request.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) == 0 || request.lvfi.psz == nullptr) {
        return -1;
    }
    const std::wstring beginning = request.lvfi.psz;
    const int count = static_cast<int>(rows_.size());
    const int first = std::clamp(request.iStart, 0, count);
    for (int step = 0; step < count; ++step) {
        const bool wraps = first + step >= count;
        if (wraps && (request.lvfi.flags & LVFI_WRAP) == 0) return -1;
        const int row = (first + step) % count;
        if (BeginsWith(At(row).shownName, beginning)) return row;
    }
    return -1;
}

}  // namespace depot
