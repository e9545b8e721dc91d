#include "fileops/shell_operation.h"

#include <algorithm>
#include <new>

#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/same_file.h"
#include "store/folder_store.h"

namespace depot {
namespace {

// Whether the operation would put the source into itself.
bool GoesIntoItself(UINT operation, const std::string& source, const std::string& target) {
    if (IsInsideFolder(target, source)) return true;
    // A file or folder may be renamed to its own name in other letters.
    return operation != FO_RENAME &&
           (IsSameFile(source, target) ||
            IsSameFile(source, JoinPath(target, NamePart(RemoveTrailingBackslash(source)))));
}

// Whether a folder would be moved to the place of a file. Some shells report that as done and lose
// what the folder holds.
bool PutsFolderOnFile(UINT operation, const std::string& source, const std::string& target) {
    if (operation == FO_COPY || !IsLocalFolder(source)) return false;
    const auto isFile = [](const std::string& path) {
        return PathExists(path) && !IsLocalFolder(path);
    };
    if (operation == FO_MOVE && IsLocalFolder(target)) {
        return isFile(JoinPath(target, NamePart(RemoveTrailingBackslash(source))));
    }
    return isFile(target);
}

// Whether the shell would write, move or delete below the process's current folder or drive.
bool ChangesCurrentFolder(UINT operation, const std::vector<std::string>& sources,
                          const std::string* target) {
    if (target != nullptr && !IsAbsolutePath(*target)) return true;
    return operation != FO_COPY && !std::all_of(sources.begin(), sources.end(), IsAbsolutePath);
}

// Why the shell is not called; ERROR_SUCCESS where nothing speaks against it.
DWORD ReasonToRefuse(UINT operation, const std::vector<std::string>& sources,
                     const std::string* target) {
    const auto any = [&](bool (*isWrong)(UINT, const std::string&, const std::string&)) {
        return target != nullptr &&
               std::any_of(sources.begin(), sources.end(), [&](const std::string& source) {
                   return isWrong(operation, source, *target);
               });
    };
    if (any(GoesIntoItself) || ChangesCurrentFolder(operation, sources, target)) {
        return ERROR_INVALID_PARAMETER;
    }
    return any(PutsFolderOnFile) ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
}

}  // namespace

std::string ShellPathList(const std::vector<std::string>& paths, std::size_t pathBytes) {
    std::string list;
    for (const std::string& path : paths) {
        // The shell would take a pattern for all that it matches.
        const bool isPattern = path.find_first_of("*?") != std::string::npos;
        if (path.empty() || path.size() >= pathBytes || isPattern) return {};
        list.append(path).push_back('\0');
    }
    list.push_back('\0');
    return list;
}

bool RunShellOperation(const ShellRequest& request) {
    const UINT operation = request.operation;
    const std::vector<std::string>& sources = request.sources;
    const std::string* const target = operation == FO_DELETE ? nullptr : request.target;
    const std::string from = ShellPathList(sources, request.pathBytes);
    const std::string to = target ? ShellPathList({*target}, request.pathBytes) : std::string();
    // Without a target the shell would take the process's current folder.
    const bool placeless = target ? to.empty() : operation != FO_DELETE;
    const bool isNothing = sources.empty() || from.empty() || placeless;
    const DWORD refusal =
        isNothing ? ERROR_INVALID_PARAMETER : ReasonToRefuse(operation, sources, target);
    if (refusal != ERROR_SUCCESS) {
        SetLastError(refusal);
        return false;
    }
    SHFILEOPSTRUCTA call = {};
    call.hwnd = request.window;
    call.wFunc = operation;
    call.pFrom = from.data();
    call.pTo = target ? to.data() : nullptr;
    call.fFlags = request.flags;
    // The shell need not set it; what looked at the paths has.
    SetLastError(ERROR_SUCCESS);
    return SHFileOperationA(&call) == 0 && !call.fAnyOperationsAborted;
}

Error ShellError(const std::string& path) {
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? Error() : SystemError(error, path);
}

bool RemoveFoldersQuietly(const std::vector<std::string>& folders, HWND window) noexcept {
    // What unwound up to here has given memory back: a second attempt may have it.
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            return RunShellOperation({FO_DELETE, folders, nullptr, FOF_NOCONFIRMATION, window});
        } catch (const std::bad_alloc&) {
            continue;
        }
    }
    return false;
}

}  // namespace depot
