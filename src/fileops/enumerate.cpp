#include "fileops/enumerate.h"

#include "config/file_types.h"
#include "config/profile_file.h"
#include "fileops/file_filter.h"
#include "manager/display_path.h"
#include "platform/find_handle.h"
#include "platform/paths.h"

namespace depot {
namespace {

bool IsSelfOrParent(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

bool IsFolder(const WIN32_FIND_DATAA& found) {
    return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
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
          displayFolder_(StorageToDisplay(depot, JoinPath(folder_, "x"))) {
        displayFolder_.pop_back();
    }

    int List() {
        int added = 0;
        WIN32_FIND_DATAA found = {};
        const UniqueFind search = FindFirst(JoinPath(folder_, "*.*"), found);
        for (bool more = search != nullptr; more; more = FindNextFileA(search.get(), &found)) {
            if (!IsSelfOrParent(found.cFileName) && Add(found)) ++added;
        }
        return added;
    }

private:
    bool Add(const WIN32_FIND_DATAA& found) {
        const bool folder = IsFolder(found);
        if (!folder && (foldersOnly_ || !PassesFilter(found.cFileName, filter_))) return false;
        auto item = std::make_unique<CDepotItem>(displayFolder_ + found.cFileName, &depot_);
        if (folder) {
            item->kindFlags = kFolderKind;
        } else {
            const std::string full = JoinPath(folder_, found.cFileName);
            const std::int32_t type = DetectFileType(full);
            item->fileType = static_cast<std::uint32_t>(type);
            item->kindFlags = GetTerminalType(full, type);
        }
        item->findData = std::make_unique<WIN32_FIND_DATAA>(found);
        return list_.Append(std::move(item)) != nullptr;
    }

    CDepotItems& list_;
    CDepot& depot_;
    const std::string& filter_;
    const bool foldersOnly_;
    const std::string folder_;
    // Every entry's display path begins with it: converting the folder once is enough.
    std::string displayFolder_;
};

}  // namespace

int Enumerate(CDepotItems& list, const CDepotItem* folderItem, const std::string& filter,
              const std::string& subPath, bool foldersOnly) {
    if (folderItem == nullptr || folderItem->depot == nullptr) return 0;
    const ListingRequest request =
        MakeListingRequest(folderItem->path, filter, subPath, foldersOnly);
    if (request.folder.empty()) return 0;
    return FolderLister(list, *folderItem->depot, request, foldersOnly).List();
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
