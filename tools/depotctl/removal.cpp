#include "depotctl/removal.h"

#include <algorithm>

#include "depotctl/failure.h"
#include "depotctl/progress.h"
#include "depotctl/transfer.h"
#include "directory/connection_scope.h"
#include "directory/local_listing.h"
#include "fileops/file_place.h"
#include "store/tree.h"

namespace depot::ctl {
namespace {

class Removal {
public:
    Removal(const Program& program, const Place& folder)
        : folder_(folder), progress_(program.errors) {}

    void Run() {
        if (folder_.Directory() != nullptr) {
            RemoveEntries();
        } else {
            RemoveFiles();
        }
        // The folders, and whatever could not be deleted by itself.
        Remove(folder_, PlaceKind::kFolder);
    }

private:
    void RemoveEntries() {
        const StorePath place = PlaceOf(*folder_.depot, folder_.path);
        const StoreScope scope(*place.store);
        Tree tree;
        // What cannot be listed is told by the deletion of the whole.
        if (!scope || !ListTree(*place.store, place.path, tree)) return;
        state_.filesInAll = tree.files;
        for (const TreeItem& item : tree.items) {
            if (item.isFolder) continue;
            static_cast<void>(place.store->Remove(item.path, ItemKind::kFile));
            NoteFile();
        }
    }

    void RemoveFiles() {
        std::vector<std::string> folders = {folder_.Storage()}, files;
        // Its files are those of another place.
        if (IsLinkToFolder(folders.front())) {
            Refuse(folder_.Shown() + " is a link to a folder, which rmdir removes");
        }
        std::uint32_t links = 0;
        for (std::size_t next = 0; next < folders.size(); ++next) {
            LdapItemList children;
            const std::uint32_t found =
                AddLocalChildren(folders[next], Subfolders::kTake, children);
            if (found != kNotListed) links += found;
            for (const CLDAPItem* child : children) {
                (child->isFolder != 0 ? folders : files).push_back(child->path);
            }
        }
        state_.filesInAll = static_cast<std::uint32_t>(files.size());
        for (const std::string& file : files) {
            DeleteFileA(file.c_str());
            NoteFile();
        }
        if (links > 0) KeepLinks(folders, links);
    }

    // Removes the folders but for those that hold links. Some systems would empty the folders that
    // these lead to with the rest of the tree.
    [[noreturn]] void KeepLinks(const std::vector<std::string>& folders,
                                std::uint32_t links) const {
        std::for_each(folders.rbegin(), folders.rend(),
                      [](const std::string& folder) { RemoveDirectoryA(folder.c_str()); });
        Refuse(folder_.Shown() + ": " + LinksText(links));
    }

    void NoteFile() {
        ++state_.filesDone;
        if (progress_.Watcher()(state_) || state_.filesDone == state_.filesInAll) return;
        Refuse("stopped after " + std::to_string(state_.filesDone) + " of " +
               std::to_string(state_.filesInAll) + " files; the others stay");
    }

    const Place& folder_;
    Progress progress_;
    TransferProgress state_;
};

}  // namespace

void RemoveTree(const Program& program, const Place& folder) {
    Removal(program, folder).Run();
}

}  // namespace depot::ctl
