#include "depotbrowser/file_commands.h"

#include <algorithm>

#include "depotbrowser/browse_ids.h"
#include "depotbrowser/column_text.h"
#include "depotbrowser/label_text.h"
#include "depotbrowser/name_rules.h"
#include "platform/wide_text.h"
#include "resource_ids.h"

namespace depot {
namespace {

std::vector<std::string> NamesOf(const std::vector<const BrowseEntry*>& entries) {
    std::vector<std::string> names;
    names.reserve(entries.size());
    for (const BrowseEntry* entry : entries) names.push_back(entry->name);
    return names;
}

bool AllAreFiles(const std::vector<const BrowseEntry*>& entries) {
    return std::none_of(entries.begin(), entries.end(),
                        [](const BrowseEntry* entry) { return entry->isFolder; });
}

}  // namespace

bool FileCommands::CanChange() const {
    return parts_.settings.OffersCommands() && parts_.navigator.IsLoaded();
}

bool FileCommands::CanRename() const {
    return CanChange() && parts_.list.Selected().size() == 1 && HasSelectionHere();
}

bool FileCommands::HasSelectionHere() const {
    const auto selected = parts_.list.Selected();
    return !selected.empty() &&
           std::none_of(selected.begin(), selected.end(),
                        [](const BrowseEntry* entry) { return entry->elsewhere.has_value(); });
}

// Has a worker do the change in the shown folder and shows what became of it.
template <class Change>
void FileCommands::Run(Change change, const Afterwards& afterwards) {
    const FolderRef folder = *parts_.navigator.Current();
    parts_.navigator.Run(
        folder.depot, IDS_BROWSE_WORKING,
        [folder, change](DepotSession& session) { return change(session, folder); },
        [this, afterwards](const ChangeResult& result) { Finish(result, afterwards); });
}

void FileCommands::Finish(const ChangeResult& result, const Afterwards& afterwards) {
    AfterLoading after = {result.name, {}, {}};
    if (result.succeeded) {
        if (!afterwards.beside.empty()) {
            after.select = afterwards.beside;
            after.restores = true;
        }
        if (afterwards.editsName) after.then = [this] { Rename(); };
        return parts_.navigator.Reload(after);
    }
    const UINT text = result.nameTaken ? IDS_BROWSE_EXISTS : IDS_BROWSE_FAILED;
    after.error = WithReason(parts_.texts.Text(text, WideFromAnsi(result.name)), result.reason);
    if (const auto& again = afterwards.editsAgain) {
        after.select = again->entry;
        after.then = [this, typed = again->typed] { EditAgain(typed); };
    }
    parts_.navigator.Reload(after);
}

void FileCommands::EditAgain(const std::wstring& typed) const {
    // The user may be doing something else by now.
    if (CanRename() && GetFocus() == parts_.list.Control()) parts_.list.EditName(typed);
}

void FileCommands::NewFolder() {
    if (!CanChange()) return;
    const auto name = ExactAnsiFromWide(WithoutAccessKey(parts_.texts.Text(IDS_BROWSE_NEW_FOLDER)));
    Run(
        [name = name.value_or("Folder")](DepotSession& session, const FolderRef& folder) {
            return MakeFolder(session, folder, name);
        },
        {true, {}});
}

void FileCommands::Rename() const {
    if (CanRename()) parts_.list.EditName();
}

bool FileCommands::NameIsEdited() const {
    if (!CanRename()) return false;
    parts_.mailbox.Send([this] { parts_.list.SelectStem(); });
    return true;
}

void FileCommands::NameEdited(const NMLVDISPINFOW& edited) {
    const BrowseEntry* const entry = parts_.list.EntryAt(edited.item.iItem);
    const wchar_t* const text = edited.item.pszText;
    if (text == nullptr || entry == nullptr || entry->shownName == text) return;
    // A field that lost the focus must not take it back.
    const bool byEnter = GetKeyState(VK_RETURN) < 0;
    const std::wstring typed = text;
    const auto name = ExactAnsiFromWide(typed);
    if (!name || !IsValidName(*name)) {
        parts_.status.ShowError(parts_.texts.Text(IDS_BROWSE_BAD_NAME, typed));
        if (byEnter) parts_.mailbox.Send([this, typed] { EditAgain(typed); });
        return;
    }
    Afterwards afterwards;
    if (byEnter) afterwards.editsAgain = {entry->name, typed};
    Run(
        [from = entry->name, to = *name](DepotSession& session, const FolderRef& folder) {
            return RenameItem(session, folder, from, to);
        },
        afterwards);
}

void FileCommands::MakeCopy() {
    const auto selected = parts_.list.Selected();
    if (!CanChange() || !HasSelectionHere() || !AllAreFiles(selected)) return;
    Run(
        [names = NamesOf(selected)](DepotSession& session, const FolderRef& folder) {
            return CopyItems(session, folder, names);
        },
        {});
}

void FileCommands::Delete() {
    const auto selected = parts_.list.Selected();
    if (!CanChange() || !HasSelectionHere()) return;
    Deletion deletion = {*parts_.navigator.Current(),
                         NamesOf(selected),
                         {},
                         parts_.list.NameBesideSelected(),
                         ++deletions_};
    for (const BrowseEntry* entry : selected) {
        if (entry->isFolder) deletion.folderNames.push_back(entry->name);
    }
    parts_.navigator.Run(
        deletion.folder.depot, IDS_BROWSE_WORKING,
        [deletion](DepotSession& session) {
            return ExamineDeletion(session, deletion.folder, deletion.folderNames);
        },
        [this, deletion](const DeletionExtent& extent) { AskAndDelete(deletion, extent); });
}

void FileCommands::AskAndDelete(const Deletion& deletion, const DeletionExtent& extent) {
    // A key that is held down asks once; and the user may have opened another folder meanwhile,
    // before the question or while it waits.
    const auto isOutdated = [&] {
        return deletion.number != deletions_ || !CanChange() ||
               parts_.navigator.Current() != deletion.folder;
    };
    if (isOutdated() || !ConfirmDeletion(deletion, extent) || isOutdated()) return;
    Run(
        [names = deletion.names](DepotSession& session, const FolderRef& place) {
            return DeleteItems(session, place, names);
        },
        {.beside = deletion.beside});
}

bool FileCommands::ConfirmDeletion(const Deletion& deletion, const DeletionExtent& extent) const {
    const BrowseTexts& texts = parts_.texts;
    const std::size_t count = deletion.names.size();
    std::wstring question =
        count == 1 ? texts.Text(IDS_BROWSE_CONFIRM_DELETE, WideFromAnsi(deletion.names.front()))
                   : texts.Text(IDS_BROWSE_CONFIRM_DELETE_SEVERAL, std::to_wstring(count));
    question += L"\n\n";
    if (!deletion.folderNames.empty()) {
        question += extent.counted
                        ? FillIn(texts.Text(IDS_BROWSE_DELETE_HELD, std::to_wstring(extent.files)),
                                 std::to_wstring(extent.folders))
                        : texts.Text(IDS_BROWSE_DELETE_WHOLE);
        question += L"\n";
    }
    question += texts.Text(extent.recycled ? IDS_BROWSE_DELETE_RECYCLED : IDS_BROWSE_DELETE_FINAL);
    const std::wstring title = WithoutAccessKey(texts.Text(IDS_BROWSE_DELETE));
    return MessageBoxW(parts_.dialog, question.c_str(), title.c_str(),
                       MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}

void FileCommands::UpdateButtons() const {
    if (!parts_.settings.OffersCommands()) return;
    const auto selected = parts_.list.Selected();
    const bool some = CanChange() && HasSelectionHere();
    const struct {
        int control;
        bool usable;
    } rows[] = {
        {CONTROL_NEW_FOLDER, CanChange()},
        {CONTROL_RENAME, CanRename()},
        {CONTROL_MAKE_COPY, some && AllAreFiles(selected)},
        {CONTROL_DELETE, some},
    };
    for (const auto& row : rows) {
        const HWND button = GetDlgItem(parts_.dialog, row.control);
        // The focus must not stay on a button that cannot be used any more.
        if (!row.usable && GetFocus() == button) SetFocus(parts_.list.Control());
        EnableWindow(button, row.usable);
    }
}

}  // namespace depot
