#include "store/folder_store.h"

#include <limits>
#include <memory>

#include "platform/error_text.h"
#include "platform/file_names.h"
#include "platform/file_search.h"
#include "platform/file_time.h"
#include "platform/local_file.h"
#include "platform/local_name.h"
#include "platform/no_destructor.h"
#include "platform/paths.h"
#include "platform/replace_file.h"
#include "platform/same_file.h"
#include "platform/short_name.h"
#include "platform/text.h"
#include "store/tree.h"

namespace depot {
namespace {

Reason ReasonOfSystem(DWORD code) {
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return Reason::kMissing;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return Reason::kExists;
        case ERROR_DIR_NOT_EMPTY:
            return Reason::kNotEmpty;
        case ERROR_INVALID_NAME:
        case ERROR_BUFFER_OVERFLOW:
            return Reason::kBadName;
        case ERROR_INVALID_PARAMETER:
            return Reason::kInvalid;
        default:
            return Reason::kRefused;
    }
}

Result Done(bool done, const std::string& path) {
    return done ? Result() : SystemError(GetLastError(), path);
}

// The failure of reading or writing as such: what the system says in it of other files, or of the
// call, means nothing to whoever asked for this one.
Error Failure(const std::string& path) {
    Error error = SystemError(GetLastError(), path);
    if (error.reason != Reason::kMissing) error.reason = Reason::kRefused;
    return error;
}

Flush FlushFor(SourceFate fate) {
    return fate == SourceFate::kGoes ? Flush::kNow : Flush::kLater;
}

// What a listing says of one find. The text of `item` is used again for the next one.
void Describe(const WIN32_FIND_DATAA& found, std::size_t baseLength, StoreItem& item) {
    item.name = found.cFileName;
    item.path.resize(baseLength);
    item.path += found.cFileName;
    item.isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    item.isLink = IsLinkToFolder(found);
    item.details = &found;
}

std::uint64_t SizeOf(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return 0;
    return Joined(data.nFileSizeHigh, data.nFileSizeLow);
}

TreeBounds NoBounds() {
    TreeBounds bounds;
    bounds.entries = bounds.nameBytes = std::numeric_limits<std::uint64_t>::max();
    bounds.longestName = std::numeric_limits<std::size_t>::max();
    bounds.depth = std::numeric_limits<std::uint32_t>::max();
    bounds.listingTime = std::chrono::steady_clock::duration::max();
    return bounds;
}

std::string LeftOutText(const LeftOut& left) {
    const std::string links = LinksText(left.links);
    const std::string names = UnsafeLocalNamesText(left.unsafeNames);
    return Concatenate({links, links.empty() || names.empty() ? "" : "\n", names});
}

// Removes everything from the bottom up. Returns the first failure.
Result RemoveListed(FolderStore& store, const Tree& tree) {
    Result first;
    for (std::size_t index = tree.items.size(); index-- > 0;) {
        const TreeItem& item = tree.items[index];
        Result removed =
            store.Remove(item.path, item.isFolder ? ItemKind::kFolder : ItemKind::kFile);
        if (!removed && !removed.Is(Reason::kMissing) && first.IsDone()) first = std::move(removed);
    }
    return first;
}

}  // namespace

Error SystemError(DWORD code, const std::string& path) {
    Error error = {ReasonOfSystem(code), CodeKind::kSystem, code};
    FormatErrorText(code, path.c_str(), nullptr, &error.text, nullptr);
    SetLastError(code);
    return error;
}

std::string LinksText(std::uint32_t count) {
    if (count == 0) return {};
    return Concatenate(
        {CountText(count, "link to a folder was", "links to folders were"), " left out."});
}

std::string UnsafeLocalNamesText(std::uint32_t count) {
    if (count == 0) return {};
    return Concatenate({CountText(count, "file or folder was", "files and folders were"),
                        " left out: the system's code page cannot hold the name."});
}

FolderStore& FolderStore::Instance() {
    static NoDestructor<FolderStore> store;
    return *store;
}

Result FolderStore::Open(bool& opened) {
    opened = false;
    return {};
}

std::string FolderStore::ChildPath(const std::string& folder, const std::string& name,
                                   bool /*isFolder*/) const {
    return JoinPath(folder, name);
}

bool FolderStore::CanHold(const std::string& name) const {
    return IsSafeLocalName(name);
}

bool FolderStore::IsSame(const std::string& path, const std::string& other) const {
    return IsSameFile(path, other);
}

bool FolderStore::IsInside(const std::string& path, const std::string& folder) const {
    return IsInsideFolder(path, folder);
}

TakePath FolderStore::UniquePaths() const {
    return [paths = std::make_shared<FileNameSet>()](const std::string& path) {
        return paths->Insert(path);
    };
}

Result FolderStore::CheckTarget(const std::string& path) const {
    return IsAbsolutePath(path) ? Result() : SystemError(ERROR_INVALID_PARAMETER, path);
}

Result FolderStore::Look(const std::string& path, ItemKind& kind) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    kind = ItemKind::kMissing;
    if (attributes == INVALID_FILE_ATTRIBUTES) return {};
    const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    kind = isFolder ? ItemKind::kFolder : ItemKind::kFile;
    return {};
}

Result FolderStore::ReadIdentifiers(const std::string& /*path*/, ItemIdentifiers& identifiers) {
    identifiers = {};
    return {};
}

Result FolderStore::List(const std::string& folder, const TakeItem& take, LeftOut& left) {
    StoreItem item;
    const std::string base = EnsureTrailingBackslash(folder);
    item.path = base;
    WIN32_FIND_DATAA found = {};
    FileSearch search(base + "*.*");
    while (search.Next(found)) {
        if (IsDotName(found)) continue;
        Describe(found, base.size(), item);
        take(item);
    }
    left.unsafeNames += search.UnsafeNames();
    return Done(search.IsComplete(), folder);
}

