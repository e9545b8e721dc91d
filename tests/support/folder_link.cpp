#include "support/folder_link.h"

#include <gtest/gtest.h>

#include <utility>

#include "support/directory_server.h"
#include "support/unix_path.h"

namespace depot::test {
namespace {

DWORD shownTag = 0;
HANDLE(WINAPI* genuineFirst)(LPCWSTR, WIN32_FIND_DATAW*) = nullptr;
BOOL(WINAPI* genuineNext)(HANDLE, WIN32_FIND_DATAW*) = nullptr;

void ShowTag(WIN32_FIND_DATAW& found) {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) found.dwReserved0 = shownTag;
}

HANDLE WINAPI FindFirstWithTag(LPCWSTR pattern, WIN32_FIND_DATAW* found) {
    const HANDLE search = genuineFirst(pattern, found);
    if (search != INVALID_HANDLE_VALUE) ShowTag(*found);
    return search;
}

BOOL WINAPI FindNextWithTag(HANDLE search, WIN32_FIND_DATAW* found) {
    const BOOL more = genuineNext(search, found);
    if (more) ShowTag(*found);
    return more;
}

// The name of a link below Wine, which follows links.
std::string UnixLink(const std::string& link) {
    const std::size_t name = link.rfind('\\');
    return UnixPath(link.substr(0, name)) + "/" + link.substr(name + 1);
}

}  // namespace

FolderLink::FolderLink(std::string link, const std::string& folder) : link_(std::move(link)) {
    const std::string target = UnixPath(folder);
    if (target.empty()) {
        constexpr DWORD kToFolder = 1;
        CreateSymbolicLinkA(link_.c_str(), folder.c_str(), kToFolder);
    } else {
        MakeUnixLink(target, UnixLink(link_));
    }
    constexpr DWORD kLink = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    EXPECT_EQ(kLink, GetFileAttributesA(link_.c_str()) & kLink) << link_;
}

FolderLink::~FolderLink() {
    if (UnixPath(link_).empty()) {
        RemoveDirectoryA(link_.c_str());
    } else {
        RemoveUnixLink(UnixLink(link_));
    }
}

ShownReparseTag::ShownReparseTag(DWORD tag)
    : first_("FindFirstFileW", &FindFirstWithTag), next_("FindNextFileW", &FindNextWithTag) {
    EXPECT_TRUE(first_.IsInPlace() && next_.IsInPlace());
    genuineFirst = first_.Genuine();
    genuineNext = next_.Genuine();
    shownTag = tag;
}

}  // namespace depot::test
