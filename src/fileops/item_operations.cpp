#include "fileops/item_operations.h"

#include <algorithm>
#include <memory>
#include <set>

#include "fileops/anothers_place.h"
#include "fileops/copied_source.h"
#include "fileops/depot_file.h"
#include "fileops/list_progress.h"
#include "fileops/open_stores.h"
#include "fileops/outcome.h"
#include "fileops/read_ahead.h"
#include "manager/display_path.h"
#include "platform/file_names.h"
#include "platform/local_file.h"
#include "platform/not_copied.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/text.h"
#include "store/folder_store.h"

namespace depot {
namespace {

// Whether the shell can work on what is there.
bool IsInReach(const CDepotItem& item) {
    return PlaceOf(item).store->IsLocal();
}

std::unique_ptr<CDepotItem> PlainItem(const std::string& path) {
    return std::make_unique<CDepotItem>(path, nullptr);
}

std::string NameOf(const CDepotItem& item) {
    return NamePart(RemoveTrailingBackslash(item.path));
}

// Removes the temporary folders that an operation needed, whatever became of it.
class TemporaryFolders : NotCopied {
public:
    explicit TemporaryFolders(HWND window) : window_(window) {}
    ~TemporaryFolders() {
        if (!folders_.empty()) {
            RemoveFoldersQuietly(folders_, window_);
        }
    }

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

bool CanCopy(const CDepotItem& source, const CDepotItem* target) {
    return source.depot != nullptr && target != nullptr && !target->path.empty();
}

// What a list, or one item of it, comes to.
struct ItemWork {
    const CDepotItem* target;  // null for none
    UINT operation;
    FILEOP_FLAGS flags;
    HWND window;
};

// How one item is done.
struct ItemStep {
    const TransferWatcher& watcher;
    CopiedSource* copied = nullptr;     // for an item that goes
    const FileBuffer* known = nullptr;  // its bytes, if they were read with those of others
};

// Copies an item to the target's path in the target's depot.
Result CopyTo(const CDepotItem& source, const CDepotItem& target, const ItemStep& step) {
    return CopyDepotFile({*source.depot, source.path, target.path, target.depot, true, step.watcher,
                          step.copied ? SourceFate::kGoes : SourceFate::kStays, step.copied,
                          step.known});
}

// A copy or a deletion that fails leaves the text of the caller alone.
Result WithoutText(Result result) {
    if (result) return result;
    Error error = result.Why();
    error.text.clear();
    return error;
}

// Has the shell do the work on all items.
Result RunShellOnItems(const CDepotItems& items, const ItemWork& work);

// Deletes a source whose copy has arrived. Fails only when there was something to keep.
Result DeleteMoved(const CDepotItem& item, const CopiedSource& copied, HWND window) {
    const StorePath place = PlaceOf(item);
    if (place.store->IsLocal() && IsAsCopied(*place.store, copied)) {
        CDepotItems source;
        source.Append(item.Clone());
        static_cast<void>(
            RunShellOnItems(source, {nullptr, FO_DELETE, FOF_NOCONFIRMATION, window}));
        return {};
    }
    const Leftovers left = RemoveCopied(*place.store, copied);
    Result removed = Reported(*place.store, LeftoversResult(left));
    return left.changed ? std::move(removed) : Result();
}

Result MoveItem(const CDepotItem& item, const ItemWork& work, const TransferWatcher& watcher) {
    if (!CanCopy(item, work.target) || HoldsRoot(*item.depot, item.path)) return Error();
    OpenStores stores;
    CopiedSource copied;
    Result arrived = stores.Hold(PlaceOf(*work.target));
    if (arrived) arrived = stores.Hold(PlaceOf(item));
    if (arrived) arrived = CopyTo(item, *work.target, {watcher, &copied});
    return arrived ? DeleteMoved(item, copied, work.window) : WithoutText(std::move(arrived));
}

Result OperateOnItem(const CDepotItem& item, const ItemWork& work, const ItemStep& step) {
    switch (work.operation) {
        case FO_COPY:
            if (!CanCopy(item, work.target)) return Error();
            return WithoutText(CopyTo(item, *work.target, step));
        case FO_DELETE:
            return item.depot ? WithoutText(DeleteDepotFile(*item.depot, item.path)) : Error();
        case FO_MOVE:
            return MoveItem(item, work, step.watcher);
        default:
            return Error();
    }
}

// The places of what comes from the first item's depot. Another depot is not looked at before its
// turn: its servers may have to be asked for its place.
std::vector<StorePath> PlacesOf(const CDepotItems& items) {
    std::vector<StorePath> places;
    for (const CDepotItem* item : items) {
        const bool isOfFirst = item->depot == items.At(0)->depot;
        places.push_back(isOfFirst ? PlaceOf(*item) : StorePath());
    }
    return places;
}

Result OperateOneByOne(const CDepotItems& items, const ItemWork& work,
                       const TransferWatcher& watcher) {
    const StorePath place = PlaceOf(*work.target);
    const bool deletes = work.operation == FO_DELETE;
    const bool isFolder = EndsInSeparator(work.target->path);
    OpenStores stores;
    ListProgress progress(watcher, items.Count());
    ReadAhead ahead(PlacesOf(items), SourceFate::kStays);
    // A second item of a name would replace what has just arrived.
    const TakePath isNewName = place.store->UniquePaths();
    for (std::size_t number = 0; number < items.Count(); ++number) {
        const CDepotItem& item = *items.At(number);
        // Where the target is no folder, every item gets the same name.
        if (!deletes && !isNewName(isFolder ? NameOf(item) : std::string())) {
            return Reported(*place.store, Error(Reason::kExists));
        }
        const bool ready = deletes || stores.Hold(place);
        if (progress.IsStopped() || !ready || !stores.Hold(PlaceOf(item))) return Error();
        const TransferWatcher next = progress.Next();
        const bool copies = work.operation == FO_COPY && item.depot != nullptr;
        // Those behind it may be read with it, but for what it writes.
        const std::optional<FileBuffer> known = copies ? ahead.Take(number) : std::nullopt;
        Result done = OperateOnItem(item, work, {next, nullptr, known ? &*known : nullptr});
        if (copies) {
            const std::string name = isFolder ? NameOf(item) : std::string();
            ahead.Written(PlaceOf(*work.target->depot, work.target->path + name));
        }
        if (!done) return done;
    }
    return {};
}

// Whether the shell would replace what it has just moved by another item of that name, and would
// not ask.
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

// Whether the operation would take a depot's root away.
bool TakesRootAway(const CDepotItems& items, UINT operation) {
    if (operation == FO_COPY) return false;
    for (std::size_t index = 0; index < items.Count(); ++index) {
        const CDepotItem& item = *items.At(index);
        if (item.depot != nullptr && HoldsRoot(*item.depot, item.path)) return true;
    }
    return false;
}

// Whether the shell would take the name of an entry for a path.
bool AnyOutOfReach(const CDepotItems& items, const CDepotItem* target) {
    if (target != nullptr && !IsInReach(*target)) return true;
    return !std::all_of(items.begin(), items.end(),
                        [](const CDepotItem* item) { return IsInReach(*item); });
}

Result RunShellOnItems(const CDepotItems& items, const ItemWork& work) {
    if (items.Count() == 0) return {};
    // A deletion pays no regard to a target, whatever that holds.
    const CDepotItem* const target = work.operation == FO_DELETE ? nullptr : work.target;
    if (TakesRootAway(items, work.operation) || AnyOutOfReach(items, target)) {
        return SystemError(ERROR_INVALID_PARAMETER, {});
    }
    ShellRequest request = {work.operation, {}, nullptr, work.flags, work.window};
    for (const CDepotItem* item : items) request.sources.push_back(PlaceOf(*item).path);
    if (ReplacesMovedItems(request.sources, work.operation, work.flags)) {
        return SystemError(ERROR_ALREADY_EXISTS, {});
    }
    const std::string destination = target ? PlaceOf(*target).path : std::string();
    if (target) request.target = &destination;
    return RunShellOperation(request) ? Result() : ShellError({});
}

// An entry that is to be deleted once the shell is done with its copy.
struct FetchedEntry {
    const CDepotItem* item;
    CopiedSource copied;
};

// What a list comes to before the shell does it.
struct ShellWork {
    explicit ShellWork(const ItemWork& wanted)
        : operation(wanted.operation),
          removesSources(operation == FO_MOVE || operation == FO_DELETE),
          temporaryFolders(wanted.window) {
        if (operation == FO_DELETE || wanted.target == nullptr) return;
        std::string path = PlaceOf(*wanted.target).path;
        if (IsLocalFolder(path)) folder = std::move(path);
    }

