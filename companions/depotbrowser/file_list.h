// The list of the files and folders in the current folder.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "depotbrowser/browse_icons.h"
#include "depotbrowser/browse_texts.h"
#include "depotbrowser/entry_order.h"
#include "depotbrowser/name_search.h"

namespace depot {

// Borrows the dialog's list control, which asks for what it shows row by row: ten thousand files
// cost no more than a screenful.
class FileList {
public:
    FileList(HWND control, BrowseIcons& icons, const BrowseTexts& texts, bool multipleSelection);

    // Shows these entries, as far as the pattern lets them pass, in the current order.
    void SetEntries(std::vector<BrowseEntry> entries);
    void SetPattern(const std::string& pattern);
    void SetOrder(EntryOrder order);
    // Shows of the folder only what matches; what was found elsewhere is forgotten.
    void Search(const SearchWords& words);
    // Adds what matches elsewhere, below what is shown.
    void AppendFound(const std::vector<BrowseEntry>& found);

    const std::vector<BrowseEntry>& Entries() const { return entries_; }
    std::size_t RowCount() const { return rows_.size(); }
    // How many entries the pattern does not let pass.
    std::size_t HiddenCount() const { return entries_.size() - rows_.size(); }
    const std::string& Pattern() const { return pattern_; }

    // The widths of the columns that are always there; other widths are left as they are.
    std::vector<int> ColumnWidths() const;
    void SetColumnWidths(const std::vector<int>& widths) const;
    // The screen has another resolution: its size and that of the images changes all widths.
    void ResolutionChanged(int before, int now) const;
    EntryOrder Order() const { return order_; }

    // The selected entries from the top.
    std::vector<const BrowseEntry*> Selected() const;
    // The name of the entry of the shown folder that is next to the selected ones: the first behind
    // them, else the last before; empty for none.
    std::string NameBesideSelected() const;
    // The entry with the focus, when it is selected; null otherwise.
    const BrowseEntry* Focused() const;
    // Returns the entry of that name in any letter case, shown or not; null when there is none.
    const BrowseEntry* Find(const std::string& name) const;

    // Returns the entry of a row; null when there is no such row.
    const BrowseEntry* EntryAt(int row) const;

    // Returns the row at a place of the control, whatever column is there; -1 for none.
    int RowAt(POINT place) const;
    // Marks a row as the one on which something would be dropped, and no other; -1 for none.
    void Mark(int row);

    // Gives the list the focus, and the first row where none is selected.
    void FocusFirst() const;
    // Selects the entry of the shown folder alone and shows it. Returns whether it is there.
    bool Select(const std::string& name);
    // Has the user change the name of the entry with the focus. The name that is proposed is its
    // own unless there is another one.
    void EditName(const std::wstring& proposed = {}) const;
    // Selects the name that is being edited as far as people change it: a file's without the
    // extension. For after the control has begun: it selects the whole name last of all.
    void SelectStem() const;
    bool IsEditing() const;

    // Handles what the control asks and reports; nothing when the dialog has to.
    std::optional<LRESULT> HandleNotify(const NMHDR& header);

    HWND Control() const { return control_; }

private:
    void AddColumns();
    void AddColumn(Column column, UINT title, int characters, int format);
    void ShowFolderColumn(bool shows);
    bool IsToBeShown(const BrowseEntry& entry) const;
    void ShowRows();
    void ShowOrder() const;
    void FillCell(LVITEMW& cell);
    std::wstring CellText(const BrowseEntry& entry, Column column) const;
    int FindByBeginning(const NMLVFINDITEMW& request) const;
    const BrowseEntry& At(int row) const { return entries_[rows_[static_cast<std::size_t>(row)]]; }

    HWND control_;
    BrowseIcons& icons_;
    const BrowseTexts& texts_;
    std::vector<BrowseEntry> entries_;
    std::vector<std::size_t> rows_;  // indexes into the entries
    std::string pattern_ = "*.*";
    SearchWords words_;
    int marked_ = -1;
    bool hasFolderColumn_ = false;
    EntryOrder order_;
};

}  // namespace depot
