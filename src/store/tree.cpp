#include "store/tree.h"

#include <chrono>

#include "platform/trace.h"

namespace depot {
namespace {

// Returns why an item is no part of a tree; null for one that is.
const char* ReasonToLeaveOut(const StoreItem& item) {
    if (item.isLink) return kFolderLink;
    return item.isHostile ? kHostileName : nullptr;
}

// The listing of one tree.
class TreeListing {
public:
    TreeListing(Store& store, Tree& tree, std::uint32_t depth)
        : store_(store), tree_(tree), budget_(store.Bounds()), depth_(depth) {}

    // Takes what is known of the top.
    void TakeKnown(StoreSource& known) {
        TreeBudget::Listing ignored;
        static_cast<void>(Append(0, known.children, known.left, ignored));
        next_ = 1;
    }

    // The list grows while it is walked: each folder's children come behind it.
    Result Run() {
        while (next_ < tree_.items.size()) {
            Result listed = ListSome();
            if (!listed) return listed;
        }
        return {};
    }

private:
    // Lists the folders that come next, as many as the store lists at once.
    Result ListSome() {
        std::vector<FolderToList> folders;
        std::vector<std::size_t> indexes;
        for (; next_ < tree_.items.size() && folders.size() < store_.Window(); ++next_) {
            if (!tree_.items[next_].isFolder || tree_.items[next_].depth >= depth_) continue;
            folders.push_back({tree_.items[next_].path});
            indexes.push_back(next_);
        }
        if (folders.empty()) return {};
        TreeBudget::Listing listing;
        const auto start = std::chrono::steady_clock::now();
        store_.ListFolders(folders);
        listing.time = std::chrono::steady_clock::now() - start;
        for (std::size_t at = 0; at < folders.size(); ++at) {
            FolderToList& folder = folders[at];
            if (!folder.result) return std::move(folder.result);
            const std::uint32_t code = Append(indexes[at], folder.children, folder.left, listing);
            if (code != LDAP_SUCCESS) {
                return store_.Keep({Reason::kRefused, CodeKind::kDirectory, code});
            }
            listing.time = {};
        }
        return {};
    }

    // Returns the code of the bound that was passed.
    std::uint32_t Append(std::size_t folder, std::vector<TreeItem>& children, const LeftOut& left,
                         TreeBudget::Listing listing) {
        listing.depth = tree_.items[folder].depth;
        listing.entries = children.size();
        if (!children.empty()) listing.firstName = children.front().path.size();
        for (TreeItem& child : children) {
            listing.nameBytes += child.path.size();
            if (!child.isFolder) ++tree_.files;
            child.parent = folder;
            child.depth = listing.depth + 1;
            tree_.items.push_back(std::move(child));
        }
        tree_.left.links += left.links;
        tree_.left.unsafeNames += left.unsafeNames;
        return budget_.Add(listing);
    }

    Store& store_;
    Tree& tree_;
    TreeBudget budget_;
    const std::uint32_t depth_;
    std::size_t next_ = 0;  // the first item that was not looked at
};

}  // namespace

TakeItem TakeChildren(const std::string& folder, std::vector<TreeItem>& children, LeftOut& left) {
    return [&folder, &children, &left](const StoreItem& item) {
        if (const char* const reason = ReasonToLeaveOut(item)) {
            ++(item.isLink ? left.links : left.unsafeNames);
            TraceLeftOut(folder, item.name, reason);
            return;
        }
        children.push_back({item.name, item.path, item.isFolder});
    };
}

Result ListChildren(Store& store, const std::string& folder, std::vector<TreeItem>& children,
                    LeftOut& left) {
    return store.List(folder, TakeChildren(folder, children, left), left);
}

Result ListTree(Store& store, const std::string& top, Tree& tree, const TreeWish& wish) {
    tree = {};
    tree.items.push_back({{}, top, true});
    TreeListing listing(store, tree, wish.depth);
    if (wish.known != nullptr) listing.TakeKnown(*wish.known);
    return listing.Run();
}

// What stores do that have one request under way at a time.

void Store::ReadFiles(std::span<FileToRead> files, SourceFate fate) {
    for (FileToRead& file : files) file.result = ReadFile(file.path, fate, file.contents);
}

void Store::WriteFiles(std::span<FileToWrite> files) {
    for (FileToWrite& file : files) file.result = WriteFile(file.path, *file.contents, file.rules);
}

void Store::MakeFolders(std::span<FolderToMake> folders) {
    for (FolderToMake& folder : folders) {
        folder.result = MakeFolder(folder.path, FoldersAbove::kExist);
    }
}

void Store::ListFolders(std::span<FolderToList> folders) {
    for (FolderToList& folder : folders) {
        folder.result = ListChildren(*this, folder.path, folder.children, folder.left);
    }
}

void Store::RemoveItems(std::span<ItemToRemove> items) {
    for (ItemToRemove& item : items) {
        item.result = item.contents ? RemoveUnchanged(item.path, *item.contents)
                                    : Remove(item.path, item.kind);
    }
}

}  // namespace depot
