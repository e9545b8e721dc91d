// What is shown of the one file that is selected.
#pragma once

#include <string>

#include "depotbrowser/folder_navigator.h"
#include "depotbrowser/profile_summary.h"

namespace depot {

// What a worker reads of a file.
struct FileDetails {
    bool succeeded = false;
    ProfileSummary summary;
    std::uint64_t size = 0;
    std::string reason;  // why not, where one is known
};

// Reads a profile. Of one that is too large to be a profile nothing is read.
FileDetails ExamineFile(DepotSession& session, const FolderRef& folder, const BrowseEntry& entry);

// Shows the title, the host, the type, the size and the date of the selected file in a line of the
// dialog, after a pause: keys that are held down lead past many files.
class FilePreview {
public:
    explicit FilePreview(const BrowseParts& parts) : parts_(parts) {}

    // The number of the dialog's timer after which the file is read.
    static constexpr UINT_PTR kPauseTimer = 3;

    void SelectionChanged();
    void TimerElapsed();
    // Shows the same of the selected file or folder in a box, with where it lies.
    void ShowProperties();

private:
    const BrowseEntry* OnlySelected() const;
    std::wstring Line(const BrowseEntry& entry, const FileDetails& details,
                      const std::wstring& between) const;
    void ShowLine(const std::wstring& text);
    void ShowBox(const BrowseEntry& entry, const std::string& path, const FileDetails& details);

    const BrowseParts parts_;
    unsigned newest_ = 0;  // the number of the selection that is shown
};

}  // namespace depot
