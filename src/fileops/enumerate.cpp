#include "fileops/enumerate.h"

#include <new>

#include "config/file_types.h"
#include "config/profile_file.h"
#include "directory/connection_scope.h"
#include "fileops/depot_file.h"
#include "fileops/file_filter.h"
#include "manager/display_path.h"
#include "platform/file_search.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/trace.h"

namespace depot {
namespace {

bool IsSelfOrParent(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

bool IsFolder(const WIN32_FIND_DATAA& found) {
    return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Appends what `make` returns. An item that memory runs out for is left out.
template <class Make>
bool AppendItem(CDepotItems& list, const Make& make) try {
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the list owns what it took
    return list.Append(make()) != nullptr;
} catch (const std::bad_alloc&) {
    return false;
}

std::unique_ptr<CDepotItem> FolderItem(std::string path, CDepot& depot) {
    auto item = std::make_unique<CDepotItem>(std::move(path), &depot);
    item->kindFlags = kFolderKind;
    return item;
}

// Counts what a listing of a folder left out.
void NoteUnsafeNames(CDepotItems& list, std::uint32_t count, const std::string& folder) {
    list.unsafeNames += count;
    if (count > 0) TraceCount("names left out", folder, count);
}

// Turns what a search in one folder finds into items.
class FolderLister {
public:
    FolderLister(CDepotItems& list, CDepot& depot, const ListingRequest& request, bool foldersOnly)
        : list_(list),
          depot_(depot),
          filter_(request.filter),
          foldersOnly_(foldersOnly),
          folder_(DisplayToStorage(depot, request.folder)),
          displayFolder_(CollapseBackslashes(StorageToDisplay(depot, JoinPath(folder_, "x")))) {
        displayFolder_.pop_back();
    }

    int List() {
        // A depot without a root lists nothing, least of all the current directory.
        if (folder_.empty()) return 0;
        int added = 0;
        WIN32_FIND_DATAA found = {};
        FileSearch search(JoinPath(folder_, "*.*"));
        while (search.Next(found)) {
            if (!IsSelfOrParent(found.cFileName) && Add(found)) ++added;
        }
        NoteUnsafeNames(list_, search.UnsafeNames(), folder_);
        return added;
    }

private:
    bool Add(const WIN32_FIND_DATAA& found) {
        const bool folder = IsFolder(found);
        if (!folder && (foldersOnly_ || !PassesFilter(found.cFileName, filter_))) return false;
        return AppendItem(list_, [&] {
            const std::string path = displayFolder_ + found.cFileName;
            auto item = folder ? FolderItem(path, depot_)
                               : FileItem(path, JoinPath(folder_, found.cFileName));
            item->findData = std::make_unique<WIN32_FIND_DATAA>(found);
            return item;
        });
    }

    std::unique_ptr<CDepotItem> FileItem(std::string path, const std::string& full) {
        auto item = std::make_unique<CDepotItem>(std::move(path), &depot_);
        const std::int32_t type = DetectFileType(full);
        item->fileType = static_cast<std::uint32_t>(type);
        item->kindFlags = GetTerminalType(full, type);
        return item;
    }

    CDepotItems& list_;
    CDepot& depot_;
    const std::string& filter_;
    const bool foldersOnly_;
    const std::string folder_;
    // Every entry's display path begins with it: converting the folder once is enough.
    std::string displayFolder_;
};

// What a listing tells of an entry, which has neither times nor a size.
std::unique_ptr<WIN32_FIND_DATAA> EntryData(const std::string& name, DWORD attributes) {
    auto data = std::make_unique<WIN32_FIND_DATAA>();
    data->dwFileAttributes = attributes;
    CutToBytes(name, sizeof(data->cFileName) - 1).copy(data->cFileName, sizeof(data->cFileName));
    return data;
}

std::unique_ptr<CDepotItem> FolderEntryItem(const std::string& path, CDepot& depot) {
    auto item = FolderItem(path, depot);
    item->findData = EntryData(NamePart(path), FILE_ATTRIBUTE_DIRECTORY);
    return item;
}

std::unique_ptr<CDepotItem> FileEntryItem(const std::string& path, CDepot& depot) {
    auto item = std::make_unique<CDepotItem>(path, &depot);
    const std::int32_t type = DetectFileType(path);
    item->fileType = static_cast<std::uint32_t>(type);
    // No file is fetched. The two types whose files would be read are read under their display
    // path, which is no file; the number of every other type is fixed.
    if (type != kUnknownFileType) item->kindFlags = GetTerminalType(path, type);
    item->findData = EntryData(NamePart(path), 0);
    return item;
}

// Returns the display path of a folder of a directory without a trailing backslash, the depot's
// name in it spelled as the depot spells it.
std::string DisplayFolder(CDepot& depot, const std::string& folder) {
    const std::string prefix = BuildDisplayPath(depot, {}, PathForm::kDisplay, DepotName::kKey);
    std::string display = StorageToDisplay(depot, EnsureTrailingBackslash(folder));
    if (MatchesPath(depot, display, PathForm::kDisplay, DepotName::kKey)) {
        display.replace(0, prefix.size(), prefix);
    }
    return RemoveTrailingBackslash(display);
}

void ListDirectory(CDepotItems& list, CDepot& depot, CLDAPItems& directory,
                   const ListingRequest& request, bool foldersOnly) {
    const ConnectionScope connection(directory, nullptr);
    if (!connection) return;
    LdapItemList entries;
    directory.ListChildren(DisplayToStorage(depot, request.folder), entries,
                           DisplayFolder(depot, request.folder));
    NoteUnsafeNames(list, directory.UnsafeNames(), request.folder);
    for (const CLDAPItem* entry : entries) {
        const bool isFolder = entry->isFolder != 0;
        if (!isFolder && (foldersOnly || !PassesFilter(NamePart(entry->path), request.filter))) {
            continue;
        }
        AppendItem(list, [&] {
            return isFolder ? FolderEntryItem(entry->path, depot)
                            : FileEntryItem(entry->path, depot);
        });
    }
}

}  // namespace

int Enumerate(CDepotItems& list, const CDepotItem* folderItem, const std::string& filter,
              const std::string& subPath, bool foldersOnly) {
    if (folderItem == nullptr || folderItem->depot == nullptr) return 0;
    const ListingRequest request =
        MakeListingRequest(folderItem->path, filter, subPath, foldersOnly);
    if (request.folder.empty()) return 0;
    CDepot& depot = *folderItem->depot;
    if (!IsDirectoryDepot(depot)) return FolderLister(list, depot, request, foldersOnly).List();
    if (CLDAPItems* const directory = depot.DirectoryConnection()) {
        ListDirectory(list, depot, *directory, request, foldersOnly);
    }
    return static_cast<int>(list.Count());
}

void KeepFileType(CDepotItems& list, std::int32_t wantedType) {
    std::vector<bool> wanted;
    for (std::size_t index = 0; index < list.Count(); ++index) {
        wanted.push_back(DetectFileType(list.At(index)->path) == wantedType);
    }
    const std::vector<bool> stays = SurvivorsOfTypeFilter(wanted);
    std::size_t index = 0;
    list.RemoveUnless([&](const CDepotItem&) { return stays[index++]; });
}

}  // namespace depot
