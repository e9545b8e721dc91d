// From what the user selected or typed to the files that are chosen.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "depotbrowser/file_name_field.h"
#include "depotbrowser/folder_navigator.h"

namespace depot {

// Understands the file name field. `finish` receives the paths that are chosen.
class FileChoice {
public:
    using Finish = std::function<void(std::vector<std::string> paths)>;
    FileChoice(const BrowseParts& parts, Finish finish)
        : parts_(parts), finish_(std::move(finish)) {}

    // Opens the folder of a path and puts its name into the field; a mere name stays in the field
    // and `otherwise` is opened.
    void Begin(const std::wstring& path, const FolderRef& otherwise);

    // Opens the folder of a display path, or `otherwise` where it is not there any more.
    void BeginIn(const std::string& folder, const FolderRef& otherwise);

    // Shows the selected files in the field. A folder that was selected leaves none there that was
    // selected before.
    void SelectionChanged();
    // The user typed into the field.
    void FieldEdited();
    // The shown folder may be another one, or lack a file: what was selected there and is gone
    // leaves the field.
    void FolderChanged();

    // The folder that the user selected after all that was typed or selected before; null when the
    // field says what the default button acts on.
    const BrowseEntry* FolderToOpen() const;
    bool IsFieldEmpty() const { return Field().empty(); }

    // Acts on the field as the default button does: opens a folder, applies a pattern, or ends the
    // dialog with the chosen files. What cannot be is reported in place.
    void Accept();

    // The extension that names without one are given.
    std::string DefaultExtension() const;

private:
    void AcceptSelected(const std::vector<const BrowseEntry*>& files);
    void AcceptSeveral(const std::vector<TypedName>& names);
    void AcceptOne(const TypedName& typed);
    void AcceptPath(const std::string& path, bool quoted);
    void AcceptIn(const FolderRef& folder, const std::string& name, bool quoted);
    void OpenNamed(const FolderRef& folder, const std::string& name, bool quoted);
    void SaveFile(const FolderRef& folder, const std::string& name, bool quoted);
    void FinishOpen(const FolderRef& folder, const std::string& name, const ExaminedName& found);
    void FinishSave(const FolderRef& folder, const std::string& name, const ExaminedName& found);
    void OpenFolder(const FolderRef& folder, const std::string& name);
    bool ConfirmOverwriting(const std::string& name) const;
    void Refuse(UINT text, const std::wstring& argument, const std::string& reason = {});
    std::wstring Field() const;
    void SetField(const std::wstring& text);
    void ForgetSelection();
    bool SelectionIsThere() const;

    const BrowseParts parts_;
    const Finish finish_;
    std::wstring selectionField_;  // what the field holds as long as it shows the selection
    std::vector<std::string> selectionNames_;  // those of them in the shown folder
    std::optional<FolderRef> folder_;
    bool folderIsLast_ = false;  // a folder was selected after everything else
    bool filling_ = false;       // while the field is changed by the dialog itself
};

}  // namespace depot
