#include "fileops/item_operations.h"

#include <algorithm>
#include <memory>
#include <set>

#include "directory/comparable_dn.h"
#include "fileops/depot_file.h"
#include "fileops/file_place.h"
#include "fileops/held_connections.h"
#include "fileops/list_progress.h"
#include "model/depot_paths.h"
#include "platform/error_text.h"
#include "platform/file_names.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr char kCaption[] = "Quillon";

// Returns the directory that holds the item; null for an item of the file system.
CLDAPItems* DirectoryOf(const CDepotItem& item) {
    return item.depot ? DirectoryOf(*item.depot, item.path) : nullptr;
}

std::string StoragePath(const CDepotItem& item) {
    return item.depot ? StorageOf(*item.depot, item.path) : item.path;
}

std::unique_ptr<CDepotItem> PlainItem(const std::string& path) {
    return std::make_unique<CDepotItem>(path, nullptr);
}

// Removes the temporary folders that an operation needed, whatever became of it.
class TemporaryFolders {
public:
    explicit TemporaryFolders(HWND window) : window_(window) {}
    ~TemporaryFolders() {
        if (!folders_.empty()) {
            RemoveFoldersQuietly(folders_, window_);
        }
    }
    TemporaryFolders(const TemporaryFolders&) = delete;
    TemporaryFolders& operator=(const TemporaryFolders&) = delete;

    // Returns a new folder; empty when none can be made.
    std::string Make() {
        folders_.emplace_back();
        folders_.back() = MakeTempFolder();
        if (!folders_.back().empty()) return folders_.back();
        folders_.pop_back();
        return {};
    }

private:
    HWND window_;
    std::vector<std::string> folders_;
};

// Copies an entry of a directory into a folder under its own name; empty when that fails.
std::string CopyIntoFolder(const CDepotItem& item, const std::string& folder, SourceFate fate,
                           std::string* errorText, const TransferWatcher& watcher,
                           CopiedSource& copied) {
    if (folder.empty()) return {};
    const bool done = CopyFile(*item.depot, item.path, folder + "\\", nullptr, false, errorText,
                               watcher, fate, &copied) != 0;
    return done ? JoinPath(folder, NamePart(RemoveTrailingBackslash(item.path))) : std::string();
}

int TellLeftovers(const Leftovers& left, std::string* errorText) {
    if (errorText != nullptr) *errorText = LeftoversText(left);
    return 0;
}

// The names under which the items of a list go to one target. A second one of a name would replace
// what has just arrived.
class TargetNames {
public:
    explicit TargetNames(bool isFolder) : isFolder_(isFolder) {}

    // Returns false when an earlier item has the name already.
    bool Take(const CDepotItem& item) {
        // Where the target is no folder, every item goes to the same name.
        const std::string name = NamePart(RemoveTrailingBackslash(item.path));
        return names_.insert(isFolder_ ? ComparableDN(name) : std::string()).second;
    }

private:
    const bool isFolder_;
    std::set<std::string> names_;
};

int OperateOneByOne(const CDepotItems& items, const CDepotItem& target, UINT operation, HWND window,
                    std::string* errorText, const TransferWatcher& watcher) {
    HeldConnections connections;
    ListProgress progress(watcher, items.Count());
    TargetNames names(EndsInSeparator(target.path));
    for (std::size_t index = 0; index < items.Count(); ++index) {
        const CDepotItem& item = *items.At(index);
        const bool deletes = operation == FO_DELETE;
        if (!deletes && !names.Take(item)) {
            return DirectoryOf(target)->Fail(LDAP_ALREADY_EXISTS, errorText);
        }
        const bool ready = deletes || connections.Hold(target.depot, target.path, nullptr);
        if (progress.IsStopped() || !ready || !connections.Hold(item.depot, item.path, nullptr) ||
            ItemOperation(item, &target, operation, window, errorText, progress.Next()) == 0) {
            return 0;
        }
    }
    return 1;
}

bool CanCopy(const CDepotItem& source, const CDepotItem* target) {
    return source.depot != nullptr && target != nullptr && !target->path.empty();
}

// Deletes a source whose copy has arrived. Returns 0 only when there was something to keep.
int DeleteMovedEntry(CLDAPItems& directory, const CopiedSource& copied, std::string* errorText) {
    const Leftovers left = RemoveCopiedEntries(directory, copied);
    directory.SetLastError(left.code);
    return left.changed ? TellLeftovers(left, errorText) : 1;
}

int DeleteMovedFile(const CDepotItem& item, const CopiedSource& copied, HWND window,
                    std::string* errorText) {
    if (!IsAsCopied(copied)) {
        const Leftovers left = RemoveCopiedFiles(copied);
        return left.changed ? TellLeftovers(left, errorText) : 1;
    }
    CDepotItems source;
    source.Append(item.Clone());
    ShellOperation(source, nullptr, FO_DELETE, FOF_NOCONFIRMATION, window, nullptr);
    return 1;
}

