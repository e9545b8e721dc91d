#include "fileops/depot_file.h"

#include "fileops/shell_operation.h"
#include "manager/display_path.h"
#include "platform/error_text.h"
#include "platform/paths.h"

namespace depot {
namespace {

constexpr char kCaption[] = "Quillon";

void DescribeFailure(DWORD error, const std::string& path, std::string* errorText) {
    if (errorText != nullptr) FormatErrorText(error, path.c_str(), kCaption, errorText, nullptr);
}

int MoveInFileSystem(CDepot& depot, const std::string& source, const std::string& destination,
                     HWND window, UINT operation, std::string* errorText) {
    if (RunShellOperation(operation, {source}, &destination, kQuietFlags, window,
                          kShellSinglePathBytes)) {
        return 1;
    }
    const DWORD error = LastErrorCode(depot);
    if (error != ERROR_SUCCESS) DescribeFailure(error, destination, errorText);
    return 0;
}

int CopyInFileSystem(const std::string& source, const std::string& destination, bool failIfExists,
                     std::string* errorText) {
    if (CopyFileA(source.c_str(), destination.c_str(), failIfExists)) return 1;
    DWORD error = GetLastError();
    // The system calls a path that is too long "not found", which helps nobody.
    if (destination.size() >= kMaxPathBytes) error = ERROR_BUFFER_OVERFLOW;
    DescribeFailure(error, destination, errorText);
    return 0;
}

}  // namespace

bool IsDirectoryDepot(CDepot& depot) {
    const CDepotPath* const location = depot.paths->ActiveLocation();
    return location != nullptr && location->type == kDirectoryLocation;
}

int FileExists(CDepot& depot, const std::string& path) {
    if (IsDirectoryDepot(depot)) return 0;
    return PathExists(DisplayToStorage(depot, path)) ? 1 : 0;
}

int DeleteFile(CDepot& depot, const std::string& path) {
    if (IsDirectoryDepot(depot)) return 0;
    return DeleteFileA(DisplayToStorage(depot, path).c_str()) ? 1 : 0;
}

int MoveFile(CDepot& depot, const std::string& source, const std::string& destination, HWND window,
             CDepot* destinationDepot, std::string* errorText) {
    if (IsDirectoryDepot(depot)) return 0;
    CDepot& target = destinationDepot ? *destinationDepot : depot;
    return MoveInFileSystem(depot, DisplayToStorage(depot, source),
                            DisplayToStorage(target, destination), window,
                            destinationDepot ? FO_MOVE : FO_RENAME, errorText);
}

int CopyFile(CDepot& depot, const std::string& source, const std::string& destination,
             CDepot* destinationDepot, bool failIfExists, std::string* errorText) {
    const std::string from = DisplayToStorage(depot, source);
    std::string to =
        destinationDepot ? DisplayToStorage(*destinationDepot, destination) : destination;
    if (to.ends_with('\\')) to += NamePart(from);
    if (IsDirectoryDepot(depot) || (destinationDepot && IsDirectoryDepot(*destinationDepot)))
        return 0;
    return CopyInFileSystem(from, to, failIfExists, errorText);
}

DWORD LastErrorCode(CDepot&) {
    return GetLastError();
}

}  // namespace depot
