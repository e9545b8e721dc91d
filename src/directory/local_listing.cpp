#include "directory/local_listing.h"

#include <string_view>

#include "platform/file_search.h"
#include "platform/text.h"

namespace depot {
namespace {

bool IsFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsDotName(std::string_view name) {
    return name == "." || name == "..";
}

// Calls `take` with every find in the folder but "." and "..". Returns whether all of it could be
// listed.
template <class Take>
bool ForEachIn(const std::string& folder, Take take) {
    WIN32_FIND_DATAA found = {};
    const UniqueFind search = StartSearch(EnsureTrailingBackslash(folder) + "*.*", found);
    if (!search) return false;
    do {
        if (!IsDotName(found.cFileName)) take(found);
    } while (FindNextFileA(search.get(), &found));
    return GetLastError() == ERROR_NO_MORE_FILES;
}

}  // namespace

void AddLocalFoldersBelow(const std::string& folder, LdapItemList& items) {
    const std::string base = EnsureTrailingBackslash(folder);
    ForEachIn(base, [&](const WIN32_FIND_DATAA& found) {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return;
        AddLocalPath(base + found.cFileName, items);
        // A link may lead back to a folder above it.
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return;
        AddLocalFoldersBelow(base + found.cFileName, items);
    });
}

std::uint32_t AddLocalChildren(const std::string& folder, Subfolders subfolders,
                               LdapItemList& items) {
    const std::string base = EnsureTrailingBackslash(folder);
    std::uint32_t leftOut = 0;
    const bool listed = ForEachIn(base, [&](const WIN32_FIND_DATAA& found) {
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        // A link may lead back to a folder above it.
        const bool isLink = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        if (isFolder && isLink) ++leftOut;
        if (isFolder && (isLink || subfolders == Subfolders::kLeaveOut)) return;
        AddLocalPath(base + found.cFileName, items);
    });
    return listed ? leftOut : kNotListed;
}

void AddLocalPath(const std::string& path, LdapItemList& items) {
    items.Add(path, IsFolder(path));
}

}  // namespace depot
