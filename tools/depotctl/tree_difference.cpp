#include "depotctl/tree_difference.h"

#include <algorithm>
#include <span>

#include "platform/file_time.h"
#include "store/tree.h"

namespace depot::ctl {
namespace {

// How many files of a local disk are read for one comparison.
constexpr std::size_t kFilesAtOnce = 16;
// File systems keep the times of changes as exactly as this, or better: 2 seconds in 100 ns.
constexpr std::uint64_t kExactness = 20000000;

struct Details {
    std::uint64_t size = 0;
    std::uint64_t changed = 0;
};

// What a file system says of a file; nothing where there is none.
std::optional<Details> DetailsOf(const Store& store, const std::string& path) {
    const auto local = store.LocalPath(path);
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!local || !GetFileAttributesExA(local->c_str(), GetFileExInfoStandard, &data)) return {};
    return Details{Joined(data.nFileSizeHigh, data.nFileSizeLow), Joined(data.ftLastWriteTime)};
}

// Reads all files, as many as the store reads at once.
void ReadAll(Store& store, std::vector<FileToRead>& files) {
    for (std::size_t at = 0; at < files.size();) {
        const std::size_t some = std::min(store.Window(), files.size() - at);
        store.ReadFiles(std::span(files).subspan(at, some), SourceFate::kStays);
        at += some;
    }
}

bool HoldSame(const FileBuffer& one, const FileBuffer& other) {
    return one.length == other.length &&
           std::equal(one.bytes.get(), one.bytes.get() + one.length, other.bytes.get());
}

}  // namespace

TreeDifference::Side::Side(Top top) : place(top.place), opened(top.place, "read") {
    if (top.kind == ItemKind::kFile) tree.items.push_back({{}, opened.path, false});
    if (top.kind != ItemKind::kFolder) return;
    const Result listed = ListTree(opened.store, opened.path, tree);
    if (!listed) Fail("read", place, listed.Why());
}

std::vector<TreeName> TreeDifference::Side::Names() const {
    std::vector<TreeName> names;
    for (const TreeItem& item : tree.items) {
        const bool isTop = names.empty();
        const std::string& above = isTop ? item.name : names[item.parent].path;
        names.push_back({above.empty() ? item.name : above + "\\" + item.name, item.isFolder});
    }
    return names;
}

TreeDifference::TreeDifference(Top left, Top right, DifferentBy by) : left_(left), right_(right) {
    AddItems();
    CompareFiles(by);
}

Place TreeDifference::Below(const Place& top, const DifferentItem& item) {
    return item.name.empty() ? top : Child(top, item.name);
}

void TreeDifference::AddItems() {
    const std::vector<TreeName> left = left_.Names(), right = right_.Names();
    // Where each item of a side stands among all.
    std::vector<std::size_t> ofLeft(left.size()), ofRight(right.size());
    for (const NamePair& pair : PairNames(left, right)) {
        DifferentItem item;
        if (pair.left != kNowhere) ofLeft[pair.left] = items_.size();
        if (pair.right != kNowhere) ofRight[pair.right] = items_.size();
        const bool isLeft = pair.left != kNowhere;
        const TreeName& shown = isLeft ? left[pair.left] : right[pair.right];
        item.name = shown.path;
        item.isFolder = shown.isFolder;
        item.parent = isLeft ? ofLeft[left_.tree.items[pair.left].parent]
                             : ofRight[right_.tree.items[pair.right].parent];
        if (isLeft) item.left = left_.tree.items[pair.left].path;
        if (pair.right != kNowhere) item.right = right_.tree.items[pair.right].path;
        if (!isLeft) {
            item.state = ItemState::kOnlyRight;
        } else if (pair.right == kNowhere) {
            item.state = ItemState::kOnlyLeft;
        } else if (right[pair.right].isFolder != item.isFolder) {
            item.state = ItemState::kOtherKind;
        }
        items_.push_back(std::move(item));
    }
}

void TreeDifference::CompareFiles(DifferentBy by) {
    std::vector<DifferentItem*> toRead;
    for (DifferentItem& item : items_) {
        if (item.isFolder || item.state != ItemState::kSame) continue;
        if (!DecideByDetails(item, by)) toRead.push_back(&item);
    }
    const std::size_t most =
        std::max({left_.opened.store.Window(), right_.opened.store.Window(), kFilesAtOnce});
    for (std::size_t at = 0; at < toRead.size();) {
        const std::size_t some = std::min(most, toRead.size() - at);
        CompareBytes({toRead.begin() + static_cast<std::ptrdiff_t>(at),
                      toRead.begin() + static_cast<std::ptrdiff_t>(at + some)});
        at += some;
    }
}

// Returns whether the files need not be read.
bool TreeDifference::DecideByDetails(DifferentItem& item, DifferentBy by) const {
    if (by == DifferentBy::kName) {
        item.state = ItemState::kDifferent;
        return true;
    }
    const auto left = DetailsOf(left_.opened.store, item.left);
    const auto right = DetailsOf(right_.opened.store, item.right);
    if (!left || !right) return false;
    const bool isNewer = left->changed > right->changed + kExactness;
    const bool isOther = left->size != right->size || (by == DifferentBy::kDate && isNewer);
    if (isOther) item.state = ItemState::kDifferent;
    return isOther || by == DifferentBy::kDate;
}

void TreeDifference::CompareBytes(const std::vector<DifferentItem*>& items) {
    std::vector<FileToRead> left, right;
    for (const DifferentItem* item : items) {
        left.push_back({item->left});
        right.push_back({item->right});
    }
    ReadAll(left_.opened.store, left);
    ReadAll(right_.opened.store, right);
    for (std::size_t at = 0; at < items.size(); ++at) {
        if (!left[at].result) Fail("read", Left(*items[at]), left[at].result.Why());
        if (!right[at].result) Fail("read", Right(*items[at]), right[at].result.Why());
        if (!HoldSame(left[at].contents, right[at].contents)) {
            items[at]->state = ItemState::kDifferent;
        }
    }
}

}  // namespace depot::ctl
