#include "fileops/directory_transfer.h"

#include "fileops/shell_operation.h"
#include "fileops/transfer_plan.h"
#include "model/local_mirror.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/text.h"

namespace depot {
namespace {

// Keeps the code as the last error and puts its message into the error text.
int Fail(CLDAPItems& directory, std::uint32_t code, std::string* errorText) {
    directory.SetLastError(code);
    if (errorText == nullptr) return 0;
    const std::string text = directory.ErrorText();
    if (!text.empty()) *errorText = text;
    return 0;
}

int Finish(CLDAPItems& directory, std::uint32_t code, std::string* errorText) {
    return code == LDAP_SUCCESS ? 1 : Fail(directory, code, errorText);
}

bool IsLocalFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// An entry that carries no naming attribute, such as the base itself, is a folder.
bool IsFolderEntry(CLDAPItems& directory, const std::string& dn) {
    std::string name;
    bool isFolder = false;
    return directory.SplitEntryName(dn, name, isFolder) == 0 || isFolder;
}

// Adds the file, or replaces what an entry of its name holds. Most files are new: adding first asks
// the server once where looking first asks twice.
std::uint32_t StoreContents(CLDAPItems& directory, const std::string& dn, const void* bytes,
                            std::uint32_t length, ExistingEntries existing) {
    std::string name;
    bool isFolder = false;
    if (directory.SplitEntryName(dn, name, isFolder) == 0) return LDAP_INVALID_DN_SYNTAX;
    std::uint32_t code = directory.AddFileEntry(dn, name, bytes, length);
    if (code == LDAP_NO_SUCH_OBJECT && directory.EnsureFolderPath(dn, false, nullptr) != 0) {
        code = directory.AddFileEntry(dn, name, bytes, length);
    }
    if (code == LDAP_ALREADY_EXISTS && existing == ExistingEntries::kReplace) {
        code = directory.ReplaceFileContents(dn, bytes, length);
    }
    return code;
}

std::uint32_t StoreFile(CLDAPItems& directory, const TransferStep& step, ExistingEntries existing,
                        TransferProgress& progress) {
    const auto bytes = ReadLocalFile(step.localPath);
    if (!bytes) return LDAP_LOCAL_ERROR;
    progress.bytesDone += bytes->size();
    return StoreContents(directory, step.dn, bytes->data(),
                         static_cast<std::uint32_t>(bytes->size()), existing);
}

std::uint32_t FetchFile(CLDAPItems& directory, const TransferStep& step,
                        TransferProgress& progress) {
    FileBuffer contents;
    if (directory.ReadFileContents(step.dn, contents) == 0) return directory.LastError();
    progress.bytesDone += contents.length;
    const bool written = WriteLocalFile(step.localPath, contents.bytes.get(), contents.length);
    return written ? LDAP_SUCCESS : LDAP_LOCAL_ERROR;
}

// Runs the steps of a plan up to the first failure, telling the watcher after each file.
template <class DoFolder, class DoFile>
std::uint32_t RunPlan(const TransferPlan& plan, const TransferWatcher& watcher,
                      const DoFolder& doFolder, const DoFile& doFile) {
    TransferProgress progress;
    progress.filesInAll = plan.files;
    for (const TransferStep& step : plan.steps) {
        const std::uint32_t code = step.isFolder ? doFolder(step) : doFile(step, progress);
        if (code != LDAP_SUCCESS) return code;
        if (step.isFolder) continue;
        ++progress.filesDone;
        const bool more = progress.filesDone < progress.filesInAll;
        if (watcher && !watcher(progress) && more) return LDAP_USER_CANCELLED;
    }
    return LDAP_SUCCESS;
}

// Tells whether the place of any file of the plan is taken already.
bool AnyFileExists(CLDAPItems& directory, const TransferPlan& plan) {
    // Under an entry that does not exist nothing else does.
    if (directory.FindEntry(plan.steps.front().dn) != LDAP_SUCCESS) return false;
    for (const TransferStep& step : plan.steps) {
        if (!step.isFolder && directory.FindEntry(step.dn) == LDAP_SUCCESS) return true;
    }
    return false;
}

std::uint32_t UploadTree(CLDAPItems& directory, const std::string& folder, const std::string& dn,
                         ExistingEntries existing, const TransferWatcher& watcher) {
    const TransferPlan plan = PlanUpload(directory, folder, dn);
    if (existing == ExistingEntries::kRefuse && AnyFileExists(directory, plan)) {
        return LDAP_ALREADY_EXISTS;
    }
    if (directory.EnsureFolderPath(dn, false, nullptr) == 0) return directory.LastError();
    return RunPlan(
        plan, watcher,
        [&](const TransferStep& step) -> std::uint32_t {
            if (step.dn == dn) return LDAP_SUCCESS;
            const std::string name = NamePart(step.localPath);
            const bool added = directory.AddFolderEntry(step.dn, name, nullptr) != 0;
            return added ? std::uint32_t{LDAP_SUCCESS} : directory.LastError();
        },
        [&](const TransferStep& step, TransferProgress& progress) {
            return StoreFile(directory, step, existing, progress);
        });
}

std::uint32_t DownloadWholeTree(CLDAPItems& directory, const std::string& dn,
                                const std::string& folder, const TransferWatcher& watcher,
                                std::uint32_t& unsafeNames) {
    TransferPlan plan;
    if (!PlanDownload(directory, dn, folder, plan)) return directory.LastError();
    unsafeNames = plan.unsafeNames;
    return RunPlan(
        plan, watcher,
        [](const TransferStep& step) -> std::uint32_t {
            return EnsureLocalFolder(step.localPath) ? LDAP_SUCCESS : LDAP_LOCAL_ERROR;
        },
        [&](const TransferStep& step, TransferProgress& progress) {
            return FetchFile(directory, step, progress);
        });
}

// Codes for an entry that is not there, as each operation reports it.
std::uint32_t MissingAs(std::uint32_t code, std::uint32_t reported) {
    return code == LDAP_NO_SUCH_OBJECT ? reported : code;
}

// Copies a tree through a temporary local folder, which is gone afterwards in every case. Fails
// also when an entry had to be left out: the copy would not be complete.
std::uint32_t CopyTree(CLDAPItems& source, const std::string& sourceDN, CLDAPItems& destination,
                       const std::string& destinationDN, ExistingEntries existing) {
    const std::string folder = MakeTempFolder();
    if (folder.empty()) return LDAP_LOCAL_ERROR;
    std::uint32_t unsafeNames = 0;
    std::uint32_t code = MissingAs(DownloadWholeTree(source, sourceDN, folder, {}, unsafeNames),
                                   LDAP_INVALID_DN_SYNTAX);
    if (code == LDAP_SUCCESS && unsafeNames > 0) code = LDAP_NAMING_VIOLATION;
    if (code == LDAP_SUCCESS) code = UploadTree(destination, folder, destinationDN, existing, {});
    const bool removed =
        RunShellOperation(FO_DELETE, {folder}, nullptr, FOF_NOCONFIRMATION, nullptr);
    return code == LDAP_SUCCESS && !removed ? std::uint32_t{LDAP_LOCAL_ERROR} : code;
}

std::uint32_t CopyFileEntry(CLDAPItems& source, const std::string& sourceDN,
                            CLDAPItems& destination, const std::string& destinationDN,
                            ExistingEntries existing) {
    FileBuffer contents;
    if (source.ReadFileContents(sourceDN, contents) == 0) {
        return MissingAs(source.LastError(), LDAP_PARAM_ERROR);
    }
    const std::uint32_t code =
        StoreContents(destination, destinationDN, contents.bytes.get(), contents.length, existing);
    const bool known = code == LDAP_SUCCESS || code == LDAP_ALREADY_EXISTS;
    return known ? code : std::uint32_t{LDAP_PARAM_ERROR};
}

std::uint32_t MoveFolder(CLDAPItems& directory, const std::string& oldDN,
                         const std::string& newDN) {
    const std::uint32_t code =
        CopyTree(directory, oldDN, directory, newDN, ExistingEntries::kRefuse);
    if (code != LDAP_SUCCESS) return code;
    return directory.DeleteTree(oldDN, nullptr) != 0 ? std::uint32_t{LDAP_SUCCESS}
                                                     : directory.LastError();
}

bool IsInside(const std::string& dn, const std::string& folderDN) {
    const std::string tail = "," + folderDN;
    return dn.size() > tail.size() &&
           EqualsNoCase(std::string_view(dn).substr(dn.size() - tail.size()), tail);
}

}  // namespace

int Upload(CLDAPItems& directory, const std::string& localPath, const std::string& dn,
           ExistingEntries existing, std::string* errorText, const TransferWatcher& watcher) {
    if (localPath.empty() || dn.empty()) return Fail(directory, LDAP_PARAM_ERROR, errorText);
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    TransferProgress progress;
    const std::uint32_t code =
        IsLocalFolder(localPath)
            ? UploadTree(directory, RemoveTrailingBackslash(localPath), dn, existing, watcher)
            : StoreFile(directory, {dn, localPath, false}, existing, progress);
    return Finish(directory, code, errorText);
}

int Download(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
             std::string* errorText, const TransferWatcher& watcher) {
    if (localPath.empty() || dn.empty()) return Fail(directory, LDAP_PARAM_ERROR, errorText);
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    TransferProgress progress;
    std::uint32_t unsafeNames = 0;
    const std::uint32_t code =
        IsFolderEntry(directory, dn)
            ? DownloadWholeTree(directory, dn, localPath, watcher, unsafeNames)
            : FetchFile(directory, {dn, localPath, false}, progress);
    if (unsafeNames > 0 && errorText != nullptr) *errorText = UnsafeNamesText(unsafeNames);
    return Finish(directory, MissingAs(code, LDAP_INVALID_DN_SYNTAX), errorText);
}

int CopyEntry(CLDAPItems& source, const std::string& sourceDN, CLDAPItems& destination,
              const std::string& destinationDN, ExistingEntries existing, std::string* errorText) {
    const bool intoItself = &source == &destination && IsInside(destinationDN, sourceDN);
    if (sourceDN.empty() || destinationDN.empty() || intoItself) {
        return Fail(source, LDAP_PARAM_ERROR, errorText);
    }
    const ConnectionScope sourceConnection(source, errorText);
    const ConnectionScope destinationConnection(destination, errorText);
    if (!sourceConnection || !destinationConnection) return 0;
    const std::uint32_t code =
        IsFolderEntry(source, sourceDN)
            ? CopyTree(source, sourceDN, destination, destinationDN, existing)
            : CopyFileEntry(source, sourceDN, destination, destinationDN, existing);
    return Finish(source, code, errorText);
}

int MoveEntry(CLDAPItems& directory, const std::string& oldDN, const std::string& newDN,
              std::string* errorText) {
    if (oldDN.empty() || newDN.empty() || IsInside(newDN, oldDN)) {
        return Fail(directory, LDAP_PARAM_ERROR, errorText);
    }
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    LdapItemList children;
    const bool inPlace = !IsFolderEntry(directory, oldDN) || EqualsNoCase(oldDN, newDN) ||
                         directory.ListChildren(oldDN, children) == 0 || children.Count() == 0;
    if (inPlace) return directory.RenameEntry(oldDN, newDN, errorText);
    return Finish(directory, MoveFolder(directory, oldDN, newDN), errorText);
}

int EntryExists(CLDAPItems& directory, const std::string& dn, std::string* errorText) {
    const ConnectionScope connection(directory, errorText);
    return connection && Finish(directory, directory.FindEntry(dn), errorText) != 0;
}

int RemoveEntry(CLDAPItems& directory, const std::string& dn, std::string* errorText) {
    const ConnectionScope connection(directory, errorText);
    return connection && directory.DeleteTree(dn, errorText) != 0;
}

}  // namespace depot
