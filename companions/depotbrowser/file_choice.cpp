#include "depotbrowser/file_choice.h"

#include <algorithm>

#include "config/file_types.h"
#include "depotbrowser/browse_ids.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/flag_scope.h"
#include "depotbrowser/name_rules.h"
#include "platform/paths.h"
#include "platform/wide_text.h"
#include "resource_ids.h"

namespace depot {
namespace {

bool IsWholePath(const std::string& text) {
    return text.starts_with('<') || IsFileSystemPath(text);
}

// A name of a file that is there may be typed without its extension.
ExaminedName ExamineTyped(DepotSession& session, const FolderRef& folder, const std::string& name,
                          const std::string& longer) {
    ExaminedName found = ExamineName(session, folder, name);
    if (found.kind != NameKind::kAbsent || longer == name) return found;
    return ExamineName(session, folder, longer);
}

// A folder of the name that was typed is opened; only other names are tried for writing.
ExaminedName ExamineTarget(DepotSession& session, const FolderRef& folder, const std::string& name,
                           const std::string& longer) {
    ExaminedName found = ExamineName(session, folder, name);
    if (found.kind == NameKind::kFolder || found.kind == NameKind::kUnknown) return found;
    return ExamineForWriting(session, folder, longer);
}

}  // namespace

void FileChoice::Begin(const std::wstring& path, const FolderRef& otherwise) {
    const auto narrow = ExactAnsiFromWide(path);
    if (!narrow || FindSeparator(*narrow) == std::string::npos) {
        SetField(path);
        parts_.navigator.Open(otherwise);
        return;
    }
    SetField(WideFromAnsi(NamePart(*narrow)));
    // A name under which something is to be saved is proposed for every folder.
    if (!parts_.settings.saves) selectionField_ = Field();
    parts_.navigator.RunAnywhere(
        IDS_BROWSE_LOADING,
        [path = *narrow](DepotSession& session) { return LocatePath(session, path); },
        [this, otherwise](const LocatedPath& located) {
            // The user may have opened another folder meanwhile.
            if (parts_.navigator.Current()) return;
            parts_.navigator.Open(located.found ? located.folder : otherwise);
        });
}

void FileChoice::BeginIn(const std::string& folder, const FolderRef& otherwise) {
    parts_.navigator.RunAnywhere(
        IDS_BROWSE_LOADING,
        [folder](DepotSession& session) { return LocateExistingFolder(session, folder); },
        [this, otherwise](const LocatedPath& located) {
            if (parts_.navigator.Current()) return;
            parts_.navigator.Open(located.found ? located.folder : otherwise);
        });
}

void FileChoice::SelectionChanged() {
    const std::vector<const BrowseEntry*> selected = parts_.list.Selected();
    if (selected.empty() || parts_.navigator.IsRestoring()) return;
    std::vector<std::wstring> names;
    for (const BrowseEntry* entry : selected) {
        if (!entry->isFolder) names.push_back(entry->shownName);
    }
    folderIsLast_ = names.empty();
    if (folderIsLast_) return ForgetSelection();
    selectionField_ = JoinFileNames(names);
    selectionNames_.clear();
    for (const BrowseEntry* entry : selected) {
        if (!entry->isFolder && !entry->elsewhere) selectionNames_.push_back(entry->name);
    }
    SetField(selectionField_);
}

void FileChoice::FieldEdited() {
    if (!filling_) folderIsLast_ = false;
}

void FileChoice::FolderChanged() {
    const auto& current = parts_.navigator.Current();
    if (current == folder_) {
        if (parts_.navigator.IsLoaded() && !SelectionIsThere()) ForgetSelection();
        return;
    }
    if (folder_) ForgetSelection();
    folder_ = current;
    folderIsLast_ = false;
}

void FileChoice::ForgetSelection() {
    if (!selectionField_.empty() && Field() == selectionField_) SetField({});
    selectionField_.clear();
    selectionNames_.clear();
}

bool FileChoice::SelectionIsThere() const {
    return std::all_of(selectionNames_.begin(), selectionNames_.end(),
                       [&](const std::string& name) { return parts_.list.Find(name) != nullptr; });
}

const BrowseEntry* FileChoice::FolderToOpen() const {
    if (!folderIsLast_ && !IsFieldEmpty()) return nullptr;
    const std::vector<const BrowseEntry*> selected = parts_.list.Selected();
    const bool foldersAlone = std::all_of(selected.begin(), selected.end(),
                                          [](const BrowseEntry* entry) { return entry->isFolder; });
    return foldersAlone && !selected.empty() ? selected.front() : nullptr;
}

std::string FileChoice::DefaultExtension() const {
    return ExtensionForType(parts_.settings.fileType);
}

void FileChoice::Accept() {
    const std::wstring field = Field();
    std::vector<const BrowseEntry*> files = parts_.list.Selected();
    std::erase_if(files, [](const BrowseEntry* entry) { return entry->isFolder; });
    if (!files.empty() && field == selectionField_) return AcceptSelected(files);
    const std::vector<TypedName> names = ParseFileNames(field);
    if (names.empty()) return SetField({});
    if (names.size() == 1) return AcceptOne(names.front());
    if (!parts_.settings.SelectsSeveral()) return Refuse(IDS_BROWSE_BAD_NAME, field);
    AcceptSeveral(names);
}

void FileChoice::AcceptSelected(const std::vector<const BrowseEntry*>& files) {
    if (parts_.settings.saves) {
        return SaveFile(parts_.navigator.FolderOf(*files.front()), files.front()->name, true);
    }
    std::vector<std::string> paths;
    paths.reserve(files.size());
    for (const BrowseEntry* file : files) {
        paths.push_back(parts_.navigator.PathOf(*file));
    }
    finish_(std::move(paths));
}

void FileChoice::AcceptSeveral(const std::vector<TypedName>& names) {
    std::vector<std::string> paths;
    for (const TypedName& typed : names) {
        const auto name = ExactAnsiFromWide(typed.text);
        const BrowseEntry* const entry = name ? parts_.list.Find(*name) : nullptr;
        if (entry == nullptr || entry->isFolder) return Refuse(IDS_BROWSE_NOT_FOUND, typed.text);
        paths.push_back(parts_.navigator.FolderPath() + entry->name);
    }
    finish_(std::move(paths));
}

void FileChoice::AcceptOne(const TypedName& typed) {
    const auto text = ExactAnsiFromWide(typed.text);
    if (!text) return Refuse(IDS_BROWSE_BAD_NAME, typed.text);
    if (IsWholePath(*text)) return AcceptPath(*text, typed.quoted);
    if (IsPattern(*text)) {
        parts_.navigator.ShowMatching(*text);
        return;
    }
    const auto& current = parts_.navigator.Current();
    if (!current) return;
    const RelativeTarget target = FollowPath(current->relative, *text);
    AcceptIn({current->depot, target.folder}, target.name, typed.quoted);
}

void FileChoice::AcceptPath(const std::string& path, bool quoted) {
    parts_.navigator.RunAnywhere(
        IDS_BROWSE_WORKING, [path](DepotSession& session) { return LocatePath(session, path); },
        [this, path, quoted](const LocatedPath& located) {
            if (!located.found) return Refuse(IDS_BROWSE_OUTSIDE, WideFromAnsi(path));
            AcceptIn(located.folder, located.name, quoted);
        });
}

void FileChoice::AcceptIn(const FolderRef& folder, const std::string& name, bool quoted) {
    if (name.empty()) {
        SetField({});
        return parts_.navigator.Open(folder);
    }
    if (parts_.settings.saves) return SaveFile(folder, name, quoted);
    OpenNamed(folder, name, quoted);
}

void FileChoice::OpenNamed(const FolderRef& folder, const std::string& name, bool quoted) {
    const std::string longer = quoted ? name : WithDefaultExtension(name, DefaultExtension());
    parts_.navigator.Run(
        folder.depot, IDS_BROWSE_WORKING,
        [=](DepotSession& session) { return ExamineTyped(session, folder, name, longer); },
        [=, this](const ExaminedName& found) { FinishOpen(folder, name, found); });
}

void FileChoice::FinishOpen(const FolderRef& folder, const std::string& name,
                            const ExaminedName& found) {
    switch (found.kind) {
        case NameKind::kFile:
            return finish_({found.path});
        case NameKind::kFolder:
            return OpenFolder(folder, name);
        case NameKind::kAbsent:
            return Refuse(IDS_BROWSE_NOT_FOUND, WideFromAnsi(name));
        default:
            return Refuse(IDS_BROWSE_NOT_FOUND, WideFromAnsi(name), found.reason);
    }
}

void FileChoice::SaveFile(const FolderRef& folder, const std::string& name, bool quoted) {
    const std::string longer = quoted ? name : WithDefaultExtension(name, DefaultExtension());
    if (!IsValidName(longer)) return Refuse(IDS_BROWSE_BAD_NAME, WideFromAnsi(name));
    parts_.navigator.Run(
        folder.depot, IDS_BROWSE_WORKING,
        [=](DepotSession& session) { return ExamineTarget(session, folder, name, longer); },
        [=, this](const ExaminedName& found) { FinishSave(folder, longer, found); });
}

void FileChoice::FinishSave(const FolderRef& folder, const std::string& name,
                            const ExaminedName& found) {
    if (found.kind == NameKind::kFolder) return OpenFolder(folder, NamePart(found.path));
    if (!found.writable) {
        return Refuse(IDS_BROWSE_NOT_WRITABLE, WideFromAnsi(found.path), found.reason);
    }
    if (found.kind == NameKind::kFile && parts_.settings.askBeforeOverwriting &&
        !ConfirmOverwriting(name)) {
        return;
    }
    finish_({found.path});
}

void FileChoice::OpenFolder(const FolderRef& folder, const std::string& name) {
    SetField({});
    parts_.navigator.Open({folder.depot, folder.relative + name + "\\"});
}

bool FileChoice::ConfirmOverwriting(const std::string& name) const {
    const std::wstring question =
        parts_.texts.Text(IDS_BROWSE_CONFIRM_OVERWRITE, WideFromAnsi(name));
    const std::wstring title = parts_.texts.Text(IDS_BROWSE_SAVE_AS);
    return MessageBoxW(parts_.dialog, question.c_str(), title.c_str(),
                       MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}

void FileChoice::Refuse(UINT text, const std::wstring& argument, const std::string& reason) {
    parts_.status.ShowError(WithReason(parts_.texts.Text(text, argument), reason));
    // The user continues where the mistake is.
    const HWND field = GetDlgItem(parts_.dialog, CONTROL_NAME);
    SendMessageW(parts_.dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
}

std::wstring FileChoice::Field() const {
    return TextOf(GetDlgItem(parts_.dialog, CONTROL_NAME));
}

void FileChoice::SetField(const std::wstring& text) {
    const FlagScope scope(filling_);
    SetDlgItemTextW(parts_.dialog, CONTROL_NAME, text.c_str());
}

}  // namespace depot
