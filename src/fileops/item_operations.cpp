#include "fileops/item_operations.h"

#include <algorithm>
#include <memory>
#include <set>

#include "fileops/copied_source.h"
#include "fileops/depot_file.h"
#include "fileops/file_place.h"
#include "fileops/list_progress.h"
#include "fileops/open_stores.h"
#include "fileops/outcome.h"
#include "platform/error_text.h"
#include "platform/file_names.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr char kCaption[] = "Quillon";

// Tells whether the shell can work on what is there.
bool IsInReach(const StorePath& place) {
    return place.store->LocalPath(place.path).has_value();
}
bool IsInReach(const CDepotItem& item) {
    return IsInReach(PlaceOf(item));
}

std::unique_ptr<CDepotItem> PlainItem(const std::string& path) {
    return std::make_unique<CDepotItem>(path, nullptr);
}

std::string NameOf(const CDepotItem& item) {
    return NamePart(RemoveTrailingBackslash(item.path));
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

int OperateOneByOne(const CDepotItems& items, const CDepotItem& target, UINT operation, HWND window,
                    std::string* errorText, const TransferWatcher& watcher) {
    const StorePath place = PlaceOf(target);
    const bool deletes = operation == FO_DELETE;
    const bool isFolder = EndsInSeparator(target.path);
    OpenStores stores;
    ListProgress progress(watcher, items.Count());
    // A second item of a name would replace what has just arrived.
    const TakePath isNewName = place.store->UniquePaths();
    for (std::size_t index = 0; index < items.Count(); ++index) {
        const CDepotItem& item = *items.At(index);
        // Where the target is no folder, every item gets the same name.
        if (!deletes && !isNewName(isFolder ? NameOf(item) : std::string())) {
            return Report(*place.store, Error{Reason::kExists}, errorText);
        }
        const bool ready = deletes || stores.Hold(place);
        if (progress.IsStopped() || !ready || !stores.Hold(PlaceOf(item)) ||
            ItemOperation(item, &target, operation, window, errorText, progress.Next()) == 0) {
            return 0;
        }
    }
    return 1;
}

bool CanCopy(const CDepotItem& source, const CDepotItem* target) {
    return source.depot != nullptr && target != nullptr && !target->path.empty();
}

// Copies an item to the target's path in the target's depot.
Result CopyTo(const CDepotItem& source, const CDepotItem& target, const TransferWatcher& watcher,
              CopiedSource* copied) {
    return CopyDepotFile({*source.depot, source.path, target.path, target.depot, true, watcher,
                          copied ? SourceFate::kGoes : SourceFate::kStays, copied});
}

// Deletes a source whose copy has arrived. Returns 0 only when there was something to keep.
int DeleteMoved(const CDepotItem& item, const CopiedSource& copied, HWND window,
                std::string* errorText) {
    const StorePath place = PlaceOf(item);
    if (IsInReach(place) && IsAsCopied(*place.store, copied)) {
        CDepotItems source;
        source.Append(item.Clone());
        ShellOperation(source, nullptr, FO_DELETE, FOF_NOCONFIRMATION, window, nullptr);
        return 1;
    }
    const Leftovers left = RemoveCopied(*place.store, copied);
    const int result =
        Report(*place.store, LeftoversResult(left), left.changed ? errorText : nullptr);
    return left.changed ? result : 1;
}

int MoveItem(const CDepotItem& item, const CDepotItem* target, HWND window, std::string* errorText,
             const TransferWatcher& watcher) {
    if (!CanCopy(item, target) || HoldsRoot(*item.depot, item.path)) return 0;
    OpenStores stores;
    CopiedSource copied;
    if (!stores.Hold(PlaceOf(*target)) || !stores.Hold(PlaceOf(item)) ||
        !CopyTo(item, *target, watcher, &copied)) {
        return 0;
    }
    return DeleteMoved(item, copied, window, errorText);
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
bool AnyOutOfReach(const CDepotItems& items, const CDepotItem* target) {
    if (target != nullptr && !IsInReach(*target)) return true;
    return !std::all_of(items.begin(), items.end(),
                        [](const CDepotItem* item) { return IsInReach(*item); });
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
    OpenStores stores;
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
    const CDepotItem* entry = nullptr;
    for (const CDepotItem* item : items) {
        isTwice |= !names.Insert(NameOf(*item));
        if (entry == nullptr && !IsInReach(*item)) entry = item;
    }
    if (!isTwice || entry == nullptr) return false;
    Report(
        *PlaceOf(*entry).store,
        Error{Reason::kSharedName, CodeKind::kDirectory, LDAP_NAMING_VIOLATION, kSharedNamesText},
        errorText);
    return true;
}

// Tells whether the item is an entry that its name, or one below it, kept from being copied. It can
// be deleted all the same.
bool IsKeptByNames(const CDepotItem& item, const Result& copied) {
    return CodeOf(copied) == LDAP_NAMING_VIOLATION && !HoldsRoot(*item.depot, item.path);
}

// Some shells report a move as done that they left. What was moved is no longer where it was.
bool AllCopiesLeft(const ShellWork& work) {
    return std::none_of(work.copies.begin(), work.copies.end(), PathMayExist);
}

// Fetches an entry for the shell. For a deletion a name that no local file can have is no
// hindrance: such an entry is removed without a copy.
Result CollectEntry(const CDepotItem& item, ShellWork& work, const TransferWatcher& watcher) {
    FetchedEntry entry = {&item, {}};
    const std::string folder = work.temporaryFolders.Make();
    if (folder.empty()) return Error{};
    const Result fetched = CopyDepotFile(
        {*item.depot, item.path, folder + "\\", nullptr, false, watcher,
         work.removesSources ? SourceFate::kGoes : SourceFate::kStays, &entry.copied});
    if (fetched) {
        work.copies.push_back(JoinPath(folder, NameOf(item)));
        if (!work.items.Append(PlainItem(work.copies.back()))) return Error{};
    } else if (work.operation != FO_DELETE || !IsKeptByNames(item, fetched)) {
        return fetched;
    }
    if (work.removesSources) work.entriesToRemove.push_back(std::move(entry));
    return {};
}

// Puts what the shell is to work on together. What cannot be fetched must not be removed, and the
// others not half done.
Result Collect(const CDepotItems& items, ShellWork& work, const TransferWatcher& watcher) {
    ListProgress progress(watcher, items.Count());
    for (const CDepotItem* item : items) {
        if (IsInReach(*item)) {
            if (!work.items.Append(item->Clone())) return Error{};
            continue;
        }
        if (progress.IsStopped()) return Error{};
        Result ready = work.stores.Hold(PlaceOf(*item));
        if (ready) ready = CollectEntry(*item, work, progress.Next());
        if (!ready) return ready;
    }
    return progress.IsStopped() ? Result(Error{}) : Result();
}

// Removes the entries of a list up to the first that cannot be removed. What is only deleted is
// deleted with whatever it holds by now.
int RemoveEntries(const ShellWork& work, std::string* errorText) {
    for (const auto& [item, copied] : work.entriesToRemove) {
        if (work.operation != FO_MOVE) {
            if (DeleteItem(*item) == 0) return 0;
            continue;
        }
        Store& store = *PlaceOf(*item).store;
        if (Report(store, LeftoversResult(RemoveCopied(store, copied)), errorText) == 0) return 0;
    }
    return 1;
}

}  // namespace

int CopyItem(const CDepotItem& source, const CDepotItem* target, bool failIfExists,
             std::string* errorText, const TransferWatcher& watcher) {
    if (!CanCopy(source, target)) return 0;
    return CopyFile(*source.depot, source.path, target->path, target->depot, failIfExists,
                    errorText, watcher);
}

int DeleteItem(const CDepotItem& item) {
    return item.depot ? DeleteFile(*item.depot, item.path) : 0;
}

int ShellOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                   FILEOP_FLAGS flags, HWND window, std::string* errorText) {
    if (items.Count() == 0) return 1;
    // A deletion takes no notice of a target, whatever that holds.
    if (operation == FO_DELETE) target = nullptr;
    if (TakesRootAway(items, operation) || AnyOutOfReach(items, target)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FailShellOperation(errorText);
    }
    std::vector<std::string> sources;
    for (const CDepotItem* item : items) sources.push_back(PlaceOf(*item).path);
    if (ReplacesMovedItems(sources, operation, flags)) {
        SetLastError(ERROR_ALREADY_EXISTS);
        return FailShellOperation(errorText);
    }
    const std::string destination = target ? PlaceOf(*target).path : std::string();
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
    if (target != nullptr && !IsInReach(*target)) {
        return OperateOneByOne(items, *target, operation, window, errorText, watcher);
    }
    if (RefuseNameTwice(items, operation, flags, errorText)) return 0;
    ShellWork work(operation, window);
    const Result collected = Collect(items, work, watcher);
    if (!collected) return collected.AsFlag(errorText);
    const int result = ShellOperation(work.items, target, operation, flags, window, errorText);
    if (result == 0 || (operation == FO_MOVE && !AllCopiesLeft(work))) return 0;
    return RemoveEntries(work, errorText);
}

}  // namespace depot
