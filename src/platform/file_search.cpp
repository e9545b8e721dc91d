#include "platform/file_search.h"

#include <utility>

#include "platform/paths.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

// Returns false when the field cannot hold the name exactly.
template <std::size_t kUnits, std::size_t kBytes>
bool StoreName(const wchar_t (&name)[kUnits], char (&field)[kBytes]) {
    static_assert(kBytes >= kUnits);
    // Most names are ASCII, which is the same in every code page.
    std::size_t length = 0;
    for (; name[length] != L'\0' && name[length] < 0x80; ++length) {
        field[length] = static_cast<char>(name[length]);
    }
    if (name[length] != L'\0') {
        const auto exact = ExactAnsiFromWide(name);
        if (!exact || exact->size() >= kBytes) return false;
        length = exact->copy(field, kBytes);
    }
    field[length] = '\0';
    return true;
}

bool StoreFind(const WIN32_FIND_DATAW& found, WIN32_FIND_DATAA& narrow) {
    if (!StoreName(found.cFileName, narrow.cFileName)) return false;
    // The short name is an addition, which a file may lack.
    if (!StoreName(found.cAlternateFileName, narrow.cAlternateFileName)) {
        narrow.cAlternateFileName[0] = '\0';
    }
    narrow.dwFileAttributes = found.dwFileAttributes;
    narrow.ftCreationTime = found.ftCreationTime;
    narrow.ftLastAccessTime = found.ftLastAccessTime;
    narrow.ftLastWriteTime = found.ftLastWriteTime;
    narrow.nFileSizeHigh = found.nFileSizeHigh;
    narrow.nFileSizeLow = found.nFileSizeLow;
    narrow.dwReserved0 = found.dwReserved0;
    narrow.dwReserved1 = found.dwReserved1;
    return true;
}

}  // namespace

FileSearch::FileSearch(const std::string& pattern)
    : pattern_(IsTracing() ? pattern : std::string()),
      search_(FindFirstFileW(WideFromAnsi(pattern).c_str(), &found_)) {
    // What a failed call returns is no search, and must not be closed.
    if (search_.get() == INVALID_HANDLE_VALUE) static_cast<void>(search_.release());
}

bool FileSearch::Advance() {
    if (!search_) return false;
    if (std::exchange(isFirst_, false)) return true;
    if (FindNextFileW(search_.get(), &found_)) return true;
    isComplete_ = GetLastError() == ERROR_NO_MORE_FILES;
    return false;
}

bool IsDotName(const WIN32_FIND_DATAA& found) {
    const std::string_view name = found.cFileName;
    return name == "." || name == "..";
}

bool IsLinkToFolder(const WIN32_FIND_DATAA& found) {
    constexpr DWORD kLink = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    if ((found.dwFileAttributes & kLink) != kLink) return false;
    // Some systems do not show what kind of reparse point it is.
    return found.dwReserved0 == 0 || IsReparseTagNameSurrogate(found.dwReserved0);
}

void FileSearch::TraceUnsafeName() const {
    if (!IsTracing()) return;
    TraceLeftOut(ParentFolderKeepSlash(pattern_), AnsiFromWide(found_.cFileName),
                 "a name that the code page cannot hold");
}

bool FileSearch::Next(WIN32_FIND_DATAA& found) {
    while (Advance()) {
        if (StoreFind(found_, found)) return true;
        ++unsafeNames_;
        TraceUnsafeName();
    }
    return false;
}

std::vector<std::string> NamesIn(const std::string& folder, std::string_view ending) {
    std::vector<std::string> names;
    FileSearch search(Concatenate({JoinPath(folder, "*"), ending}));
    WIN32_FIND_DATAA found = {};
    while (search.Next(found)) {
        if (std::string_view(found.cFileName).ends_with(ending))
            names.emplace_back(found.cFileName);
    }
    return names;
}

bool IsLinkToFolder(const std::string& path) {
    WIN32_FIND_DATAA found = {};
    return FileSearch(RemoveTrailingBackslash(path)).Next(found) && IsLinkToFolder(found);
}

}  // namespace depot