    const UINT operation;
    const bool removesSources;
    std::string folder;  // that takes each item under its own name; empty for none
    TemporaryFolders temporaryFolders;
    OpenStores stores;
    CDepotItems items;
    std::vector<std::string> copies;  // of the entries
    std::vector<FetchedEntry> entriesToRemove;
};

// Fails when two items of a list with entries would get one name in the folder that takes it,
// where a shell that does not ask would replace the first by the second.
Result RefuseNameTwice(const CDepotItems& items, const ItemWork& work) {
    const bool copies = work.operation == FO_COPY;
    const bool asks = copies && (work.flags & FOF_NOCONFIRMATION) == 0;
    const bool renames = copies && (work.flags & FOF_RENAMEONCOLLISION) != 0;
    if (work.operation == FO_DELETE || asks || renames) return {};
    FileNameSet names;
    bool isTwice = false;
    const CDepotItem* entry = nullptr;
    for (const CDepotItem* item : items) {
        isTwice |= !names.Insert(NameOf(*item));
        if (entry == nullptr && !IsInReach(*item)) entry = item;
    }
    if (!isTwice || entry == nullptr) return {};
    return PlaceOf(*entry).store->Keep(
        {Reason::kSharedName, CodeKind::kDirectory, LDAP_NAMING_VIOLATION, kSharedNamesText});
}

// Whether the item is an entry that its name, or one below it, kept from being copied. It can be
// deleted all the same.
bool IsKeptByNames(const CDepotItem& item, const Result& copied) {
    return CodeOf(copied) == LDAP_NAMING_VIOLATION && !HoldsRoot(*item.depot, item.path);
}

// Some shells report a move as done that they left. What was moved is no longer where it was.
bool AllCopiesLeft(const ShellWork& work) {
    return std::none_of(work.copies.begin(), work.copies.end(), PathMayExist);
}

// Fetches an entry for the shell. For a deletion a name that no local file can have is no
// hindrance: such an entry is removed without a copy.
Result CollectEntry(const CDepotItem& item, ShellWork& work, const TransferWatcher& watcher,
                    const FileBuffer* known) {
    FetchedEntry entry = {&item, {}};
    const std::string folder = work.temporaryFolders.Make();
    if (folder.empty()) return Error();
    Result fetched = CopyDepotFile({*item.depot, item.path, folder + "\\", nullptr, false, watcher,
                                    work.removesSources ? SourceFate::kGoes : SourceFate::kStays,
                                    &entry.copied, known});
    if (fetched) {
        work.copies.push_back(JoinPath(folder, NameOf(item)));
        if (!work.folder.empty()) fetched = RefuseAnothersPlaces(work.copies.back(), work.folder);
        if (!fetched) return Reported(*PlaceOf(item).store, std::move(fetched));
        if (!work.items.Append(PlainItem(work.copies.back()))) return Error();
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
    ReadAhead ahead(PlacesOf(items), work.removesSources ? SourceFate::kGoes : SourceFate::kStays);
    for (std::size_t number = 0; number < items.Count(); ++number) {
        const CDepotItem& item = *items.At(number);
        if (IsInReach(item)) {
            if (!work.items.Append(item.Clone())) return Error();
            continue;
        }
        if (progress.IsStopped()) return Error();
        Result ready = work.stores.Hold(PlaceOf(item));
        if (!ready) return ready;
        const std::optional<FileBuffer> known = ahead.Take(number);
        ready = CollectEntry(item, work, progress.Next(), known ? &*known : nullptr);
        if (!ready) return ready;
    }
    return progress.IsStopped() ? Error() : Result();
}

// Removes the entries of a list up to the first that cannot be removed. What is only deleted is
// deleted with whatever it holds by now.
Result RemoveEntries(const ShellWork& work) {
    for (const auto& [item, copied] : work.entriesToRemove) {
        Store& store = *PlaceOf(*item).store;
        Result removed = work.operation == FO_MOVE
                             ? Reported(store, LeftoversResult(RemoveCopied(store, copied)))
                             : WithoutText(DeleteDepotFile(*item->depot, item->path));
        if (!removed) return removed;
    }
    return {};
}

Result OperateOnList(const CDepotItems& items, const ItemWork& wanted,
                     const TransferWatcher& watcher) {
    if (wanted.target != nullptr && !IsInReach(*wanted.target)) {
        return OperateOneByOne(items, wanted, watcher);
    }
    Result done = RefuseNameTwice(items, wanted);
    if (!done) return done;
    ShellWork work(wanted);
    done = Collect(items, work, watcher);
    if (done) done = RunShellOnItems(work.items, wanted);
    if (!done) return done;
    if (wanted.operation == FO_MOVE && !AllCopiesLeft(work)) return Error();
    return RemoveEntries(work);
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
    return RunShellOnItems(items, {target, operation, flags, window}).AsFlag(errorText);
}

int ItemOperation(const CDepotItem& item, const CDepotItem* target, UINT operation, HWND window,
                  std::string* errorText, const TransferWatcher& watcher) {
    return OperateOnItem(item, {target, operation, 0, window}, {watcher}).AsFlag(errorText);
}

int ListOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                  FILEOP_FLAGS flags, HWND window, std::string* errorText,
                  const TransferWatcher& watcher) {
    return OperateOnList(items, {target, operation, flags, window}, watcher).AsFlag(errorText);
}

}  // namespace depot
