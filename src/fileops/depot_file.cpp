#include "fileops/depot_file.h"

#include "fileops/directory_transfer.h"
#include "fileops/file_place.h"
#include "fileops/shell_operation.h"
#include "fileops/transfer_source.h"
#include "manager/display_path.h"
#include "platform/error_text.h"
#include "platform/local_file.h"
#include "platform/local_name.h"
#include "platform/paths.h"
#include "platform/replace_file.h"

namespace depot {
namespace {

constexpr char kCaption[] = "Quillon";

void DescribeFailure(DWORD error, const std::string& path, std::string* errorText) {
    if (errorText != nullptr) FormatErrorText(error, path.c_str(), kCaption, errorText, nullptr);
}

// Fails as a wrong argument does in the file system.
int RefuseLocally(const std::string& path, std::string* errorText) {
    DescribeFailure(ERROR_INVALID_PARAMETER, path, errorText);
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
}

// Fails as a wrong argument does in either store.
int Refuse(CDepot& depot, const std::string& path, std::string* errorText) {
    CLDAPItems* const directory = depot.DirectoryConnection();
    if (directory == nullptr) return RefuseLocally(path, errorText);
    directory->Fail(LDAP_PARAM_ERROR, errorText);
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
}

int MoveInFileSystem(const std::string& source, const std::string& destination, HWND window,
                     UINT operation, std::string* errorText) {
    if (!IsAbsolutePath(source) || !IsAbsolutePath(destination)) {
        return RefuseLocally(destination, errorText);
    }
    if (RunShellOperation(operation, {source}, &destination, kQuietFlags, window,
                          kShellSinglePathBytes)) {
        return 1;
    }
    const DWORD error = GetLastError();
    if (error != ERROR_SUCCESS) DescribeFailure(error, destination, errorText);
    return 0;
}

std::uint64_t FileSize(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return 0;
    return static_cast<std::uint64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
}

// The system's own copy, which must be on the disk before its source goes.
struct FileCopy {
    const std::string& source;
    const std::string& destination;
    bool failIfExists;
    SourceFate fate;
};

int CopyInFileSystem(const FileCopy& copy, std::string* errorText, const TransferWatcher& watcher) {
    const std::string& destination = copy.destination;
    if (CopyLocalFile(copy.source, destination, copy.failIfExists,
                      copy.fate == SourceFate::kGoes ? Flush::kNow : Flush::kLater)) {
        if (watcher) watcher({1, 1, FileSize(destination)});
        return 1;
    }
    DWORD error = GetLastError();
    // The system calls a path that is too long "not found", which helps nobody.
    if (destination.size() >= kMaxPathBytes) error = ERROR_BUFFER_OVERFLOW;
    DescribeFailure(error, destination, errorText);
    return 0;
}

// The copy tells what was copied.
void NoteLocalCopy(const std::string& source, const std::string& copy, CopiedSource& copied) {
    if (const auto bytes = ReadLocalFile(copy)) {
        copied.SetFile(source, bytes->data(), bytes->size());
    }
}

// Tells whether what has this name may go into a folder under it.
bool IsFitForFolder(CDepot& depot, const std::string& source, const std::string& name,
                    bool staysInDirectories) {
    if (!staysInDirectories) return IsSafeLocalName(name);
    return !name.empty() && name != "." && name != ".." && !HoldsRoot(depot, source);
}

int RefuseName(CLDAPItems* directory, std::string* errorText) {
    if (directory != nullptr) directory->SetLastError(LDAP_NAMING_VIOLATION);
    if (errorText != nullptr) *errorText = UnsafeNamesText(1);
    SetLastError(ERROR_INVALID_NAME);
    return 0;
}

}  // namespace

bool IsDirectoryDepot(CDepot& depot) {
    const CDepotPath* const location = depot.paths->ActiveLocation();
    return location != nullptr && location->type == kDirectoryLocation;
}

int FileExists(CDepot& depot, const std::string& path) {
    if (IsBesideDirectory(depot, path)) return PathExists(path) ? 1 : 0;
    if (depot.paths->ActiveLocation() == nullptr) return 0;
    const std::string storage = DisplayToStorage(depot, path);
    if (CLDAPItems* const directory = depot.DirectoryConnection()) {
        return EntryExists(*directory, storage, nullptr);
    }
    return PathExists(storage) ? 1 : 0;
}

int DeleteFile(CDepot& depot, const std::string& path) {
    const std::string storage = StorageOf(depot, path);
    if (CLDAPItems* const directory = DirectoryOf(depot, path)) {
        return HoldsRoot(depot, path) ? Refuse(depot, path, nullptr)
                                      : RemoveEntry(*directory, storage, nullptr);
    }
    if (!IsAbsolutePath(storage)) return Refuse(depot, path, nullptr);
    return DeleteFileA(storage.c_str()) ? 1 : 0;
}

int MoveFile(CDepot& depot, const std::string& source, const std::string& destination, HWND window,
             CDepot* destinationDepot, std::string* errorText, const TransferWatcher& watcher) {
    CDepot& target = destinationDepot ? *destinationDepot : depot;
    const bool fromDirectory = DirectoryOf(depot, source) != nullptr;
    // Each store moves within itself only: the shell would take an entry's name for a file of the
    // process's current folder.
    if (HoldsRoot(depot, source) ||
        fromDirectory != (DirectoryOf(target, destination) != nullptr)) {
        return Refuse(depot, destination, errorText);
    }
    const std::string from = StorageOf(depot, source);
    const std::string to = StorageOf(target, destination);
    if (CLDAPItems* const directory = DirectoryOf(depot, source)) {
        if (!IsSameServer(*directory, *DirectoryOf(target, destination))) {
            return Refuse(depot, destination, errorText);
        }
        return MoveEntry(*directory, from, to, errorText, watcher);
    }
    return MoveInFileSystem(from, to, window, destinationDepot ? FO_MOVE : FO_RENAME, errorText);
}

int CopyFile(CDepot& depot, const std::string& source, const std::string& destination,
             CDepot* destinationDepot, bool failIfExists, std::string* errorText,
             const TransferWatcher& watcher, SourceFate fate, CopiedSource* copied) {
    CLDAPItems* const sourceDirectory = DirectoryOf(depot, source);
    CLDAPItems* const targetDirectory =
        destinationDepot ? DirectoryOf(*destinationDepot, destination) : nullptr;
    std::string target = destination;
    if (EndsInSeparator(destination)) {
        // A folder takes the copy under its own name.
        const std::string name = NamePart(RemoveTrailingBackslash(source));
        if (!IsFitForFolder(depot, source, name, sourceDirectory && targetDirectory)) {
            return RefuseName(sourceDirectory ? sourceDirectory : targetDirectory, errorText);
        }
        target += name;
    }
    const std::string from = StorageOf(depot, source);
    const std::string to = destinationDepot ? StorageOf(*destinationDepot, target) : target;
    if (!targetDirectory && !IsAbsolutePath(to)) return Refuse(depot, to, errorText);
    constexpr ExistingEntries kReplace = ExistingEntries::kReplace;
    if (sourceDirectory && targetDirectory) {
        return CopyEntry(*sourceDirectory, from, *targetDirectory, to, kReplace, errorText, watcher,
                         fate, copied);
    }
    if (sourceDirectory) {
        return Download(*sourceDirectory, from, to, errorText, watcher,
                        failIfExists ? ExistingEntries::kRefuse : kReplace, fate, copied);
    }
    if (targetDirectory) {
        return Upload(*targetDirectory, from, to, kReplace, errorText, watcher, fate, copied);
    }
    if (CopyInFileSystem({from, to, failIfExists, fate}, errorText, watcher) == 0) return 0;
    if (copied != nullptr) NoteLocalCopy(from, to, *copied);
    return 1;
}

int CopyToFreeName(CDepot& depot, const std::string& source, const std::string& destination) {
    CLDAPItems* const directory = DirectoryOf(depot, source);
    if (directory == nullptr) return CopyFile(depot, source, destination, &depot, true, nullptr);
    return CopyEntry(*directory, StorageOf(depot, source), *directory,
                     StorageOf(depot, destination), ExistingEntries::kRefuse, nullptr);
}

DWORD LastErrorCode(CDepot& depot) {
    const DWORD systemError = GetLastError();
    CLDAPItems* const directory = depot.DirectoryConnection();
    return directory ? directory->Client().LdapMapErrorToWin32(directory->LastError())
                     : systemError;
}

}  // namespace depot
