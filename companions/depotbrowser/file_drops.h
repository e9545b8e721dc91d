// Files and folders that the user drags onto a folder of a depot.
#pragma once

#include <string>
#include <vector>

#include "depotbrowser/depot_drops.h"
#include "depotbrowser/dropped_files.h"
#include "depotbrowser/folder_navigator.h"

namespace depot {

// Asks before anything is replaced, has a worker do what is left, and says what could not be done.
// Borrows the parts of the window.
class FileDrops {
public:
    FileDrops(const BrowseParts& parts, FolderTree& tree) : parts_(parts), tree_(tree) {}

    // Whether anything may be put anywhere now.
    bool CanChange() const;

    // Copies files and folders from the desktop into the folder.
    void Store(const DroppedPaths& paths, const FolderRef& target);
    // Moves or copies entries of `from`, by their display paths.
    void Transfer(std::vector<std::string> paths, const FolderRef& from, const FolderRef& target,
                  bool moves);

    // Ends what is at work between two files.
    void Stop() const;

private:
    // One drop on its way through the workers.
    struct Drop {
        DropOrder order;
        FolderRef from;                     // of what is moved
        std::vector<std::wstring> refused;  // what is said of the items that are left out
        std::wstring reason;                // of the first of these; empty for none
    };

    void Examine(const Drop& drop);
    void Ask(Drop drop, const DropExamination& examination);
    void Put(const Drop& drop, const std::vector<DroppedItem>& items);
    void Finish(Drop drop, const DropOutcome& outcome);
    void ShowOutcome(const Drop& drop, const std::string& arrived);
    void Refuse(Drop& drop, const DroppedItem& item) const;
    std::wstring Words(const Drop& drop, const DroppedItem& item) const;
    std::wstring Message(const Drop& drop) const;
    // Returns IDYES, IDNO or IDCANCEL.
    int AskToReplace(const std::vector<DroppedItem>& existing) const;
    void LearnFolders(const Drop& drop, const DropOutcome& outcome);

    const BrowseParts parts_;
    FolderTree& tree_;
    StopSign stop_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace depot
