#include "store/offline_store.h"

#include <algorithm>

#include "directory/comparable_dn.h"
#include "store/tree.h"

namespace depot {
namespace {

std::optional<OfflineBytes> BytesOf(const FileBuffer& contents) {
    return OfflineBytes(contents.bytes.get(), contents.bytes.get() + contents.length);
}

std::vector<OfflineChild> ChildrenOf(std::span<const TreeItem> items) {
    std::vector<OfflineChild> children;
    children.reserve(items.size());
    for (const TreeItem& item : items) children.push_back({item.path, item.isFolder});
    return children;
}

}  // namespace

Error OfflineStore::Away(const std::string& /*path*/) {
    constexpr std::uint32_t kCode = LDAP_SERVER_DOWN;
    return Keep({Reason::kUnreachable, CodeKind::kDirectory, kCode,
                 "The directory cannot be reached. Files that were used before can be read and "
                 "edited, and new files stored; everything else has to wait for it."});
}

Result OfflineStore::Open(bool& opened) {
    opened = false;
    isApart_ = kept_.IsApart(connection_);
    return isApart_ ? Result() : DirectoryStore::Open(opened);
}

std::string OfflineStore::FolderOf(const std::string& path) const {
    return std::string(ParentDN(path));
}

ItemKind OfflineStore::KindOf(const std::string& path) const {
    switch (kept_.Look(path, FolderOf(path))) {
        case OfflineItem::kFile:
            return ItemKind::kFile;
        case OfflineItem::kFolder:
            return ItemKind::kFolder;
        case OfflineItem::kMissing:
            return ItemKind::kMissing;
        default:
            return ItemKind::kOther;
    }
}

void OfflineStore::KeepFile(const std::string& path, const FileBuffer& contents) {
    if (contents.bytes) kept_.KeepFile(path, contents.bytes.get(), contents.length);
}

Result OfflineStore::Look(const std::string& path, ItemKind& kind) {
    if (!isApart_) return DirectoryStore::Look(path, kind);
    kind = KindOf(path);
    if (kind != ItemKind::kOther) return {};
    kind = ItemKind::kMissing;
    return Away(path);
}

Result OfflineStore::ReadIdentifiers(const std::string& path, ItemIdentifiers& identifiers) {
    return isApart_ ? Away(path) : DirectoryStore::ReadIdentifiers(path, identifiers);
}

Result OfflineStore::List(const std::string& folder, const TakeItem& take, LeftOut& left) {
    if (isApart_) return ListApart(folder, take);
    std::vector<OfflineChild> children;
    Result listed = DirectoryStore::List(
        folder,
        [&](const StoreItem& item) {
            children.push_back({item.path, item.isFolder});
            take(item);
        },
        left);
    if (listed) kept_.KeepFolder(folder, std::move(children));
    return listed;
}

Result OfflineStore::ListApart(const std::string& folder, const TakeItem& take) {
    auto children = kept_.FolderOf(folder);
    if (!children) return Away(folder);
    for (const OfflineRecord& edit : kept_.Folder().Edits()) {
        const bool isHere = ComparableDN(FolderOf(edit.dn)) == ComparableDN(folder);
        const bool isListed = std::any_of(
            children->begin(), children->end(),
            [&](const auto& child) { return ComparableDN(child.dn) == ComparableDN(edit.dn); });
        if (!isHere || isListed) continue;
        const std::size_t nameLength = edit.dn.size() - FolderOf(edit.dn).size();
        children->push_back({edit.dn.substr(0, nameLength) + folder, false});
    }
    LdapItemList items;
    for (const OfflineChild& child : *children) items.Add(child.dn, child.isFolder);
    HandOut(items, folder, take);
    return {};
}

Result OfflineStore::ReadFile(const std::string& path, SourceFate fate, FileBuffer& contents) {
    if (!isApart_) {
        Result read = DirectoryStore::ReadFile(path, fate, contents);
        if (read) KeepFile(path, contents);
        return read;
    }
    // What is to go would have to be removed.
    const auto bytes = fate == SourceFate::kStays ? kept_.FileOf(path) : std::nullopt;
    if (!bytes) return Away(path);
    contents = BufferOf(*bytes);
    return {};
}

Result OfflineStore::ReadSource(const std::string& path, SourceFate fate, StoreSource& source) {
    if (!isApart_) {
        Result read = DirectoryStore::ReadSource(path, fate, source);
        if (!read) return read;
        if (source.isFolder) {
            kept_.KeepFolder(path, ChildrenOf(source.children));
        } else {
            KeepFile(path, source.contents);
        }
        return read;
    }
    if (fate == SourceFate::kGoes) return Away(path);
    source.isFolder = KindOf(path) == ItemKind::kFolder;
    if (!source.isFolder) return ReadFile(path, fate, source.contents);
    return ListChildren(*this, path, source.children, source.left);
}

Result OfflineStore::Prepare(std::vector<PlannedItem>& items, ExistingEntries existing) {
    if (!isApart_) return DirectoryStore::Prepare(items, existing);
    const TakePath isUnique = UniquePaths();
    for (PlannedItem& item : items) {
        const ItemKind kind = KindOf(item.path);
        if (item.isFolder && kind != ItemKind::kFolder) return Away(item.path);
        const bool isTaken = kind == ItemKind::kFolder && !item.isFolder;
        if (!isUnique(item.path) || isTaken) {
            return Keep({Reason::kExists, CodeKind::kDirectory, LDAP_ALREADY_EXISTS});
        }
        item.mayReplace = existing == ExistingEntries::kReplace && !item.isFolder;
    }
    return {};
}

Result OfflineStore::WriteFile(const std::string& path, const FileBuffer& contents,
                               WriteRules rules) {
    if (!isApart_) {
        Result written = DirectoryStore::WriteFile(path, contents, rules);
        if (written) KeepFile(path, contents);
        return written;
    }
    const auto present = kept_.FileOf(path);
    // Whether an entry stands there that was never read is not known: none is replaced.
    const ItemKind kind = KindOf(path);
    if (kind == ItemKind::kFolder || (kind == ItemKind::kFile && !present)) return Away(path);
    // Nothing but the folder shows that there will be a place for it.
    if (!present && KindOf(FolderOf(path)) != ItemKind::kFolder) return Away(path);
    if (present && rules.existing == ExistingEntries::kRefuse) {
        return Keep({Reason::kExists, CodeKind::kDirectory, LDAP_ALREADY_EXISTS});
    }
    const DWORD queued = kept_.Queue(path, present, *BytesOf(contents));
    if (queued == ERROR_SUCCESS) return {};
    return Keep({Reason::kRefused, CodeKind::kSystem, queued});
}

Result OfflineStore::MakeFolder(const std::string& path, FoldersAbove above) {
    if (!isApart_) return DirectoryStore::MakeFolder(path, above);
    return KindOf(path) == ItemKind::kFolder ? Result() : Away(path);
}

Result OfflineStore::Rename(PathPair paths, ExistingEntries existing, StoreSource& source) {
    if (isApart_) return Away(paths.from);
    Result renamed = DirectoryStore::Rename(paths, existing, source);
    if (renamed) kept_.Forget(paths.from);
    return renamed;
}

Result OfflineStore::Remove(const std::string& path, ItemKind kind) {
    if (isApart_) return Away(path);
    Result removed = DirectoryStore::Remove(path, kind);
    if (removed) kept_.Forget(path);
    return removed;
}

Result OfflineStore::RemoveUnchanged(const std::string& path, const Digest& contents) {
    if (isApart_) return Away(path);
    Result removed = DirectoryStore::RemoveUnchanged(path, contents);
    if (removed) kept_.Forget(path);
    return removed;
}

Result OfflineStore::RemoveTree(const std::string& path) {
    if (isApart_) return Away(path);
    Result removed = DirectoryStore::RemoveTree(path);
    if (removed) kept_.Forget(path);
    return removed;
}

Result OfflineStore::TestWritable(const std::string& path) {
    if (!isApart_) return DirectoryStore::TestWritable(path);
    const bool isKept = kept_.FileOf(path) || kept_.FolderOf(path);
    return isKept ? Result() : Away(path);
}

// NOLINTBEGIN(bugprone-parent-virtual-call): apart, one item after another is served as in any
// store.
void OfflineStore::ReadFiles(std::span<FileToRead> files, SourceFate fate) {
    if (isApart_) return Store::ReadFiles(files, fate);
    DirectoryStore::ReadFiles(files, fate);
    for (const FileToRead& file : files) {
        if (file.result) KeepFile(file.path, file.contents);
    }
}

void OfflineStore::WriteFiles(std::span<FileToWrite> files) {
    if (isApart_) return Store::WriteFiles(files);
    DirectoryStore::WriteFiles(files);
    for (const FileToWrite& file : files) {
        if (file.result) KeepFile(file.path, *file.contents);
    }
}

void OfflineStore::MakeFolders(std::span<FolderToMake> folders) {
    if (isApart_) return Store::MakeFolders(folders);
    DirectoryStore::MakeFolders(folders);
}

void OfflineStore::ListFolders(std::span<FolderToList> folders) {
    if (isApart_) return Store::ListFolders(folders);
    DirectoryStore::ListFolders(folders);
    for (const FolderToList& folder : folders) {
        if (folder.result) kept_.KeepFolder(folder.path, ChildrenOf(folder.children));
    }
}

void OfflineStore::RemoveItems(std::span<ItemToRemove> items) {
    if (isApart_) return Store::RemoveItems(items);
    DirectoryStore::RemoveItems(items);
    for (const ItemToRemove& item : items) {
        if (item.result) kept_.Forget(item.path);
    }
}
// NOLINTEND(bugprone-parent-virtual-call)

}  // namespace depot
