#include "model/kept_working_copy.h"

#include "model/recovered_files.h"
#include "model/working_copy_journal.h"
#include "platform/local_file.h"
#include "platform/win32.h"

namespace depot {

void KeepWorkingCopy(const std::string& localPath, const std::string& name,
                     const std::string& folder, const RefusedEdits& refused) {
    const auto bytes = ReadLocalFile(localPath);
    if (!bytes) return;
    const auto& whole = refused.whole ? *refused.whole : *bytes;
    if (KeepRecoveredProfile(folder, name, whole, refused.edits).empty()) return;
    // What is kept already must not be kept once more by the next process.
    ForgetWorkingCopy(localPath);
    DeleteFileA(localPath.c_str());
}

void DropWorkingCopy(const std::string& localPath) noexcept {
    if (DeleteFileA(localPath.c_str())) ForgetWorkingCopy(localPath);
}

}  // namespace depot
