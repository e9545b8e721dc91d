// What the user can do with the files besides choosing them.
#pragma once

#include "depotbrowser/depot_changes.h"
#include "depotbrowser/folder_navigator.h"

namespace depot {

// Rename, delete, make a copy and new folder. None of it can be used unless the settings offer it.
class FileCommands {
public:
    explicit FileCommands(const BrowseParts& parts) : parts_(parts) {}

    void NewFolder();
    void Rename() const;
    void MakeCopy();
    void Delete();

    // Renames the entry whose name the user has changed, unless the user gave up.
    void NameEdited(const NMLVDISPINFOW& edited);
    // Whether the user may change a name now.
    bool CanRename() const;

    // Has the buttons usable as far as the selection allows.
    void UpdateButtons() const;

private:
    bool CanChange() const;
    bool ConfirmDeletion(const std::vector<const BrowseEntry*>& entries) const;
    void Finish(const ChangeResult& result, bool editsName);
    template <class Change>
    void Run(Change change, bool editsName = false);

    const BrowseParts parts_;
};

}  // namespace depot
