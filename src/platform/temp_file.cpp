#include "platform/temp_file.h"

#include "platform/paths.h"
#include "platform/private_file.h"
#include "platform/win32.h"

#include <shellapi.h>  // needs the headers of Windows before it

namespace depot {
namespace {

constexpr char kFilePrefix[] = "lda";
constexpr char kFolderPrefix[] = "Dir";
constexpr int kMaxFolderAttempts = 16;

// A list of one path ends in two NULs.
constexpr std::size_t kPathListBytes = kMaxPathBytes + 2;

bool IsEmptyFile(const char* path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    return GetFileAttributesExA(path, GetFileExInfoStandard, &data) && data.nFileSizeLow == 0 &&
           data.nFileSizeHigh == 0;
}

std::string MakeTempFile(const char* prefix) {
    char folder[kMaxPathBytes] = {};
    const DWORD length = GetTempPathA(sizeof(folder), folder);
    if (length == 0 || length >= sizeof(folder)) return {};
    // Reserved before the file is there: it could not be removed if memory ran out afterwards.
    std::string name(MAX_PATH, '\0');
    SetLastError(ERROR_SUCCESS);
    if (GetTempFileNameA(folder, prefix, 0, name.data()) == 0) return {};
    const DWORD error = GetLastError();
    name.resize(name.find('\0'));
    // Some systems answer with an existing file when every name is taken. A new one is empty.
    if (error == ERROR_FILE_EXISTS && !IsEmptyFile(name.c_str())) name.clear();
    return name;
}

}  // namespace

std::string MakeTempFileName() {
    std::string name = MakeTempFile(kFilePrefix);
    if (!name.empty()) MakePrivate(name);
    return name;
}

std::string MakeTempFolder() {
    // The name of a file that the system made is free once the file is gone again; another process
    // may be faster, and then the next name is tried.
    for (int attempt = 0; attempt < kMaxFolderAttempts; ++attempt) {
        std::string folder = MakeTempFile(kFolderPrefix);
        if (folder.empty() || !DeleteFileA(folder.c_str())) return {};
        if (CreatePrivateFolder(folder)) return folder;
    }
    return {};
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
