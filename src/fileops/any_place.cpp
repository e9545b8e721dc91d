#include "fileops/any_place.h"

#include <algorithm>

#include "fileops/file_filter.h"
#include "manager/display_path.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "store/folder_store.h"
#include "store/tree.h"

namespace depot {
namespace {

// Whether a part of the path names its own folder or the one above.
bool HasDotNames(std::string_view path) {
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(FindSeparator(path, start), path.size());
        const std::string_view name = path.substr(start, end - start);
        if (name == "." || name == "..") return true;
        start = end + 1;
    }
    return false;
}

bool EndsRoot(std::string_view path) {
    return path.ends_with(">\\") || path.ends_with(":\\");
}

CDepot* FindNamedDepot(const CDepots& depots, std::string& path) {
    CDepot* const depot = FindDepotForPath(depots, path, PathForm::kDisplay, DepotName::kKey);
    if (depot != nullptr) return depot;
    path = FriendlyToCanonical(depots, path);
    return FindDepotForPath(depots, path, PathForm::kDisplay, DepotName::kKey);
}

bool HasDot(const AnyPlace& place) {
    return NamePart(place.path).find('.') != std::string::npos;
}

}  // namespace

StorePath AnyPlace::Stored() const {
    return depot ? PlaceOf(*depot, path) : StorePath{&FolderStore::Instance(), path};
}

bool AnyPlace::IsRoot() const {
    return path.ends_with(":\\") || (depot != nullptr && HoldsRoot(*depot, path));
}

Result FindPlace(CDepots& depots, const std::string& path, AnyPlace& place) {
    place = {nullptr, EndsRoot(path) ? path : RemoveTrailingBackslash(path)};
    if (IsAbsolutePath(path)) {
        // A depot's own folder is recognised by its backslash.
        place.depot = FindDepotHolding(depots, EnsureTrailingBackslash(place.path));
        return {};
    }
    if (!path.starts_with('<')) return SystemError(ERROR_BAD_PATHNAME, path);
    place.depot = FindNamedDepot(depots, place.path);
    if (place.depot == nullptr) return SystemError(ERROR_PATH_NOT_FOUND, path);
    return HasDotNames(place.path) ? SystemError(ERROR_INVALID_NAME, path) : Result();
}

Result LookAt(const AnyPlace& place, ItemKind& kind) {
    kind = ItemKind::kMissing;
    const StorePath at = place.Stored();
    const StoreScope scope(*at.store);
    if (!scope) return scope.Outcome();
    return at.store->Look(at.path, kind);
}

bool FitsKind(const AnyPlace& place, ItemKind kind) {
    if (!place.Stored().store->NamesAlike() || place.IsRoot()) return true;
    return HasDot(place) == (kind == ItemKind::kFile);
}

ItemKind KindBy(const AnyPlace& place, ItemKind kind) {
    if (kind != ItemKind::kOther) return kind;
    return HasDot(place) ? ItemKind::kFile : ItemKind::kFolder;
}

Result TestWritableAt(const AnyPlace& place) {
    const StorePath at = place.Stored();
    const StoreScope scope(*at.store);
    return scope ? at.store->TestWritable(at.path) : scope.Outcome();
}

Result ReadFileAt(const AnyPlace& place, FileBuffer& contents) {
    const StorePath at = place.Stored();
    const StoreScope scope(*at.store);
    if (!scope) return scope.Outcome();
    StoreSource source;
    Result read = at.store->ReadSource(at.path, SourceFate::kStays, source);
    if (!read) return read;
    if (source.isFolder) return SystemError(ERROR_ACCESS_DENIED, place.path);
    contents = std::move(source.contents);
    return {};
}

Result WriteFileAt(const AnyPlace& place, const FileBuffer& contents) {
    const StorePath at = place.Stored();
    const StoreScope scope(*at.store);
    if (!scope) return scope.Outcome();
    Result fits = at.store->CheckTarget(at.path);
    if (!fits) return fits;
    if (!FitsKind(place, ItemKind::kFile)) return SystemError(ERROR_INVALID_NAME, place.path);
    return at.store->WriteFile(at.path, contents, {});
}

Result ListAt(const AnyPlace& folder, const ListingWish& wish, std::vector<std::string>& paths) {
    const StorePath at = folder.Stored();
    const StoreScope scope(*at.store);
    if (!scope) return scope.Outcome();
    ItemKind kind = ItemKind::kMissing;
    Result looked = at.store->Look(at.path, kind);
    if (!looked) return looked;
    if (kind == ItemKind::kMissing) return SystemError(ERROR_PATH_NOT_FOUND, folder.path);
    if (kind == ItemKind::kFile) return SystemError(ERROR_DIRECTORY, folder.path);
    LeftOut left;
    const auto take = [&](const StoreItem& item) {
        if (item.isHostile) {
            TraceLeftOut(folder.path, item.name, kHostileName);
            return;
        }
        const bool isWanted =
            item.isFolder ? wish.folders : wish.files && PassesFilter(item.name, wish.extensions);
        if (isWanted) paths.push_back(JoinPath(folder.path, item.name));
    };
    return at.store->List(at.path, take, left);
}

}  // namespace depot
