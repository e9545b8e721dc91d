// What the user can do with the files besides choosing them.
#pragma once

#include <optional>
#include <string>
#include <vector>

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

    // The user begins to change a name. Returns whether that is allowed now.
    bool NameIsEdited() const;
    // Renames the entry whose name the user has changed, unless the user gave up. A name that is
    // refused stays to be edited where the user pressed Enter; a click elsewhere leaves it.
    void NameEdited(const NMLVDISPINFOW& edited);

    // Has the buttons usable as far as the selection allows.
    void UpdateButtons() const;

private:
    // A name that the user wants an entry to have.
    struct WantedName {
        std::string entry;
        std::wstring typed;
    };

    bool CanChange() const;
    bool CanRename() const;
    // Whether something is selected, all of it in the shown folder.
    bool HasSelectionHere() const;
    void EditAgain(const std::wstring& typed) const;
    struct Deletion {
        FolderRef folder;
        std::vector<std::string> names;
        std::vector<std::string> folderNames;
        std::string beside;   // what takes their place
        unsigned number = 0;  // of the request
    };
    void AskAndDelete(const Deletion& deletion, const DeletionExtent& extent);
    bool ConfirmDeletion(const Deletion& deletion, const DeletionExtent& extent) const;
    // What is done behind a change: the name of what was made is edited, or, after a failure, the
    // one that was wanted; the entry beside what is gone is selected, which is no choice.
    struct Afterwards {
        bool editsName = false;
        std::optional<WantedName> editsAgain{};
        std::string beside{};
    };
    void Finish(const ChangeResult& result, const Afterwards& afterwards);
    template <class Change>
    void Run(Change change, const Afterwards& afterwards);

    const BrowseParts parts_;
    unsigned deletions_ = 0;  // how many were asked for
};

}  // namespace depot
