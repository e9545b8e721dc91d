#include "depotbrowser/depot_listing.h"

#include <algorithm>

#include "depotbrowser/name_rules.h"
#include "depotbrowser/worker_notices.h"
#include "fileops/enumerate.h"
#include "manager/display_path.h"
#include "manager/writability.h"
#include "platform/error_text.h"
#include "platform/file_time.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

constexpr char kEveryFile[] = ".*";

BrowseEntry EntryOf(const CDepotItem& item, bool hasDetails) {
    BrowseEntry entry;
    entry.name = NamePart(RemoveTrailingBackslash(item.path));
    entry.shownName = WideFromAnsi(entry.name);
    entry.foldedName = FoldedName(entry.shownName);
    // The kind flags of some files have the bit of folders, too.
    entry.isFolder = item.findData != nullptr &&
                     (item.findData->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    entry.fileType = static_cast<std::int32_t>(item.fileType);
    if (hasDetails && item.findData) {
        const WIN32_FIND_DATAA& found = *item.findData;
        entry.hasDetails = true;
        entry.size = entry.isFolder ? 0 : Joined(found.nFileSizeHigh, found.nFileSizeLow);
        entry.date = Joined(found.ftLastWriteTime);
    }
    return entry;
}

// Returns why nothing was listed; empty when the folder is there and has nothing in it.
std::string ReasonForNothing(CDepot& depot, const StorePath& folder) {
    const std::string notice = TakeLastNotice();
    const auto local = folder.store->LocalPath(folder.path);
    if (!local) {
        const std::string text = DirectoryReason(depot);
        return text.empty() ? notice : text;
    }
    if (local->empty()) return SystemText(ERROR_PATH_NOT_FOUND);
    const bool isThere = GetFileAttributesA(local->c_str()) != INVALID_FILE_ATTRIBUTES;
    return isThere ? std::string() : SystemText(GetLastError());
}

std::string FolderPath(CDepot& depot, const std::string& relative) {
    return BuildDisplayPath(depot, relative, PathForm::kDisplay, DepotName::kKey);
}

}  // namespace

std::string SystemText(DWORD error) {
    std::string text;
    FormatErrorText(error, nullptr, nullptr, &text, nullptr);
    return std::string(TrimTrailingBlanks(text));
}

std::string DirectoryReason(CDepot& depot) {
    return depot.ActiveStore().LastFailure().Text();
}

std::string ReasonOf(const Result& result) {
    const Error& why = result.Why();
    const bool hasSystemCode = why.kind == CodeKind::kSystem && why.code != ERROR_SUCCESS;
    return hasSystemCode ? SystemText(why.code) : why.text;
}

std::wstring FoldedName(std::wstring name) {
    CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
    return name;
}

Listing ListFolder(DepotSession& session, const FolderRef& folder) {
    Listing listing;
    CDepot* const depot = FindDepot(session.Depots(), folder.depot);
    if (depot == nullptr) return listing;
    TakeLastNotice();
    listing.folderPath = FolderPath(*depot, folder.relative);
    const CDepotItem item(listing.folderPath, depot);
    CDepotItems items;
    Enumerate(items, &item, kEveryFile, {}, false);
    const StorePath place = PlaceOf(*depot, listing.folderPath);
    const bool hasDetails = place.store->LocalPath(place.path).has_value();
    for (const CDepotItem* found : items) {
        listing.entries.push_back(EntryOf(*found, hasDetails));
    }
    if (items.Count() == 0) listing.reason = ReasonForNothing(*depot, place);
    listing.succeeded = listing.reason.empty();
    listing.complete = items.unsafeNames == 0;
    return listing;
}

Listing ListForTree(DepotSession& session, const FolderRef& folder) {
    Listing listing = ListFolder(session, folder);
    listing.folders = TreeNames(listing.entries);
    return listing;
}

ExaminedName ExamineName(DepotSession& session, const FolderRef& folder, const std::string& name) {
    ExaminedName examined;
    const Listing listing = ListFolder(session, folder);
    examined.path = listing.folderPath + name;
    examined.reason = listing.reason;
    if (!listing.succeeded) return examined;
    examined.kind = NameKind::kAbsent;
    for (const BrowseEntry& entry : listing.entries) {
        if (!EqualsNoCase(entry.name, name)) continue;
        examined.kind = entry.isFolder ? NameKind::kFolder : NameKind::kFile;
        examined.path = listing.folderPath + entry.name;
    }
    return examined;
}

ExaminedName ExamineForWriting(DepotSession& session, const FolderRef& folder,
                               const std::string& name) {
    ExaminedName examined = ExamineName(session, folder, name);
    CDepot* const depot = FindDepot(session.Depots(), folder.depot);
    if (depot == nullptr || examined.kind == NameKind::kFolder ||
        examined.kind == NameKind::kUnknown) {
        return examined;
    }
    TakeLastNotice();
    examined.writable = TestPathWritable(*depot, examined.path, &examined.reason) != 0;
    if (!examined.writable && examined.reason.empty()) examined.reason = TakeLastNotice();
    return examined;
}

LocatedPath LocatePath(DepotSession& session, const std::string& path) {
    LocatedPath located;
    CDepots& depots = session.Depots();
    const std::string canonical = FriendlyToCanonical(depots, path);
    CDepot* const depot = FindDepotHolding(depots, canonical);
    if (depot == nullptr) return located;
    const std::string display = StorageToDisplay(*depot, canonical);
    const std::string prefix = FolderPath(*depot, {});
    const auto length = PrefixLengthNoCase(EnsureTrailingBackslash(display), prefix);
    if (!length) return located;
    const std::string rest = display.substr(std::min(*length, display.size()));
    located.found = true;
    located.folder = {{depot->name, depot->rootKey}, FolderPrefix(rest)};
    located.name = rest.substr(located.folder.relative.size());
    return located;
}

LocatedPath LocateExistingFolder(DepotSession& session, const std::string& path) {
    LocatedPath located = LocatePath(session, EnsureTrailingBackslash(path));
    CDepot* const depot =
        located.found ? FindDepot(session.Depots(), located.folder.depot) : nullptr;
    // Nothing leads above a depot's root.
    const bool leadsUp = FollowPath({}, located.folder.relative).folder != located.folder.relative;
    if (depot == nullptr || leadsUp) return {};
    const StorePath place = PlaceOf(*depot, FolderPath(*depot, located.folder.relative));
    const auto local = place.store->LocalPath(place.path);
    const DWORD attributes = local ? GetFileAttributesA(local->c_str()) : FILE_ATTRIBUTE_DIRECTORY;
    located.found =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return located;
}

}  // namespace depot
