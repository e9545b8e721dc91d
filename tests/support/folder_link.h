// Links to folders, and what systems show of them, for programs that run under tools/with-slapd.
#pragma once

#include <string>

#include "support/import_patch.h"

namespace depot::test {

// A link to a folder, removed at the end: some libraries never finish removing a tree that holds
// one. A test failure when it cannot be made.
class FolderLink {
public:
    FolderLink(std::string link, const std::string& folder);
    ~FolderLink();
    FolderLink(const FolderLink&) = delete;
    FolderLink& operator=(const FolderLink&) = delete;

private:
    std::string link_;
};

// Lets this program's listings show every folder with a reparse point with this tag, while it
// lives.
class ShownReparseTag {
public:
    explicit ShownReparseTag(DWORD tag);

private:
    const ImportPatch<HANDLE(WINAPI*)(LPCWSTR, WIN32_FIND_DATAW*)> first_;
    const ImportPatch<BOOL(WINAPI*)(HANDLE, WIN32_FIND_DATAW*)> next_;
};

}  // namespace depot::test
