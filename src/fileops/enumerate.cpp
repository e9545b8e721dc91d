#include "fileops/enumerate.h"

#include <new>

#include "config/file_types.h"
#include "config/profile_file.h"
#include "fileops/file_filter.h"
#include "manager/display_path.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "store/tree.h"

namespace depot {
namespace {

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

std::unique_ptr<CDepotItem> FileItem(std::string path, CDepot& depot, const StoreItem& file) {
    auto item = std::make_unique<CDepotItem>(std::move(path), &depot);
    // A file that the system does not reach is not fetched. The two types whose files would be read
    // are read under their display path, which is no file; the number of every other type is fixed.
    const std::string& readable = file.details ? file.path : item->path;
    const std::int32_t type = DetectFileType(readable);
    item->fileType = static_cast<std::uint32_t>(type);
    if (file.details || type != kUnknownFileType) item->kindFlags = GetTerminalType(readable, type);
    return item;
}

// Returns the find data of a child that has neither times nor a size.
std::unique_ptr<WIN32_FIND_DATAA> EntryData(const StoreItem& item) {
    auto data = std::make_unique<WIN32_FIND_DATAA>();
    data->dwFileAttributes = item.isFolder ? FILE_ATTRIBUTE_DIRECTORY : 0;
    CutToBytes(item.name, sizeof(data->cFileName) - 1)
        .copy(data->cFileName, sizeof(data->cFileName));
    return data;
}

// Returns the display path of a folder with a trailing backslash. That of a local folder is made
// from its storage path; any other keeps its spelling, but for the depot's name in it.
std::string DisplayFolder(CDepot& depot, const std::string& folder, const StorePath& place) {
    if (const auto local = place.store->LocalPath(place.path)) {
        std::string display = CollapseBackslashes(StorageToDisplay(depot, JoinPath(*local, "x")));
        display.pop_back();
        return display;
    }
    const std::string prefix = BuildDisplayPath(depot, {}, PathForm::kDisplay, DepotName::kKey);
    std::string display = StorageToDisplay(depot, EnsureTrailingBackslash(folder));
    if (MatchesPath(depot, display, PathForm::kDisplay, DepotName::kKey)) {
        display.replace(0, prefix.size(), prefix);
    }
    return RemoveTrailingBackslash(display) + "\\";
}

// Turns what a folder holds into items.
class FolderLister {
public:
    FolderLister(CDepotItems& list, CDepot& depot, const ListingRequest& request, bool foldersOnly)
        : list_(list),
          depot_(depot),
          filter_(request.filter),
          foldersOnly_(foldersOnly),
          place_(FolderPlace(depot, request.folder)),
          displayFolder_(DisplayFolder(depot, request.folder, place_)) {}

    // Returns how many items were appended.
    std::size_t List() {
        const StoreScope scope(*place_.store);
        // A depot without a root lists nothing, least of all the current directory.
        if (!scope || place_.path.empty()) return 0;
        LeftOut left;
        // What was found before a failure stays.
        const Result listed = place_.store->List(
            place_.path, [&](const StoreItem& item) { Take(item, left); }, left);
        if (!listed) TraceCount("not listed, code", place_.path, listed.Why().code);
        list_.unsafeNames += left.unsafeNames;
        if (left.unsafeNames > 0) TraceCount("names left out", place_.path, left.unsafeNames);
        return added_;
    }

    bool IsLocal() const { return place_.store->IsLocal(); }

private:
    static StorePath FolderPlace(CDepot& depot, const std::string& folder) {
        std::string path = DisplayToStorage(depot, folder);
        return {&depot.ActiveStore(), std::move(path)};
    }

    void Take(const StoreItem& item, LeftOut& left) {
        if (item.isHostile) {
            ++left.unsafeNames;
            TraceLeftOut(place_.path, item.name, kHostileName);
        } else if ((item.isFolder || (!foldersOnly_ && PassesFilter(item.name, filter_))) &&
                   AppendItem(list_, [&] { return ItemFor(item); })) {
            ++added_;
        }
    }

    std::unique_ptr<CDepotItem> ItemFor(const StoreItem& found) {
        std::string path = displayFolder_ + found.name;
        auto item = found.isFolder ? FolderItem(std::move(path), depot_)
                                   : FileItem(std::move(path), depot_, found);
        item->findData =
            found.details ? std::make_unique<WIN32_FIND_DATAA>(*found.details) : EntryData(found);
        return item;
    }

    CDepotItems& list_;
    CDepot& depot_;
    const std::string& filter_;
    const bool foldersOnly_;
    const StorePath place_;
    // Every child's display path begins with it: converting the folder once is enough.
    const std::string displayFolder_;
    std::size_t added_ = 0;
};

}  // namespace

int Enumerate(CDepotItems& list, const CDepotItem* folderItem, const std::string& filter,
              const std::string& subPath, bool foldersOnly) {
    if (folderItem == nullptr || folderItem->depot == nullptr) return 0;
    const ListingRequest request =
        MakeListingRequest(folderItem->path, filter, subPath, foldersOnly);
    if (request.folder.empty()) return 0;
    CDepot& depot = *folderItem->depot;
    FolderLister lister(list, depot, request, foldersOnly);
    const std::size_t added = lister.List();
    return static_cast<int>(lister.IsLocal() ? added : list.Count());
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
