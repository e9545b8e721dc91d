#include "depotbrowser/depot_changes.h"

#include "depotbrowser/depot_listing.h"
#include "depotbrowser/worker_notices.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"
#include "fileops/numbered_copy.h"
#include "manager/display_path.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

// The shell shows nothing itself: the window does.
constexpr FILEOP_FLAGS kSilentDelete = FOF_NOCONFIRMATION | FOF_SILENT | FOF_NOERRORUI;

// What does not fit into the bin is deleted only after a question of the shell's own.
constexpr FILEOP_FLAGS kIntoTheBin = FOF_ALLOWUNDO | FOF_WANTNUKEWARNING;

constexpr std::size_t kMostFoldersExamined = 1000;

constexpr int kMostFolderNumbers = 1000;

std::string PathIn(CDepot& depot, const FolderRef& folder, const std::string& name) {
    return BuildDisplayPath(depot, folder.relative + name, PathForm::kDisplay, DepotName::kKey);
}

ChangeResult Failure(const std::string& name, std::string reason) {
    return {false, name, reason.empty() ? TakeLastNotice() : std::move(reason)};
}

ChangeResult Success(const std::string& name) {
    return {true, name, {}};
}

// Returns the depot, with all forgotten that was reported before; null when there is none.
CDepot* Begin(DepotSession& session, const FolderRef& folder) {
    TakeLastNotice();
    return FindDepot(session.Depots(), folder.depot);
}

// Only local disks have a bin.
bool HasRecycleBin(CDepot& depot, const std::string& path) {
    const StorePath place = PlaceOf(depot, path);
    const auto local = place.store->LocalPath(place.path);
    char volume[MAX_PATH] = {};
    return local && GetVolumePathNameA(local->c_str(), volume, MAX_PATH) &&
           GetDriveTypeA(volume) == DRIVE_FIXED;
}

Result DeleteOne(CDepot& depot, const std::string& path) {
    const StorePath place = PlaceOf(depot, path);
    if (!place.store->LocalPath(place.path)) {
        const StoreScope scope(*place.store);
        return scope ? place.store->RemoveTree(place.path) : scope.Outcome();
    }
    CDepotItems items;
    items.Append(std::make_unique<CDepotItem>(path, &depot));
    Error why;
    const FILEOP_FLAGS flags = kSilentDelete | (HasRecycleBin(depot, path) ? kIntoTheBin : 0);
    if (ShellOperation(items, nullptr, FO_DELETE, flags, nullptr, &why.text) == 0) {
        return why;
    }
    // The shell reports success for some items that it left.
    return FileExists(depot, path) != 0 ? why : Result();
}

Result CreateOneFolder(CDepot& depot, const std::string& path) {
    const StorePath place = PlaceOf(depot, path);
    const StoreScope scope(*place.store);
    return scope ? place.store->MakeFolder(place.path, FoldersAbove::kExist) : scope.Outcome();
}

// Returns the first of "name", "name (2)", "name (3)" ... that is free.
std::string FreeFolderName(CDepot& depot, const FolderRef& folder, const std::string& name) {
    std::string candidate = name;
    for (int number = 2; number <= kMostFolderNumbers; ++number) {
        if (FileExists(depot, PathIn(depot, folder, candidate)) == 0) break;
        candidate = name + " (" + std::to_string(number) + ")";
    }
    return candidate;
}

}  // namespace

ChangeResult RenameItem(DepotSession& session, const FolderRef& folder, const std::string& oldName,
                        const std::string& newName) {
    CDepot* const depot = Begin(session, folder);
    if (depot == nullptr) return Failure(oldName, {});
    const std::string target = PathIn(*depot, folder, newName);
    if (!EqualsNoCase(oldName, newName) && FileExists(*depot, target) != 0) {
        ChangeResult taken = Failure(newName, {});
        taken.nameTaken = true;
        return taken;
    }
    std::string reason;
    const std::string source = PathIn(*depot, folder, oldName);
    if (MoveFile(*depot, source, target, nullptr, nullptr, &reason) == 0) {
        return Failure(oldName, reason);
    }
    return Success(newName);
}

DeletionExtent ExamineDeletion(DepotSession& session, const FolderRef& folder,
                               const std::vector<std::string>& folderNames) {
    DeletionExtent extent;
    CDepot* const depot = Begin(session, folder);
    if (depot == nullptr) return extent;
    extent.recycled = HasRecycleBin(*depot, PathIn(*depot, folder, {}));
    std::vector<std::string> open;
    open.reserve(folderNames.size());
    for (const std::string& name : folderNames) open.push_back(folder.relative + name + "\\");
    for (std::size_t examined = 0; !open.empty(); ++examined) {
        const std::string relative = std::move(open.back());
        open.pop_back();
        const Listing listing = ListFolder(session, {folder.depot, relative});
        if (!listing.succeeded || !listing.complete || examined == kMostFoldersExamined) {
            return extent;
        }
        for (const BrowseEntry& entry : listing.entries) {
            if (entry.isFolder) open.push_back(relative + entry.name + "\\");
            ++(entry.isFolder ? extent.folders : extent.files);
        }
    }
    extent.counted = true;
    return extent;
}

ChangeResult DeleteItems(DepotSession& session, const FolderRef& folder,
                         const std::vector<std::string>& names) {
    CDepot* const depot = Begin(session, folder);
    if (depot == nullptr) return {};
    for (const std::string& name : names) {
        const Result deleted = DeleteOne(*depot, PathIn(*depot, folder, name));
        if (!deleted) return Failure(name, ReasonOf(deleted));
    }
    return Success({});
}

ChangeResult CopyItems(DepotSession& session, const FolderRef& folder,
                       const std::vector<std::string>& names) {
    CDepot* const depot = Begin(session, folder);
    if (depot == nullptr) return {};
    std::string lastCopy;
    for (const std::string& name : names) {
        const auto copy = MakeNumberedCopy(session, PathIn(*depot, folder, name));
        if (!copy) return Failure(name, DirectoryReason(*depot));
        lastCopy = NamePart(*copy);
    }
    return Success(lastCopy);
}

ChangeResult MakeFolder(DepotSession& session, const FolderRef& folder, const std::string& name) {
    CDepot* const depot = Begin(session, folder);
    if (depot == nullptr) return Failure(name, {});
    const std::string freeName = FreeFolderName(*depot, folder, name);
    const Result made = CreateOneFolder(*depot, PathIn(*depot, folder, freeName));
    return made ? Success(freeName) : Failure(freeName, ReasonOf(made));
}

}  // namespace depot
