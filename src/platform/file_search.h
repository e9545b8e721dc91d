// Searches of the file system for names that match a pattern.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/win32.h"

namespace depot {

struct FindCloser {
    void operator()(HANDLE search) const { FindClose(search); }
};
using UniqueFind = std::unique_ptr<std::remove_pointer_t<HANDLE>, FindCloser>;

// One search. Only names that narrow texts hold exactly are handed out: any other would come back
// as the name of another file, or of none.
class FileSearch {
public:
    explicit FileSearch(const std::string& pattern);

    // Stores the next find. Returns false at the end.
    bool Next(WIN32_FIND_DATAA& found);

    // How many finds were passed over for their names: the code page cannot hold them, or they
    // have more bytes than a find has room for.
    std::uint32_t UnsafeNames() const { return unsafeNames_; }

    // Whether the search has ended, with all that there was.
    bool IsComplete() const { return isComplete_; }

private:
    bool Advance();
    void TraceUnsafeName() const;

    const std::string pattern_;  // while the trace is on
    WIN32_FIND_DATAW found_ = {};
    UniqueFind search_;
    bool isFirst_ = true;
    bool isComplete_ = false;
    std::uint32_t unsafeNames_ = 0;
};

// Returns the names of what the folder holds that end so.
std::vector<std::string> NamesIn(const std::string& folder, std::string_view ending);

// Whether the find is "." or "..".
bool IsDotName(const WIN32_FIND_DATAA& found);

// Whether the find is a link to a folder, which may lead anywhere. A folder whose files stand
// elsewhere until they are wanted is none, though it carries a reparse point as well.
bool IsLinkToFolder(const WIN32_FIND_DATAA& found);

// The same for a path. Such a link is no part of the tree that it stands in: it may lead to a
// folder above it.
bool IsLinkToFolder(const std::string& path);

}  // namespace depot