int MoveItem(const CDepotItem& item, const CDepotItem* target, HWND window, std::string* errorText,
             const TransferWatcher& watcher) {
    if (!CanCopy(item, target) || HoldsRoot(*item.depot, item.path)) return 0;
    HeldConnections connections;
    CopiedSource copied;
    if (!connections.Hold(target->depot, target->path, nullptr) ||
        !connections.Hold(item.depot, item.path, nullptr) ||
        CopyItem(item, target, true, nullptr, watcher, SourceFate::kGoes, &copied) == 0) {
        return 0;
    }
    CLDAPItems* const directory = DirectoryOf(item);
    return directory ? DeleteMovedEntry(*directory, copied, errorText)
                     : DeleteMovedFile(item, copied, window, errorText);
}

// Tells whether the shell would replace what it has just moved by another item of that name, and
// would not ask.
bool ReplacesMovedItems(const std::vector<std::string>& sources, UINT operation,
                        FILEOP_FLAGS flags) {
    constexpr FILEOP_FLAGS kHasOtherNames = FOF_RENAMEONCOLLISION | FOF_MULTIDESTFILES;
    const bool asks = (flags & FOF_NOCONFIRMATION) == 0;
    if (operation != FO_MOVE || asks || (flags & kHasOtherNames) != 0) return false;
    std::set<std::string> names;
    return !std::all_of(sources.begin(), sources.end(), [&](const std::string& source) {
        return names.insert(ToLower(NamePart(RemoveTrailingBackslash(source)))).second;
    });
}

// Puts the system's last error into the error text.
int FailShellOperation(std::string* errorText) {
    const DWORD error = GetLastError();
    if (errorText != nullptr && error != ERROR_SUCCESS) {
        FormatErrorText(error, nullptr, kCaption, errorText, nullptr);
    }
    return 0;
}

// Tells whether the operation would take a depot's root away.
bool TakesRootAway(const CDepotItems& items, UINT operation) {
    if (operation == FO_COPY) return false;
    for (std::size_t index = 0; index < items.Count(); ++index) {
        const CDepotItem& item = *items.At(index);
        if (item.depot != nullptr && HoldsRoot(*item.depot, item.path)) return true;
    }
    return false;
}

// Tells whether the shell would take the name of an entry for a path.
bool AnyInDirectory(const CDepotItems& items, const CDepotItem* target) {
    if (target != nullptr && DirectoryOf(*target)) return true;
    for (std::size_t index = 0; index < items.Count(); ++index) {
        if (DirectoryOf(*items.At(index))) return true;
    }
    return false;
}

// An entry that is to be deleted once the shell is done with its copy.
struct FetchedEntry {
    const CDepotItem* item;
    CopiedSource copied;
};

// What a list comes to before the shell does it.
struct ShellWork {
    ShellWork(UINT wanted, HWND window)
        : operation(wanted),
          removesSources(wanted == FO_MOVE || wanted == FO_DELETE),
          temporaryFolders(window) {}

    const UINT operation;
    const bool removesSources;
    TemporaryFolders temporaryFolders;
    HeldConnections connections;
    CDepotItems items;
    std::vector<std::string> copies;  // of the entries
    std::vector<FetchedEntry> entriesToRemove;
};

// Fails when two items of a list with entries would get one name in the folder that it goes into,
// where a shell that does not ask would replace the first by the second.
bool RefuseNameTwice(const CDepotItems& items, UINT operation, FILEOP_FLAGS flags,
                     std::string* errorText) {
    const bool asks = operation == FO_COPY && (flags & FOF_NOCONFIRMATION) == 0;
    const bool renames = operation == FO_COPY && (flags & FOF_RENAMEONCOLLISION) != 0;
    if (operation == FO_DELETE || asks || renames) return false;
    FileNameSet names;
    bool isTwice = false;
    CLDAPItems* directory = nullptr;
    for (std::size_t index = 0; index < items.Count(); ++index) {
        const CDepotItem& item = *items.At(index);
        isTwice |= !names.Insert(NamePart(RemoveTrailingBackslash(item.path)));
        if (directory == nullptr) directory = DirectoryOf(item);
    }
    if (!isTwice || directory == nullptr) return false;
    directory->Fail(LDAP_NAMING_VIOLATION, nullptr);
    if (errorText != nullptr) *errorText = kSharedNamesText;
    return true;
}

// Tells whether the item is an entry that its name, or one below it, kept from being copied. It can
// be deleted all the same.
bool IsKeptByNames(const CDepotItem& item) {
    return DirectoryOf(item)->LastError() == LDAP_NAMING_VIOLATION &&
           !HoldsRoot(*item.depot, item.path);
}

// Some shells report a move as done that they left. What was moved is no longer where it was.
bool AllCopiesLeft(const ShellWork& work) {
    return std::none_of(work.copies.begin(), work.copies.end(), PathMayExist);
}

