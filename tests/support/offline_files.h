// What is kept of directories for the time when their servers are away.
#pragma once

#include <string>

#include "offline/offline_folder.h"
#include "platform/handles.h"
#include "platform/wide_text.h"
#include "support/working_files.h"

namespace depot::test {

// Removes what is kept, before and after.
class CleanOfflineFiles {
public:
    CleanOfflineFiles() { Clean(); }
    ~CleanOfflineFiles() { Clean(); }
    CleanOfflineFiles(const CleanOfflineFiles&) = delete;
    CleanOfflineFiles& operator=(const CleanOfflineFiles&) = delete;

private:
    static void Clean() {
        for (const std::string& folder : OfflineFolders()) {
            for (const std::string& path : FilesIn(folder, "*")) DeleteFileA(path.c_str());
            RemoveDirectoryA(folder.c_str());
        }
    }
};

// The edits that wait, of all locations.
inline std::vector<OfflineRecord> WaitingEdits() {
    std::vector<OfflineRecord> edits;
    for (const std::string& folder : OfflineFolders()) {
        for (const std::string& path : FilesIn(folder, "*.edit")) {
            if (auto edit = ReadOfflineFile(path)) edits.push_back(*std::move(edit));
        }
    }
    return edits;
}

// A letter outside of ASCII that the code page has.
inline std::string LetterOfCodePage() {
    return ExactAnsiFromWide(GetACP() == 932 ? L"\u8868" : L"\u00E9").value();
}

// A file that nobody else can open meanwhile.
class OpenFile {
public:
    explicit OpenFile(const std::string& path)
        : file_(OwnFile(
              CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr))) {}
    void Close() const { file_.reset(); }

private:
    mutable UniqueHandle file_;
};

}  // namespace depot::test
