#include "fileops/depot_file.h"

#include "fileops/directory_transfer.h"
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
    if (depot.paths->ActiveLocation() == nullptr) return 0;
    const std::string storage = DisplayToStorage(depot, path);
    if (CLDAPItems* const directory = depot.DirectoryConnection()) {
        return EntryExists(*directory, storage, nullptr);
    }
    return PathExists(storage) ? 1 : 0;
}

int DeleteFile(CDepot& depot, const std::string& path) {
    const std::string storage = DisplayToStorage(depot, path);
    if (CLDAPItems* const directory = depot.DirectoryConnection()) {
        return RemoveEntry(*directory, storage, nullptr);
    }
    return DeleteFileA(storage.c_str()) ? 1 : 0;
}

int MoveFile(CDepot& depot, const std::string& source, const std::string& destination, HWND window,
             CDepot* destinationDepot, std::string* errorText) {
    CDepot& target = destinationDepot ? *destinationDepot : depot;
    const std::string from = DisplayToStorage(depot, source);
    const std::string to = DisplayToStorage(target, destination);
    if (CLDAPItems* const directory = depot.DirectoryConnection()) {
        return MoveEntry(*directory, from, to, errorText);
    }
    return MoveInFileSystem(depot, from, to, window, destinationDepot ? FO_MOVE : FO_RENAME,
                            errorText);
}

int CopyFile(CDepot& depot, const std::string& source, const std::string& destination,
             CDepot* destinationDepot, bool failIfExists, std::string* errorText) {
    // A folder takes the copy under its own name.
    const std::string target =
        destination.ends_with('\\') ? destination + NamePart(source) : destination;
    const std::string from = DisplayToStorage(depot, source);
    const std::string to = destinationDepot ? DisplayToStorage(*destinationDepot, target) : target;
    const ExistingEntries existing =
        failIfExists ? ExistingEntries::kRefuse : ExistingEntries::kReplace;
    CLDAPItems* const sourceDirectory = depot.DirectoryConnection();
    CLDAPItems* const targetDirectory =
        destinationDepot ? destinationDepot->DirectoryConnection() : nullptr;
    if (sourceDirectory && targetDirectory) {
        return CopyEntry(*sourceDirectory, from, *targetDirectory, to, existing, errorText);
    }
    if (sourceDirectory) return Download(*sourceDirectory, from, to, errorText);
    if (targetDirectory) return Upload(*targetDirectory, from, to, existing, errorText);
    return CopyInFileSystem(from, to, failIfExists, errorText);
}

DWORD LastErrorCode(CDepot& depot) {
    const DWORD systemError = GetLastError();
    CLDAPItems* const directory = depot.DirectoryConnection();
    return directory ? directory->Client().LdapMapErrorToWin32(directory->LastError())
                     : systemError;
}

}  // namespace depot
