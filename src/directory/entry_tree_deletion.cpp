// Deleting an entry with everything below it.
#include <algorithm>
#include <utility>

#include "directory/entry_store.h"

namespace depot {

// Goes down the folders that are not empty. A tree may be deeper than the stack: what is still to
// be done stands in a list, by the components of the names, because the names of a deep tree
// together would take much more room.
class EntryStore::TreeDeletion {
public:
    TreeDeletion(EntryStore& entries, const std::string& dn)
        : entries_(entries), walk_(entries), dn_(dn) {}

    // Fails as the deletion of the entry itself does, or with the bound that the tree passes.
    Result Run() {
        for (bool entering = true;;) {
            const Result listed = entering ? Enter() : Result();
            if (walk_.IsOver()) return listed;
            if (open_.back().folders.empty()) {
                const std::uint32_t code = entries_.RemoveCode(dn_);
                if (open_.size() == 1) return entries_.connection_.Outcome(code);
                Leave();
                entering = false;
                continue;
            }
            TakeNextFolder();
            // An empty folder is deleted at once; only one that still has entries is looked into.
            entering = entries_.RemoveCode(dn_) != LDAP_SUCCESS;
            if (!entering) dn_.erase(0, dn_.size() - open_.back().nameLength);
        }
    }

    // The code of the last file of the uppermost folder that resisted.
    std::uint32_t Resisted() const { return resisted_; }

private:
    // A folder whose files are deleted already.
    struct OpenFolder {
        std::size_t nameLength;
        std::vector<std::string> folders;  // the first components of their names, the last first
    };

    // Deletes the files of the folder `dn_` and remembers its folders. Returns how listing it
    // ended.
    Result Enter() {
        LdapItemList children;
        Result listed = walk_.List(dn_, static_cast<std::uint32_t>(open_.size()), children);
        OpenFolder folder = {dn_.size(), {}};
        for (const CLDAPItem* child : children) {
            const std::optional<EntryName> name = entries_.schema_.SplitEntryName(child->path);
            if (!name) continue;
            // A folder's name may hold a dot.
            if (name->isFolder || child->isFolder) {
                folder.folders.push_back(
                    child->path.substr(0, child->path.size() - dn_.size() - 1));
                continue;
            }
            const std::uint32_t code = entries_.RemoveCode(child->path);
            if (code != LDAP_SUCCESS && open_.empty()) resisted_ = code;
        }
        std::reverse(folder.folders.begin(), folder.folders.end());
        open_.push_back(std::move(folder));
        return listed;
    }

    void TakeNextFolder() {
        std::vector<std::string>& folders = open_.back().folders;
        dn_.insert(0, folders.back() + ",");
        folders.pop_back();
    }

    void Leave() {
        open_.pop_back();
        dn_.erase(0, dn_.size() - open_.back().nameLength);
    }

    EntryStore& entries_;
    BoundedWalk walk_;
    std::string dn_;  // of the entry that is being worked on
    std::vector<OpenFolder> open_;
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
