// Owner of a file search.
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

// Starts a search and fills in the first thing found; null when nothing is.
inline UniqueFind FindFirst(const std::string& pattern, WIN32_FIND_DATAA& found) {
    const HANDLE search = FindFirstFileA(pattern.c_str(), &found);
    return UniqueFind(search == INVALID_HANDLE_VALUE ? nullptr : search);
}

}  // namespace depot
