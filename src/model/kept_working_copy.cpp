#include "model/kept_working_copy.h"

#include "model/recovered_files.h"
#include "platform/local_file.h"
#include "platform/win32.h"

namespace depot {

void KeepWorkingCopy(const std::string& localPath, const std::string& name,
                     const std::string& folder) {
    const auto bytes = ReadLocalFile(localPath);
    if (!bytes || KeepRecoveredIn(folder, name, bytes->data(), bytes->size()).empty()) return;
    DeleteFileA(localPath.c_str());
}

}  // namespace depot
