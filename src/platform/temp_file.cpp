#include "platform/temp_file.h"

#include "platform/paths.h"
#include "platform/win32.h"

#include <shellapi.h>  // needs the headers of Windows before it

namespace depot {
namespace {

constexpr char kPrefix[] = "lda";

// A list of one path ends in two NULs.
constexpr std::size_t kPathListBytes = kMaxPathBytes + 2;

}  // namespace

std::string MakeTempFileName() {
    char folder[kMaxPathBytes] = {};
    const DWORD length = GetTempPathA(sizeof(folder), folder);
    if (length == 0 || length >= sizeof(folder)) return {};
    char name[MAX_PATH] = {};
    return GetTempFileNameA(folder, kPrefix, 0, name) != 0 ? name : std::string();
}

int DeleteContainingFolder(const std::string& path) {
    const std::string folder = ParentFolder(path);
    // A path that had to be cut would name another folder.
    if (folder.empty() || folder.size() > kPathListBytes - 2) return 0;
    char list[kPathListBytes] = {};
    folder.copy(list, kPathListBytes - 2);
    SHFILEOPSTRUCTA operation = {};
    operation.wFunc = FO_DELETE;
    operation.pFrom = list;
    operation.fFlags = FOF_NOCONFIRMATION;
    return SHFileOperationA(&operation) == 0 && operation.fAnyOperationsAborted == FALSE ? 1 : 0;
}

}  // namespace depot
