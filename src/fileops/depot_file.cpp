#include "fileops/depot_file.h"

#include "fileops/outcome.h"
#include "fileops/shell_operation.h"
#include "manager/display_path.h"
#include "platform/handles.h"
#include "platform/paths.h"
#include "store/folder_store.h"

namespace depot {
namespace {

// Fails as a wrong argument does in the depot's store.
Result Refuse(CDepot& depot, const std::string& path) {
    Error error = depot.ActiveStore().Keep(SystemError(ERROR_INVALID_PARAMETER, path));
    SetLastError(ERROR_INVALID_PARAMETER);
    return error;
}

// Why a file or folder cannot be moved, as a code of the system; ERROR_SUCCESS where it could be.
DWORD ReasonAgainstMoving(const std::string& path) {
    constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const UniqueHandle opened =
        OwnFile(CreateFileA(path.c_str(), DELETE, kShared, nullptr, OPEN_EXISTING,
                            FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return opened ? DWORD{ERROR_SUCCESS} : GetLastError();
}

Result MoveByShell(PathPair paths, HWND window, UINT operation) {
    const FolderStore& store = FolderStore::Instance();
    if (!store.CheckTarget(paths.from) || !store.CheckTarget(paths.to)) {
        return SystemError(ERROR_INVALID_PARAMETER, paths.to);
    }
    const bool done = RunShellOperation(
        {operation, {paths.from}, &paths.to, kQuietFlags, window, kShellSinglePathBytes});
    if (done) return {};
    Error error = ShellError(paths.to);
    // Without a text as well: those who get one read what the shell said, or nothing.
    const DWORD reason = error.code == ERROR_SUCCESS ? ReasonAgainstMoving(paths.from) : 0;
    if (reason != ERROR_SUCCESS) {
        error = SystemError(reason, paths.from);
        error.text.clear();
    }
    return error;
}

// Whether what has this name may go into a folder under it.
bool IsFitForFolder(const FileCopy& copy, const CopyRequest& request, const std::string& name) {
    const bool betweenEntries = !request.from.store->IsLocal() && !request.to.store->IsLocal();
    return request.from.store->CanHold(name) && request.to.store->CanHold(name) &&
           !(betweenEntries && HoldsRoot(copy.depot, copy.source));
}

Result RefuseName(const CopyRequest& request) {
    Result refused = ReportedCopy(request, {Error{Reason::kBadName, CodeKind::kDirectory,
                                                  LDAP_NAMING_VIOLATION, UnsafeNamesText(1)}});
    SetLastError(ERROR_INVALID_NAME);
    return refused;
}

StorePath TargetOf(CDepot* depot, const std::string& path) {
    return depot ? PlaceOf(*depot, path) : StorePath{&FolderStore::Instance(), path};
}

}  // namespace

int FileExists(CDepot& depot, const std::string& path) {
    // A depot without a location has no place, not even the process's current folder.
    if (depot.paths->Count() == 0) return 0;
    const StorePath place = PlaceOf(depot, path);
    const StoreScope scope(*place.store);
    if (!scope) return 0;
    ItemKind kind = ItemKind::kMissing;
    const Result looked = place.store->Look(place.path, kind);
    return looked && kind != ItemKind::kMissing ? 1 : 0;
}

Result DeleteDepotFile(CDepot& depot, const std::string& path) {
    const StorePath place = PlaceOf(depot, path);
    if (place.store->IsLocal()) {
        if (!place.store->CheckTarget(place.path)) return Refuse(depot, path);
        return place.store->Remove(place.path, ItemKind::kFile);
    }
    if (HoldsRoot(depot, path)) return Refuse(depot, path);
    const StoreScope scope(*place.store);
    return scope ? place.store->RemoveTree(place.path) : scope.Outcome();
}

int DeleteFile(CDepot& depot, const std::string& path) {
    return DeleteDepotFile(depot, path).AsFlag(nullptr);
}

Result MoveDepotFile(const FileMove& move) {
    const StorePath from = PlaceOf(move.depot, move.source);
    const StorePath to =
        PlaceOf(move.destinationDepot ? *move.destinationDepot : move.depot, move.destination);
    // Each store moves within itself only: the shell would take an entry's name for a file of the
    // process's current folder.
    if (HoldsRoot(move.depot, move.source) || from.store->Space() != to.store->Space()) {
        return Refuse(move.depot, move.destination);
    }
    const PathPair paths = {from.path, to.path};
    if (!from.store->IsLocal()) {
        return ReportedMove(*from.store, Move(*from.store, paths, move.watcher));
    }
    return MoveByShell(paths, move.window, move.destinationDepot ? FO_MOVE : FO_RENAME);
}

int MoveFile(CDepot& depot, const std::string& source, const std::string& destination, HWND window,
             CDepot* destinationDepot, std::string* errorText, const TransferWatcher& watcher) {
    return MoveDepotFile({depot, source, destination, destinationDepot, window, watcher})
        .AsFlag(errorText);
}

Result PlanCopy(const FileCopy& copy, CopyRequest& request) {
    request.from = PlaceOf(copy.depot, copy.source);
    request.to = TargetOf(copy.destinationDepot, copy.destination);
    if (EndsInSeparator(copy.destination)) {
        // A folder takes the copy under its own name.
        const std::string name = NamePart(RemoveTrailingBackslash(copy.source));
        if (!IsFitForFolder(copy, request, name)) return RefuseName(request);
        request.to = TargetOf(copy.destinationDepot, copy.destination + name);
    }
    if (!request.to.store->CheckTarget(request.to.path)) {
        return Refuse(copy.depot, request.to.path);
    }
    // An entry that exists gets the new contents in every case.
    const bool keepsExisting = copy.failIfExists && request.to.store->IsLocal();
    if (keepsExisting) request.existing = ExistingEntries::kRefuse;
    request.fate = copy.fate;
    request.watcher = copy.watcher;
    request.copied = copy.copied;
    request.known = copy.known;
    return {};
}

Result CopyDepotFile(const FileCopy& copy) {
    CopyRequest request;
    Result planned = PlanCopy(copy, request);
    return planned ? ReportedCopy(request, depot::Copy(request)) : std::move(planned);
}

int CopyFile(CDepot& depot, const std::string& source, const std::string& destination,
             CDepot* destinationDepot, bool failIfExists, std::string* errorText,
             const TransferWatcher& watcher) {
    return CopyDepotFile({depot, source, destination, destinationDepot, failIfExists, watcher})
        .AsFlag(errorText);
}

Result CopyToFreeName(CDepot& depot, const std::string& source, const std::string& destination) {
    const CopyRequest request = {PlaceOf(depot, source), PlaceOf(depot, destination),
                                 ExistingEntries::kRefuse};
    if (!request.to.store->CheckTarget(request.to.path)) return Refuse(depot, request.to.path);
    return ReportedCopy(request, depot::Copy(request));
}

DWORD LastErrorCode(CDepot& depot) {
    const DWORD systemError = GetLastError();
    const Store& store = depot.ActiveStore();
    SetLastError(systemError);
    return store.LastSystemError();
}

}  // namespace depot
