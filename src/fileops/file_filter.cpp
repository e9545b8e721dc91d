#include "fileops/file_filter.h"

#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::string_view kEveryFile = ".*";

}  // namespace

ListingRequest MakeListingRequest(std::string_view path, std::string_view filter,
                                  std::string_view subPath, bool foldersOnly) {
    const bool filterInPath = !foldersOnly && filter.empty();
    ListingRequest request;
    request.filter = filterInPath ? ToLower(NamePart(path)) : ToLower(filter);
    request.folder = filterInPath ? ParentFolderKeepSlash(path) : std::string(path);
    if (filterInPath && FindSeparator(request.folder) == std::string::npos) {
        request.folder = EnsureTrailingBackslash(request.folder);
    }
    if (!request.folder.empty() && !subPath.empty()) {
        request.folder = JoinPath(request.folder, subPath);
    }
    return request;
}

bool PassesFilter(std::string_view name, std::string_view filter) {
    if (filter == kEveryFile) return true;
    return FindText(filter, ToLower(ExtensionPart(name))) != std::string_view::npos;
}

std::vector<bool> SurvivorsOfTypeFilter(const std::vector<bool>& wanted) {
    std::vector<bool> stays(wanted.size(), true);
    for (std::size_t index = 0; index < wanted.size(); ++index) {
        if (wanted[index]) continue;
        stays[index] = false;
        // The next one takes this one's place, which has been looked at.
        ++index;
    }
    return stays;
}

}  // namespace depot
