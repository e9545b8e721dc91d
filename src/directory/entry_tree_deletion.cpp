// Deleting an entry with everything below it.
#include <algorithm>
#include <chrono>
#include <utility>

#include "directory/entry_store.h"

namespace depot {
namespace {

// Bounds the memory of what is under way.
constexpr std::size_t kRemovalsAtOnce = 1024;

}  // namespace

// Lists the tree level by level, and deletes what it holds from the bottom up.
class EntryStore::TreeDeletion {
public:
    TreeDeletion(EntryStore& entries, const std::string& dn)
        : entries_(entries), budget_(entries.Bounds()) {
        items_.push_back({dn, true, 0, 0});
    }

    // Fails as the deletion of the entry itself does, or with the bound that the tree passes.
    Result Run() {
        std::uint32_t passed = LDAP_SUCCESS;
        for (std::size_t next = 0; next < items_.size() && passed == LDAP_SUCCESS;) {
            passed = ListSome(next);
        }
        RemoveAll();
        return passed == LDAP_SUCCESS ? std::move(top_) : entries_.connection_.Outcome(passed);
    }

    // The code of the last file of the uppermost folder that resisted.
    std::uint32_t Resisted() const { return resisted_; }

private:
    struct Item {
        std::string dn;
        bool isFolder;
        std::size_t parent;  // the index of the folder that holds it; the top's is its own
        std::uint32_t depth;
        bool isHeld = false;  // whether something in it stays
    };

    // Lists the folders from `next` on, as many as one window takes, and moves it behind them.
    // Returns the code of the bound that was passed.
    std::uint32_t ListSome(std::size_t& next) {
        std::vector<FolderListing> folders;
        std::vector<std::size_t> indexes;
        for (; next < items_.size() && folders.size() < entries_.Window(); ++next) {
            if (!items_[next].isFolder) continue;
            folders.push_back({items_[next].dn});
            indexes.push_back(next);
        }
        if (folders.empty()) return LDAP_SUCCESS;
        const auto start = std::chrono::steady_clock::now();
        entries_.ListTogether(folders);
        TreeBudget::Listing listing;
        listing.time = std::chrono::steady_clock::now() - start;
        for (std::size_t at = 0; at < folders.size(); ++at) {
            // What cannot be listed shows by its deletion whether it holds anything.
            const std::uint32_t code = AddChildren(folders[at].items, indexes[at], listing);
            if (code != LDAP_SUCCESS) return code;
            listing.time = {};
        }
        return LDAP_SUCCESS;
    }

    std::uint32_t AddChildren(const LdapItemList& children, std::size_t folder,
                              TreeBudget::Listing listing) {
        listing.depth = items_[folder].depth;
        listing.entries = children.Count();
        for (const CLDAPItem* child : children) listing.nameBytes += child->path.size();
        if (children.Count() > 0) listing.firstName = children.At(0).path.size();
        const std::uint32_t code = budget_.Add(listing);
        if (code != LDAP_SUCCESS) return code;
        for (const CLDAPItem* child : children) {
            const std::optional<EntryName> name = entries_.schema_.SplitEntryName(child->path);
            if (!name) continue;
            // A folder's name may hold a dot.
            const bool isFolder = name->isFolder || child->isFolder != 0;
            items_.push_back({child->path, isFolder, folder, listing.depth + 1});
        }
        return LDAP_SUCCESS;
    }

    void RemoveAll() {
        for (std::size_t left = items_.size(); left > 0;) {
            std::vector<Removal> removals;
            std::vector<std::size_t> indexes;
            // No folder is sent together with what it holds.
            std::size_t highestParent = 0;
            while (left > 0 && removals.size() < kRemovalsAtOnce) {
                const std::size_t index = left - 1;
                if (!removals.empty() && index <= highestParent) break;
                --left;
                if (items_[index].isHeld && index > 0) {
                    Keep(index);
                    continue;
                }
                highestParent = std::max(highestParent, items_[index].parent);
                removals.push_back({items_[index].dn});
                indexes.push_back(index);
            }
            entries_.RemoveTogether(removals);
            for (std::size_t at = 0; at < removals.size(); ++at) {
                if (removals[at].result.Is(Reason::kUnreachable)) {
                    top_ = std::move(removals[at].result);
                    return;
                }
                Note(indexes[at], std::move(removals[at].result));
            }
        }
    }

    void Note(std::size_t index, Result removed) {
        if (index == 0) {
            top_ = std::move(removed);
            return;
        }
        if (removed) return;
        const Item& item = items_[index];
        if (!item.isFolder && item.parent == 0 && resisted_ == LDAP_SUCCESS) {
            resisted_ = CodeOf(removed);
        }
        Keep(index);
    }

    void Keep(std::size_t index) { items_[items_[index].parent].isHeld = true; }

    EntryStore& entries_;
    TreeBudget budget_;
    std::vector<Item> items_;  // a folder before what it holds
    Result top_;
    std::uint32_t resisted_ = LDAP_SUCCESS;
};

Result EntryStore::RemoveTree(const std::string& dn, Result& resisted) {
    resisted = {};
    if (dn.empty()) return connection_.Outcome(LDAP_PARAM_ERROR);
    TreeDeletion deletion(*this, dn);
    Result removed = deletion.Run();
    resisted = connection_.Outcome(deletion.Resisted());
    return removed;
}

}  // namespace depot