// Fetches an entry for the shell. For a deletion a name that no local file can have is no
// hindrance: such an entry is removed without a copy.
bool CollectEntry(const CDepotItem& item, ShellWork& work, std::string* errorText,
                  const TransferWatcher& watcher) {
    const SourceFate fate = work.removesSources ? SourceFate::kGoes : SourceFate::kStays;
    std::string reason;
    FetchedEntry entry = {&item, {}};
    DirectoryOf(item)->SetLastError(LDAP_SUCCESS);
    const std::string copy =
        CopyIntoFolder(item, work.temporaryFolders.Make(), fate, &reason, watcher, entry.copied);
    if (!copy.empty()) {
        if (!work.items.Append(PlainItem(copy))) return false;
        work.copies.push_back(copy);
    } else if (work.operation != FO_DELETE || !IsKeptByNames(item)) {
        if (errorText != nullptr && !reason.empty()) *errorText = reason;
        return false;
    }
    if (work.removesSources) work.entriesToRemove.push_back(std::move(entry));
    return true;
}

// Puts what the shell is to work on together. What cannot be fetched must not be removed, and the
// others not half done.
bool Collect(const CDepotItems& items, ShellWork& work, std::string* errorText,
             const TransferWatcher& watcher) {
    ListProgress progress(watcher, items.Count());
    for (std::size_t index = 0; index < items.Count(); ++index) {
        const CDepotItem& item = *items.At(index);
        if (!DirectoryOf(item)) {
            if (!work.items.Append(item.Clone())) return false;
            continue;
        }
        if (progress.IsStopped() || !work.connections.Hold(item.depot, item.path, errorText) ||
            !CollectEntry(item, work, errorText, progress.Next())) {
            return false;
        }
    }
    return !progress.IsStopped();
}

// Removes the entries of a list up to the first that cannot be removed. What is only deleted is
// deleted with whatever it holds by now.
int RemoveEntries(const ShellWork& work, std::string* errorText) {
    for (const auto& [item, copied] : work.entriesToRemove) {
        if (work.operation != FO_MOVE) {
            if (DeleteItem(*item) == 0) return 0;
            continue;
        }
        CLDAPItems& directory = *DirectoryOf(*item);
        const Leftovers left = RemoveCopiedEntries(directory, copied);
        directory.SetLastError(left.code);
        if (left.code != LDAP_SUCCESS) return TellLeftovers(left, errorText);
    }
    return 1;
}

}  // namespace

int CopyItem(const CDepotItem& source, const CDepotItem* target, bool failIfExists,
             std::string* errorText, const TransferWatcher& watcher, SourceFate fate,
             CopiedSource* copied) {
    if (!CanCopy(source, target)) return 0;
    return CopyFile(*source.depot, source.path, target->path, target->depot, failIfExists,
                    errorText, watcher, fate, copied);
}

int DeleteItem(const CDepotItem& item) {
    return item.depot ? DeleteFile(*item.depot, item.path) : 0;
}

int ShellOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                   FILEOP_FLAGS flags, HWND window, std::string* errorText) {
    if (items.Count() == 0) return 1;
    // A deletion takes no notice of a target, whatever that holds.
    if (operation == FO_DELETE) target = nullptr;
    if (TakesRootAway(items, operation) || AnyInDirectory(items, target)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FailShellOperation(errorText);
    }
    std::vector<std::string> sources;
    for (std::size_t index = 0; index < items.Count(); ++index) {
        sources.push_back(StoragePath(*items.At(index)));
    }
    if (ReplacesMovedItems(sources, operation, flags)) {
        SetLastError(ERROR_ALREADY_EXISTS);
        return FailShellOperation(errorText);
    }
    const std::string destination = target ? StoragePath(*target) : std::string();
    if (RunShellOperation(operation, sources, target ? &destination : nullptr, flags, window)) {
        return 1;
    }
    return FailShellOperation(errorText);
}

int ItemOperation(const CDepotItem& item, const CDepotItem* target, UINT operation, HWND window,
                  std::string* errorText, const TransferWatcher& watcher) {
    switch (operation) {
        case FO_COPY:
            return CopyItem(item, target, true, nullptr, watcher);
        case FO_DELETE:
            return DeleteItem(item);
        case FO_MOVE:
            return MoveItem(item, target, window, errorText, watcher);
        default:
            return 0;
    }
}

int ListOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                  FILEOP_FLAGS flags, HWND window, std::string* errorText,
                  const TransferWatcher& watcher) {
    if (target != nullptr && DirectoryOf(*target)) {
        return OperateOneByOne(items, *target, operation, window, errorText, watcher);
    }
    if (RefuseNameTwice(items, operation, flags, errorText)) return 0;
    ShellWork work(operation, window);
    if (!Collect(items, work, errorText, watcher)) return 0;
    const int result = ShellOperation(work.items, target, operation, flags, window, errorText);
    if (result == 0 || (operation == FO_MOVE && !AllCopiesLeft(work))) return 0;
    return RemoveEntries(work, errorText);
}

}  // namespace depot
