#include "directory/local_listing.h"

#include <string_view>

#include "platform/file_search.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

// Calls `take` with every find in the folder but "." and "..". Returns how many names were passed
// over, or kNotListed when not all of it could be listed.
template <class Take>
std::uint32_t ForEachIn(const std::string& folder, Take take) {
    WIN32_FIND_DATAA found = {};
    FileSearch search(EnsureTrailingBackslash(folder) + "*.*");
    while (search.Next(found)) {
        if (!IsDotName(found)) take(found);
    }
    return search.IsComplete() ? search.UnsafeNames() : kNotListed;
}

}  // namespace

bool IsLinkToFolder(const std::string& path) {
    WIN32_FIND_DATAA found = {};
    return FileSearch(RemoveTrailingBackslash(path)).Next(found) && IsLinkToFolder(found);
}

std::string LinksText(std::uint32_t count) {
    if (count == 0) return {};
    const std::string links = count == 1 ? " link to a folder was" : " links to folders were";
    return std::to_string(count) + links + " left out.";
}

std::string UnsafeLocalNamesText(std::uint32_t count) {
    if (count == 0) return {};
    const std::string names = count == 1 ? " file or folder was" : " files and folders were";
    return std::to_string(count) + names +
           " left out: the system's code page cannot hold the name.";
}

void AddLocalFoldersBelow(const std::string& folder, LdapItemList& items) {
    const std::string base = EnsureTrailingBackslash(folder);
    ForEachIn(base, [&](const WIN32_FIND_DATAA& found) {
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (!isFolder || IsLinkToFolder(found)) return;
        AddLocalPath(base + found.cFileName, items);
        AddLocalFoldersBelow(base + found.cFileName, items);
    });
}

std::uint32_t AddLocalChildren(const std::string& folder, Subfolders subfolders,
                               LdapItemList& items, std::uint32_t* unsafeNames) {
    const std::string base = EnsureTrailingBackslash(folder);
    std::uint32_t links = 0;
    const std::uint32_t unsafe = ForEachIn(base, [&](const WIN32_FIND_DATAA& found) {
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const bool isLink = IsLinkToFolder(found);
        if (isLink) ++links;
        if (isFolder && (isLink || subfolders == Subfolders::kLeaveOut)) return;
        AddLocalPath(base + found.cFileName, items);
    });
    if (unsafe == kNotListed) return kNotListed;
    if (unsafeNames != nullptr) *unsafeNames = unsafe;
    return links + unsafe;
}

void AddLocalPath(const std::string& path, LdapItemList& items) {
    items.Add(path, IsLocalFolder(path));
}

}  // namespace depot
