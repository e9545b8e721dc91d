#include "depotctl/local_tree.h"

#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "directory/local_listing.h"
#include "platform/file_names.h"
#include "platform/local_file.h"
#include "platform/paths.h"

namespace depot::ctl {

LocalTree::LocalTree(const std::string& source, const std::string& target) {
    FileNameSet targets;
    steps_.push_back({source, target, true});
    // The list grows while it is walked: each folder's children come behind it.
    for (std::size_t next = 0; next < steps_.size(); ++next) {
        const TransferStep parent = steps_[next];
        if (!parent.isFolder) continue;
        LdapItemList children;
        const std::uint32_t links = AddLocalChildren(parent.source, Subfolders::kTake, children);
        if (links == kNotListed) Refuse("\"" + Utf8FromAnsi(parent.source) + "\" cannot be listed");
        links_ += links;
        for (const CLDAPItem* child : children) {
            const bool isFolder = child->isFolder != 0;
            const std::string path = JoinPath(parent.target, NamePart(child->path));
            steps_.push_back({child->path, path, isFolder});
            if (!isFolder) ++files_;
            if (!targets.Insert(path)) sharesNames_ = true;
        }
    }
}

LocalFailure LocalTree::Copy(const TransferWatcher& watcher) {
    TransferProgress state;
    state.filesInAll = files_;
    for (const TransferStep& step : steps_) {
        // Before the copy: a change meanwhile shows afterwards.
        stamps_.push_back(StampOf(step.source));
        const bool done = step.isFolder
                              ? EnsureLocalFolder(step.target)
                              : CopyFileA(step.source.c_str(), step.target.c_str(), FALSE) != FALSE;
        if (!done) return {step.target, GetLastError()};
        if (step.isFolder) continue;
        ++state.filesDone;
        state.bytesDone += stamps_.back().size;
        if (!watcher(state) && state.filesDone < state.filesInAll) return {{}, ERROR_CANCELLED};
    }
    return {};
}

bool LocalTree::RemoveSource() const {
    bool gone = true;
    // What a folder holds comes behind it.
    for (std::size_t index = steps_.size(); index-- > 0;) {
        const TransferStep& step = steps_[index];
        const bool isAsCopied = step.isFolder || StampOf(step.source) == stamps_[index];
        if (!isAsCopied || !Remove(step)) gone = false;
    }
    return gone;
}

LocalTree::Stamp LocalTree::StampOf(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data);
    const auto join = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
    return {join(data.nFileSizeHigh, data.nFileSizeLow),
            join(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime)};
}

bool LocalTree::Remove(const TransferStep& step) {
    const auto remove = step.isFolder ? RemoveDirectoryA : DeleteFileA;
    const char* const path = step.source.c_str();
    if (remove(path)) return true;
    // What may only be read goes, too: a copied file may only be read, either.
    return SetFileAttributesA(path, FILE_ATTRIBUTE_NORMAL) && remove(path);
}

}  // namespace depot::ctl
