#include "directory/local_listing.h"

#include "platform/file_search.h"
#include "platform/local_file.h"
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
