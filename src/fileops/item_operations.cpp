#include "fileops/item_operations.h"

#include <memory>

#include "fileops/depot_file.h"
#include "manager/display_path.h"
#include "platform/error_text.h"
#include "platform/paths.h"
#include "platform/temp_file.h"

namespace depot {
namespace {

constexpr char kCaption[] = "Quillon";

bool IsInDirectory(const CDepotItem& item) {
    return item.depot != nullptr && IsDirectoryDepot(*item.depot);
}

std::string StoragePath(const CDepotItem& item) {
    return item.depot ? DisplayToStorage(*item.depot, item.path) : item.path;
}

std::unique_ptr<CDepotItem> PlainItem(const std::string& path) {
    return std::make_unique<CDepotItem>(path, nullptr);
}

// Removes the temporary folders that an operation needed, whatever became of it.
class TemporaryFolders {
public:
    explicit TemporaryFolders(HWND window) : window_(window) {}
    ~TemporaryFolders() {
        if (!folders_.empty()) {
            RunShellOperation(FO_DELETE, folders_, nullptr, FOF_NOCONFIRMATION, window_);
        }
    }
    TemporaryFolders(const TemporaryFolders&) = delete;
    TemporaryFolders& operator=(const TemporaryFolders&) = delete;

    // Returns a new folder; empty when none can be made.
    std::string Make() {
        std::string folder = MakeTempFolder();
        if (!folder.empty()) folders_.push_back(folder);
        return folder;
    }

private:
    HWND window_;
    std::vector<std::string> folders_;
};

// Copies an entry of a directory into a folder under its own name; empty when that fails.
std::string CopyIntoFolder(const CDepotItem& item, const std::string& folder,
                           std::string* errorText) {
    if (folder.empty()) return {};
    std::string copy = JoinPath(folder, NamePart(RemoveTrailingBackslash(item.path)));
    const bool copied = CopyFile(*item.depot, item.path, copy, nullptr, false, errorText) != 0;
    return copied ? copy : std::string();
}

int DeleteEntries(const CDepotItems& entries) {
    for (std::size_t index = 0; index < entries.Count(); ++index) {
        if (DeleteItem(*entries.At(index)) == 0) return 0;
    }
    return 1;
}

int OperateOneByOne(const CDepotItems& items, const CDepotItem& target, UINT operation, HWND window,
                    std::string* errorText) {
    for (std::size_t index = 0; index < items.Count(); ++index) {
        if (ItemOperation(*items.At(index), &target, operation, window, errorText) == 0) return 0;
    }
    return 1;
}

int DeleteMovedSource(const CDepotItem& item, HWND window) {
    if (IsInDirectory(item)) return DeleteItem(item);
    CDepotItems source;
    source.Append(item.Clone());
    return ShellOperation(source, nullptr, FO_DELETE, FOF_NOCONFIRMATION, window, nullptr);
}

}  // namespace

int CopyItem(const CDepotItem& source, const CDepotItem* target, bool failIfExists,
             std::string* errorText) {
    if (source.depot == nullptr || target == nullptr || target->path.empty()) return 0;
    return CopyFile(*source.depot, source.path, target->path, target->depot, failIfExists,
                    errorText);
}

int DeleteItem(const CDepotItem& item) {
    return item.depot ? DeleteFile(*item.depot, item.path) : 0;
}

int ShellOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                   FILEOP_FLAGS flags, HWND window, std::string* errorText) {
    if (items.Count() == 0) return 1;
    std::vector<std::string> sources;
    for (std::size_t index = 0; index < items.Count(); ++index) {
        sources.push_back(StoragePath(*items.At(index)));
    }
    const std::string destination = target ? StoragePath(*target) : std::string();
    if (RunShellOperation(operation, sources, target ? &destination : nullptr, flags, window)) {
        return 1;
    }
    const DWORD error = GetLastError();
    if (errorText != nullptr && error != ERROR_SUCCESS) {
        FormatErrorText(error, nullptr, kCaption, errorText, nullptr);
    }
    return 0;
}

int ItemOperation(const CDepotItem& item, const CDepotItem* target, UINT operation, HWND window,
                  std::string* /*errorText*/) {
    switch (operation) {
        case FO_COPY:
            return CopyItem(item, target, true, nullptr);
        case FO_DELETE:
            return DeleteItem(item);
        case FO_MOVE:
            if (CopyItem(item, target, true, nullptr) == 0) return 0;
            DeleteMovedSource(item, window);
            return 1;
        default:
            return 0;
    }
}

int ListOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                  FILEOP_FLAGS flags, HWND window, std::string* errorText) {
    if (target != nullptr && IsInDirectory(*target)) {
        return OperateOneByOne(items, *target, operation, window, errorText);
    }
    const bool removesSource = operation == FO_MOVE || operation == FO_DELETE;
    TemporaryFolders temporaryFolders(window);
    CDepotItems shellItems, entriesToRemove;
    for (std::size_t index = 0; index < items.Count(); ++index) {
        const CDepotItem& item = *items.At(index);
        if (!IsInDirectory(item)) {
            shellItems.Append(item.Clone());
            continue;
        }
        const std::string copy = CopyIntoFolder(item, temporaryFolders.Make(), errorText);
        // What could not be fetched must not be removed, and the others not half done.
        if (copy.empty()) return 0;
        shellItems.Append(PlainItem(copy));
        if (removesSource) entriesToRemove.Append(item.Clone());
    }
    const int result = ShellOperation(shellItems, target, operation, flags, window, errorText);
    return result == 0 ? 0 : DeleteEntries(entriesToRemove);
}

}  // namespace depot
