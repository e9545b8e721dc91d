// What working copies leave on the disk: their temporary files, and what was recovered.
#pragma once

#include <string>
#include <vector>

#include "support/scratch.h"
// After the Windows headers.
#include <shlobj.h>

namespace depot::test {

// The paths of a folder's files that match.
inline std::vector<std::string> FilesIn(const std::string& folder, const std::string& pattern) {
    std::vector<std::string> paths;
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA((folder + "\\" + pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return paths;
    do {
        if (found.cFileName[0] != '.') paths.push_back(folder + "\\" + found.cFileName);
    } while (FindNextFileA(search, &found));
    FindClose(search);
    return paths;
}

inline std::vector<std::string> WorkingCopies() {
    char folder[MAX_PATH] = {};
    const DWORD length = GetTempPathA(sizeof(folder), folder);
    return FilesIn(std::string(folder, length - 1), "lda*");
}

inline std::string RecoveredFolder() {
    char folder[MAX_PATH] = {};
    SHGetSpecialFolderPathA(nullptr, folder, CSIDL_LOCAL_APPDATA, TRUE);
    return std::string(folder) + "\\Quillon\\Farrow\\Recovered";
}

inline std::vector<std::string> RecoveredFiles() {
    return FilesIn(RecoveredFolder(), "*");
}

// Removes what other tests left, before and after.
class CleanWorkingFiles {
public:
    CleanWorkingFiles() { Clean(); }
    ~CleanWorkingFiles() { Clean(); }
    CleanWorkingFiles(const CleanWorkingFiles&) = delete;
    CleanWorkingFiles& operator=(const CleanWorkingFiles&) = delete;

private:
    static void Clean() {
        for (const std::string& path : WorkingCopies()) DeleteFileA(path.c_str());
        for (const std::string& path : RecoveredFiles()) DeleteFileA(path.c_str());
    }
};

}  // namespace depot::test
