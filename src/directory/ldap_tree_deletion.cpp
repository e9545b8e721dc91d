// Deleting an entry with everything below it.
#include <algorithm>
#include <utility>

#include "directory/ldap_items.h"

namespace depot {
namespace {

// Goes down the folders that are not empty. A tree may be deeper than the stack: what is still to
// be done stands in a list, by the components of the names, because the names of a deep tree
// together would take much more room.
class TreeDeletion {
public:
    TreeDeletion(CLDAPItems& directory, const std::string& dn)
        : directory_(directory), walk_(directory), dn_(dn) {}

    // Calls `onFailure` with the code of each file of the uppermost folder that resists. Returns
    // the code of deleting the entry itself, or of the bound that the tree passes.
    template <class OnFailure>
    std::uint32_t Run(const OnFailure& onFailure) {
        Enter(onFailure);
        for (;;) {
            if (walk_.IsOver()) return directory_.LastError();
            if (open_.back().folders.empty()) {
                const std::uint32_t code = directory_.RemoveEmptyEntry(dn_);
                if (open_.size() == 1) return code;
                Leave();
                continue;
            }
            TakeNextFolder();
            // An empty folder goes at once; only one that still has entries is looked into.
            if (directory_.RemoveEmptyEntry(dn_) == LDAP_SUCCESS) {
                dn_.erase(0, dn_.size() - open_.back().nameLength);
                continue;
            }
            Enter([](std::uint32_t) {});
        }
    }

private:
    // A folder whose files are gone already.
    struct OpenFolder {
        std::size_t nameLength;
        std::vector<std::string> folders;  // the first components of their names, the last first
    };

    // Deletes the files of the folder `dn_` and remembers its folders.
    template <class OnFailure>
    void Enter(const OnFailure& onFailure) {
        LdapItemList children;
        walk_.List(dn_, static_cast<std::uint32_t>(open_.size()), children);
        OpenFolder folder = {dn_.size(), {}};
        for (const CLDAPItem* child : children) {
            std::string name;
            bool isFolder = false;
            if (directory_.SplitEntryName(child->path, name, isFolder) == 0) continue;
            // A folder's name may hold a dot.
            if (isFolder || child->isFolder) {
                folder.folders.push_back(
                    child->path.substr(0, child->path.size() - dn_.size() - 1));
                continue;
            }
            const std::uint32_t code = directory_.RemoveEmptyEntry(child->path);
            if (code != LDAP_SUCCESS) onFailure(code);
        }
        std::reverse(folder.folders.begin(), folder.folders.end());
        open_.push_back(std::move(folder));
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

    CLDAPItems& directory_;
    TreeWalk walk_;
    std::string dn_;  // of the entry that is being worked on
    std::vector<OpenFolder> open_;
};

}  // namespace

int CLDAPItems::DeleteTree(const std::string& dn, std::string* errorText) {
    if (dn.empty()) return Fail(LDAP_PARAM_ERROR, errorText);
    const std::uint32_t code =
        TreeDeletion(*this, dn).Run([&](std::uint32_t failure) { Fail(failure, errorText); });
    return code == LDAP_SUCCESS ? 1 : Fail(code, errorText);
}

}  // namespace depot
