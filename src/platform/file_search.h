// Searches of the file system for names that match a pattern.
#pragma once

#include <memory>
#include <string>
#include <type_traits>

#include "platform/win32.h"

namespace depot {

struct FindCloser {
    void operator()(HANDLE search) const { FindClose(search); }
};
using UniqueFind = std::unique_ptr<std::remove_pointer_t<HANDLE>, FindCloser>;

// Starts a search and stores its first find; null when nothing is found. The next finds come from
// FindNextFileA.
inline UniqueFind StartSearch(const std::string& pattern, WIN32_FIND_DATAA& found) {
    UniqueFind search(FindFirstFileA(pattern.c_str(), &found));
    // What a failed call returns is no search, and must not be closed.
    if (search.get() == INVALID_HANDLE_VALUE) static_cast<void>(search.release());
    return search;
}

}  // namespace depot
