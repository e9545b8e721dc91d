#include "directory/local_listing.h"

#include <string_view>

#include "platform/file_search.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

bool IsFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsLinkToFolder(const WIN32_FIND_DATAA& found) {
    constexpr DWORD kLink = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    if ((found.dwFileAttributes & kLink) != kLink) return false;
    // Some systems do not show what kind of reparse point it is.
    return found.dwReserved0 == 0 || IsReparseTagNameSurrogate(found.dwReserved0);
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

bool IsLinkToFolder(const std::string& path) {
    WIN32_FIND_DATAA found = {};
    return StartSearch(RemoveTrailingBackslash(path), found) && IsLinkToFolder(found);
}

std::string LinksText(std::uint32_t count) {
    if (count == 0) return {};
    const std::string links = count == 1 ? " link to a folder was" : " links to folders were";
    return std::to_string(count) + links + " left out.";
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
                               LdapItemList& items) {
    const std::string base = EnsureTrailingBackslash(folder);
    std::uint32_t leftOut = 0;
    const bool listed = ForEachIn(base, [&](const WIN32_FIND_DATAA& found) {
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const bool isLink = IsLinkToFolder(found);
        if (isLink) ++leftOut;
        if (isFolder && (isLink || subfolders == Subfolders::kLeaveOut)) return;
        AddLocalPath(base + found.cFileName, items);
    });
    return listed ? leftOut : kNotListed;
}

void AddLocalPath(const std::string& path, LdapItemList& items) {
    items.Add(path, IsFolder(path));
}

}  // namespace depot
