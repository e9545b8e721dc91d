#include "depotctl/tree_update.h"

#include <algorithm>
#include <span>

#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/progress.h"
#include "platform/local_file.h"
#include "platform/paths.h"

namespace depot::ctl {
namespace {

// Whether the folder that holds the item is as new as the item.
bool IsBelowOneOfItsState(const TreeDifference& difference, const DifferentItem& item) {
    const DifferentItem& above = difference.Items()[item.parent];
    return &above != &item && above.state == item.state;
}

// Whether the store may have something of this name: also what it does not list.
bool MayHold(const OpenedPlace& at, const Place& place, const std::string& path) {
    if (const auto local = at.store.LocalPath(path)) return PathMayExist(*local);
    ItemKind kind = ItemKind::kMissing;
    const Result looked = at.store.Look(path, kind);
    if (!looked) Fail("look at", place, looked.Why());
    return kind != ItemKind::kMissing;
}

// Files as many as the store removes at once, folders one by one.
void RemoveItems(const TreeDifference& difference, std::span<const DifferentItem* const> items,
                 ItemKind kind) {
    Store& store = difference.RightOpened().store;
    const std::size_t window = kind == ItemKind::kFile ? store.Window() : 1;
    for (; !items.empty(); items = items.subspan(std::min(window, items.size()))) {
        if (InterruptScope::WasInterrupted()) Refuse("stopped; what was not deleted by then stays");
        std::vector<ItemToRemove> some;
        for (const DifferentItem* item : items.first(std::min(window, items.size()))) {
            some.push_back({item->right, kind});
        }
        store.RemoveItems(some);
        for (std::size_t at = 0; at < some.size(); ++at) {
            if (some[at].result) continue;
            Fail("remove", difference.Right(*items[at]), some[at].result.Why());
        }
    }
}

// The copying of what is different.
class Update {
public:
    Update(const Program& program, const TreeDifference& difference)
        : program_(program), difference_(difference), left_(difference.LeftOutLeft()) {}

    std::uint32_t Run() {
        for (const DifferentItem& item : difference_.Items()) Take(item);
        if (!left_.IsNothing()) {
            const Error why = difference_.LeftOpened().store.IncompleteError(left_);
            Refuse(difference_.Left(difference_.Items().front()).Shown() + ": " +
                   Utf8FromAnsi(why.text));
        }
        return files_;
    }

private:
    void Take(const DifferentItem& item) {
        if (item.state == ItemState::kDifferent) return Copy(item, ExistingEntries::kReplace);
        if (item.state != ItemState::kOnlyLeft) return;
        // Trees are copied by their folders, unless what is left out would end that half-way.
        if (left_.IsNothing() && IsBelowOneOfItsState(difference_, item)) return;
        if (item.isFolder && !left_.IsNothing()) {
            return MakeFolder(difference_.Right(item), FoldersAbove::kExist);
        }
        Copy(item, ExistingEntries::kRefuse);
    }

    void Copy(const DifferentItem& item, ExistingEntries existing) {
        const ItemKind kind = item.isFolder ? ItemKind::kFolder : ItemKind::kFile;
        files_ +=
            Transfer(program_, difference_.Left(item), difference_.Right(item), {kind, existing});
    }

    const Program& program_;
    const TreeDifference& difference_;
    const LeftOut left_;
    std::uint32_t files_ = 0;
};

}  // namespace

void RequireNothingReplaced(const TreeDifference& difference) {
    for (const DifferentItem& item : difference.Items()) {
        if (item.state != ItemState::kDifferent) continue;
        Refuse(difference.Right(item).Shown() + " is there already; --force replaces it");
    }
}

std::vector<Step> CopySteps(const TreeDifference& difference) {
    std::vector<Step> steps;
    for (const DifferentItem& item : difference.Items()) {
        const Place to = difference.Right(item);
        if (item.state == ItemState::kOtherKind) {
            Refuse(to.Shown() + " is there already, as a " + (item.isFolder ? "file" : "folder"));
        }
        if (item.state == ItemState::kDifferent) {
            steps.push_back({"replace", difference.Left(item).Utf8(), to.Utf8()});
        }
        if (item.state != ItemState::kOnlyLeft) continue;
        RequireFittingName(to, item.isFolder ? ItemKind::kFolder : ItemKind::kFile);
        steps.push_back(item.isFolder ? Step{"make", {}, to.Utf8()}
                                      : Step{"copy", difference.Left(item).Utf8(), to.Utf8()});
    }
    return steps;
}

std::uint32_t CopyDifferent(const Program& program, const TreeDifference& difference) {
    return Update(program, difference).Run();
}

std::vector<Step> RemovalSteps(const TreeDifference& difference) {
    std::vector<Step> steps;
    for (const DifferentItem& item : difference.Items()) {
        if (item.state != ItemState::kOnlyRight) continue;
        steps.push_back({"remove", difference.Right(item).Utf8(), {}});
    }
    return steps;
}

void RequireSurplus(const TreeDifference& difference) {
    if (!difference.LeftOutLeft().IsNothing() || !difference.LeftOutRight().IsNothing()) {
        Refuse("nothing is deleted: names or links of one side could not be listed");
    }
    const OpenedPlace& left = difference.LeftOpened();
    for (const DifferentItem& item : difference.Items()) {
        if (item.state != ItemState::kOnlyRight || IsBelowOneOfItsState(difference, item)) continue;
        const std::string& folder = difference.Items()[item.parent].left;
        const std::string name = NamePart(item.name);
        const Place source = difference.Left(item);
        for (const bool isFolder : {false, true}) {
            const std::string path = left.store.ChildPath(folder, name, isFolder);
            if (MayHold(left, source, path)) {
                Refuse("nothing is deleted: " + source.Shown() +
                       " is there, though it is not listed");
            }
        }
    }
}

std::size_t RemoveSurplus(const TreeDifference& difference) {
    std::vector<const DifferentItem*> files, folders;
    for (const DifferentItem& item : difference.Items()) {
        if (item.state == ItemState::kOnlyRight) (item.isFolder ? folders : files).push_back(&item);
    }
    // A folder comes after those in it.
    std::reverse(folders.begin(), folders.end());
    const InterruptScope interrupts;
    RemoveItems(difference, files, ItemKind::kFile);
    RemoveItems(difference, folders, ItemKind::kFolder);
    return files.size() + folders.size();
}

}  // namespace depot::ctl
