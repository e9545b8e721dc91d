#include "depotctl/removal.h"

#include "depotctl/failure.h"
#include "depotctl/progress.h"
#include "depotctl/transfer.h"
#include "platform/file_search.h"
#include "store/folder_store.h"
#include "store/tree.h"

namespace depot::ctl {
namespace {

class Removal {
public:
    Removal(const Program& program, const Place& folder)
        : folder_(folder), at_(folder, "remove"), progress_(program.errors) {}

    void Run() {
        const auto local = at_.store.LocalPath(at_.path);
        // Its files are those of another place.
        if (local && IsLinkToFolder(*local)) {
            Refuse(folder_.Shown() + " is a link to a folder, which rmdir removes");
        }
        const Result listed = ListTree(at_.store, at_.path, tree_);
        // There may be links in what was not listed.
        if (!listed && local) Fail("remove", folder_, listed.Why());
        if (listed) RemoveFiles();
        if (tree_.left.links > 0) KeepLinks();
        // The folders, and whatever could not be deleted by itself.
        Remove(folder_, ItemKind::kFolder);
    }

private:
    void RemoveFiles() {
        TransferProgress state;
        state.filesInAll = tree_.files;
        for (const TreeItem& item : tree_.items) {
            if (item.isFolder) continue;
            static_cast<void>(at_.store.Remove(item.path, ItemKind::kFile));
            ++state.filesDone;
            const bool goesOn = progress_.Watcher()(state) || state.filesDone == state.filesInAll;
            if (!goesOn) progress_.RefuseWhenStopped("files; the others stay");
        }
    }

    // Removes the folders but for those that hold links. Some systems would empty the folders that
    // these lead to with the rest of the tree.
    [[noreturn]] void KeepLinks() const {
        for (auto item = tree_.items.rbegin(); item != tree_.items.rend(); ++item) {
            if (item->isFolder) static_cast<void>(at_.store.Remove(item->path, ItemKind::kFolder));
        }
        Refuse(folder_.Shown() + ": " + LinksText(tree_.left.links));
    }

    const Place& folder_;
    const OpenedPlace at_;
    Progress progress_;
    Tree tree_;
};

}  // namespace

void RemoveTree(const Program& program, const Place& folder) {
    Removal(program, folder).Run();
}

}  // namespace depot::ctl
