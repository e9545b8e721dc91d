#include "manager/standard_folders.h"

#include "platform/directory_service.h"
#include "platform/text.h"

namespace depot {

const std::string& StandardFolders::Slot(std::size_t slot, int category, int item) {
    std::string& folder = slots_[slot];
    if (folder.empty()) folder = EnsureTrailingBackslash(GetStandardFolder(category, item));
    return folder;
}

}  // namespace depot