Result FolderStore::ReadFile(const std::string& path, SourceFate /*fate*/, FileBuffer& contents) {
    contents = {};
    const bool read = ReadLocalFile(path, [&](std::size_t length) {
        contents.bytes = std::make_unique<std::uint8_t[]>(length + kFileBufferReserve);
        contents.length = static_cast<std::uint32_t>(length);
        return contents.bytes.get();
    });
    if (read) return {};
    contents = {};
    return Failure(path);
}

Result FolderStore::ReadSource(const std::string& path, SourceFate fate, StoreSource& source) {
    source.isFolder = IsLocalFolder(path);
    if (!source.isFolder) return ReadFile(path, fate, source.contents);
    // A link is no part of a tree, but may be the top of one that stays.
    if (fate == SourceFate::kGoes && IsLinkToFolder(path)) ++source.left.links;
    return ListChildren(*this, path, source.children, source.left);
}

const TreeBounds& FolderStore::Bounds() const {
    static NoDestructor<TreeBounds> bounds(NoBounds());
    return *bounds;
}

Error FolderStore::IncompleteError(const LeftOut& left) const {
    return {Reason::kIncomplete, CodeKind::kDirectory, LDAP_NOT_SUPPORTED, LeftOutText(left)};
}

Result FolderStore::Prepare(std::vector<PlannedItem>& items, ExistingEntries existing) {
    const TakePath isUnique = UniquePaths();
    bool anyShared = false;
    bool anyExists = false;
    for (PlannedItem& item : items) {
        anyShared |= !isUnique(item.path);
        item.mayReplace = !item.isFolder && PathMayExist(item.path);
        anyExists |= item.mayReplace;
    }
    if (anyShared) {
        return Error{Reason::kSharedName, CodeKind::kDirectory, LDAP_NAMING_VIOLATION,
                     kSharedNamesText};
    }
    const bool refused = anyExists && existing == ExistingEntries::kRefuse;
    return refused ? SystemError(ERROR_FILE_EXISTS, items.front().path) : Result();
}

Result FolderStore::WriteFile(const std::string& path, const FileBuffer& contents,
                              WriteRules rules) {
    const std::uint8_t* const bytes = contents.bytes.get();
    const Flush flush = FlushFor(rules.fate);
    if (rules.existing == ExistingEntries::kReplace) {
        const bool replaced = ReplaceLocalFile(path, bytes, contents.length, flush);
        return replaced ? Result() : Failure(path);
    }
    switch (CreateLocalFile(path, bytes, contents.length, flush)) {
        case FileCreation::kDone:
            return {};
        case FileCreation::kExists:
            return SystemError(ERROR_FILE_EXISTS, path);
        default:
            return Failure(path);
    }
}

Result FolderStore::MakeFolder(const std::string& path, FoldersAbove above) {
    if (above == FoldersAbove::kAreMade) return EnsureLocalFolder(path) ? Result() : Failure(path);
    // A folder above it that is gone meanwhile stays gone.
    if (CreateDirectoryA(path.c_str(), nullptr)) return {};
    const DWORD error = GetLastError();
    // One of another name, which has this one as its short name, is not the folder that is meant.
    if (IsLocalFolder(path) && !IsShortNameOfAnother(path)) return {};
    SetLastError(error);
    return Failure(path);
}

std::optional<Result> FolderStore::CopyFile(PathPair paths, WriteRules rules,
                                            std::uint64_t& bytes) {
    const bool failsIfExists = rules.existing == ExistingEntries::kRefuse;
    if (CopyLocalFile(paths.from, paths.to, failsIfExists, FlushFor(rules.fate))) {
        bytes = SizeOf(paths.to);
        return Result();
    }
    const DWORD error = GetLastError();
    // The system calls a path that is too long "not found", which helps no user.
    const bool isTooLong = paths.to.size() >= kMaxPathBytes;
    Error failure = SystemError(isTooLong ? ERROR_BUFFER_OVERFLOW : error, paths.to);
    failure.code = error;
    SetLastError(error);
    return failure;
}

Result FolderStore::Rename(PathPair paths, ExistingEntries existing, StoreSource& /*source*/) {
    const DWORD flags = existing == ExistingEntries::kReplace ? MOVEFILE_REPLACE_EXISTING : 0;
    return Done(MoveFileExA(paths.from.c_str(), paths.to.c_str(), flags) != FALSE, paths.to);
}

Result FolderStore::Remove(const std::string& path, ItemKind kind) {
    const auto remove = kind == ItemKind::kFolder ? RemoveDirectoryA : DeleteFileA;
    return Done(remove(path.c_str()) != FALSE, path);
}

Result FolderStore::RemoveUnchanged(const std::string& path, const Digest& contents) {
    if (!PathMayExist(path)) return SystemError(ERROR_FILE_NOT_FOUND, path);
    FileBuffer present;
    Result read = ReadFile(path, SourceFate::kStays, present);
    if (!read) return read;
    if (DigestOf(present) != contents) {
        return Error{Reason::kChanged, CodeKind::kDirectory, kContentsChanged};
    }
    return Remove(path, ItemKind::kFile);
}

Result FolderStore::RemoveTree(const std::string& path) {
    if (!IsLocalFolder(path)) return Remove(path, ItemKind::kFile);
    if (IsLinkToFolder(path)) return Remove(path, ItemKind::kFolder);
    Tree tree;
    Result listed = ListTree(*this, path, tree);
    if (!listed) return listed;
    return RemoveListed(*this, tree);
}

Error FolderStore::Keep(Error error) {
    if (error.kind == CodeKind::kSystem) SetLastError(error.code);
    return error;
}

}  // namespace depot
