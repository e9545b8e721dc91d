#include "depotctl/removal.h"

#include "depotctl/failure.h"
#include "depotctl/progress.h"
#include "fileops/shell_operation.h"
#include "platform/file_search.h"
#include "store/folder_store.h"
#include "store/tree.h"

namespace depot::ctl {
namespace {

// A program without windows shows neither progress nor errors in windows.
constexpr FILEOP_FLAGS kSilent =
    FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_NOERRORUI | FOF_SILENT;

void RemoveWhole(const OpenedPlace& at, const Place& place, ItemKind kind) {
    const auto local = at.store.LocalPath(at.path);
    // The shell removes folders also with what no text can name.
    if (local && kind == ItemKind::kFolder) {
        if (RunShellOperation({FO_DELETE, {*local}, nullptr, kSilent})) return;
        Fail("remove", place, GetLastError());
    }
    if (!local && kind == ItemKind::kFile && at.store.Remove(at.path, kind)) return;
    // Some files hold others.
    const Result removed = at.store.RemoveTree(at.path);
    if (!removed) Fail("remove", place, removed.Why());
}

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
        RemoveWhole(at_, folder_, ItemKind::kFolder);
    }

private:
    void RemoveFiles() {
        TransferProgress state;
        state.filesInAll = tree_.files;
        std::vector<ItemToRemove> some;
        for (const TreeItem& item : tree_.items) {
            if (item.isFolder) continue;
            some.push_back({item.path});
            if (some.size() < at_.store.Window() &&
                state.filesDone + some.size() < state.filesInAll) {
                continue;
            }
            at_.store.RemoveItems(some);
            state.filesDone += static_cast<std::uint32_t>(some.size());
            some.clear();
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

void Remove(const Program& program, const Place& place, ItemKind kind) {
    if (kind == ItemKind::kFolder) return Removal(program, place).Run();
    RemoveWhole(OpenedPlace(place, "remove"), place, kind);
}

}  // namespace depot::ctl
