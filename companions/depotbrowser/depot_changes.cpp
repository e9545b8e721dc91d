#include "depotbrowser/depot_changes.h"

#include "depotbrowser/depot_listing.h"
#include "depotbrowser/worker_notices.h"
#include "directory/connection_scope.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"
#include "fileops/numbered_copy.h"
#include "manager/display_path.h"
#include "platform/error_text.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

// The shell tells nothing itself: the window does.
constexpr FILEOP_FLAGS kSilentDelete = FOF_NOCONFIRMATION | FOF_SILENT | FOF_NOERRORUI;

constexpr int kMostFolderNumbers = 1000;

std::string SystemText(DWORD error) {
    std::string text;
    if (error != ERROR_SUCCESS) FormatErrorText(error, nullptr, nullptr, &text, nullptr);
    return std::string(TrimTrailingBlanks(text));
}

std::string PathIn(CDepot& depot, const FolderRef& folder, const std::string& name) {
    return BuildDisplayPath(depot, folder.relative + name, PathForm::kDisplay, DepotName::kKey);
}

ChangeResult Failure(const std::string& name, std::string reason) {
    ChangeResult result;
    result.name = name;
    result.reason = reason.empty() ? TakeLastNotice() : std::move(reason);
    return result;
}

ChangeResult Success(const std::string& name) {
    ChangeResult result;
    result.succeeded = true;
    result.name = name;
    return result;
}

// The reason of a directory's failure; empty for the file system.
std::string DirectoryReason(CDepot& depot) {
    CLDAPItems* const directory = depot.DirectoryConnection();
    return directory != nullptr ? directory->ErrorText() : std::string();
}

bool DeleteOne(CDepot& depot, const std::string& path, std::string& reason) {
    if (IsDirectoryDepot(depot)) {
        const bool gone = DeleteFile(depot, path) != 0;
        if (!gone) reason = DirectoryReason(depot);
        return gone;
    }
    CDepotItems items;
    items.Append(std::make_unique<CDepotItem>(path, &depot));
    if (ShellOperation(items, nullptr, FO_DELETE, kSilentDelete, nullptr, &reason) == 0) {
        return false;
    }
    // The shell reports success for some items that it left.
    return FileExists(depot, path) == 0;
}

bool CreateOneFolder(CDepot& depot, const std::string& path, const std::string& name,
                     std::string& reason) {
    const std::string storage = DisplayToStorage(depot, path);
    if (CLDAPItems* const directory = depot.DirectoryConnection()) {
        const ConnectionScope connection(*directory, &reason);
        return connection && directory->AddFolderEntry(storage, name, &reason) != 0;
    }
    if (CreateDirectoryA(storage.c_str(), nullptr)) return true;
    reason = SystemText(GetLastError());
    return false;
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
    CDepot* const depot = FindDepot(session.Depots(), folder.depot);
    if (depot == nullptr) return Failure(oldName, {});
    TakeLastNotice();
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

ChangeResult DeleteItems(DepotSession& session, const FolderRef& folder,
                         const std::vector<std::string>& names) {
    CDepot* const depot = FindDepot(session.Depots(), folder.depot);
    if (depot == nullptr) return {};
    TakeLastNotice();
    for (const std::string& name : names) {
        std::string reason;
        if (!DeleteOne(*depot, PathIn(*depot, folder, name), reason)) return Failure(name, reason);
    }
    return Success({});
}

ChangeResult CopyItems(DepotSession& session, const FolderRef& folder,
                       const std::vector<std::string>& names) {
    CDepot* const depot = FindDepot(session.Depots(), folder.depot);
    if (depot == nullptr) return {};
    TakeLastNotice();
    std::string lastCopy;
    for (const std::string& name : names) {
        const auto copy = MakeNumberedCopy(session, PathIn(*depot, folder, name));
        if (!copy) return Failure(name, DirectoryReason(*depot));
        lastCopy = NamePart(*copy);
    }
    return Success(lastCopy);
}

ChangeResult MakeFolder(DepotSession& session, const FolderRef& folder, const std::string& name) {
    CDepot* const depot = FindDepot(session.Depots(), folder.depot);
    if (depot == nullptr) return Failure(name, {});
    TakeLastNotice();
    const std::string freeName = FreeFolderName(*depot, folder, name);
    std::string reason;
    if (!CreateOneFolder(*depot, PathIn(*depot, folder, freeName), freeName, reason)) {
        return Failure(freeName, reason);
    }
    return Success(freeName);
}

}  // namespace depot
