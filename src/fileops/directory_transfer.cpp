#include "fileops/directory_transfer.h"

#include <algorithm>

#include "fileops/shell_operation.h"
#include "fileops/transfer_plan.h"
#include "fileops/transfer_source.h"
#include "model/depot_paths.h"
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

// How a transfer goes about its work.
struct TransferRules {
    ExistingEntries existing;
    SourceFate fate;
    const TransferWatcher& watcher;
};

// Tells of a transfer that was of one file alone. There is nothing left to stop.
void NoteSingleFile(const TransferWatcher& watcher, std::uint64_t bytes) {
    if (watcher) watcher({1, 1, bytes});
}

std::uint32_t StoreFile(CLDAPItems& directory, const TransferStep& step, ExistingEntries existing,
                        TransferProgress& progress) {
    const auto bytes = ReadLocalFile(step.localPath);
    if (!bytes) return LDAP_LOCAL_ERROR;
    progress.bytesDone += bytes->size();
    return StoreContents(directory, step.dn, bytes->data(),
                         static_cast<std::uint32_t>(bytes->size()), existing);
}

std::uint32_t WriteContents(const FileBuffer& contents, const std::string& path) {
    const bool written = WriteLocalFile(path, contents.bytes.get(), contents.length);
    return written ? LDAP_SUCCESS : LDAP_LOCAL_ERROR;
}

std::uint32_t FetchFile(CLDAPItems& directory, const TransferStep& step, SourceFate fate,
                        TransferProgress& progress) {
    FileBuffer contents;
    if (directory.ReadFileContents(step.dn, contents) == 0) return directory.LastError();
    if (!contents.bytes && fate == SourceFate::kGoes) return LDAP_NO_SUCH_ATTRIBUTE;
    // A file's name without a dot lets the deletion look for entries below it.
    if (fate == SourceFate::kGoes && LooksLikeFolder(directory, step.dn)) {
        const std::uint32_t code = RefuseChildren(directory, step.dn);
        if (code != LDAP_SUCCESS) return code;
    }
    progress.bytesDone += contents.length;
    return WriteContents(contents, step.localPath);
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

// Tells whether a file has one of the names that the plan's folders are to have. What was stored
// below it would be in nobody's sight.
bool IsFileInTheWay(CLDAPItems& directory, const TransferPlan& plan) {
    for (const TransferStep& step : plan.steps) {
        if (!step.isFolder) continue;
        EntryKind kind = EntryKind::kOther;
        const std::uint32_t code = directory.FindKind(step.dn, kind);
        if (code == LDAP_SUCCESS && kind == EntryKind::kFile) return true;
        // Under an entry that does not exist nothing else does.
        if (code != LDAP_SUCCESS && &step == &plan.steps.front()) return false;
    }
    return false;
}

// Makes sure that a folder stands at the top of an uploaded tree.
std::uint32_t EnsureTop(CLDAPItems& directory, const std::string& dn) {
    if (directory.EnsureFolderPath(dn, false, nullptr) == 0) return directory.LastError();
    // A name with a dot is taken for a file's, and then only the folders above it are made.
    if (LooksLikeFolder(directory, dn)) return LDAP_SUCCESS;
    std::string name;
    bool isFolder = false;
    directory.SplitEntryName(dn, name, isFolder);
    const bool added = directory.AddFolderEntry(dn, name, nullptr) != 0;
    return added ? std::uint32_t{LDAP_SUCCESS} : directory.LastError();
}

std::uint32_t UploadTree(CLDAPItems& directory, const std::string& folder, const std::string& dn,
                         const TransferRules& rules) {
    const std::optional<TransferPlan> listed = PlanUpload(directory, folder, dn);
    if (!listed) return LDAP_LOCAL_ERROR;
    const TransferPlan& plan = *listed;
    if (plan.unseen > 0 && rules.fate == SourceFate::kGoes) return LDAP_LOCAL_ERROR;
    // No file of a tree replaces another one of it.
    const bool refused = rules.existing == ExistingEntries::kRefuse;
    if (plan.sharedNames > 0 || IsFileInTheWay(directory, plan) ||
        (refused && directory.FindEntry(dn) == LDAP_SUCCESS)) {
        return LDAP_ALREADY_EXISTS;
    }
    const std::uint32_t code = EnsureTop(directory, dn);
    if (code != LDAP_SUCCESS) return code;
    return RunPlan(
        plan, rules.watcher,
        [&](const TransferStep& step) -> std::uint32_t {
            if (step.dn == dn) return LDAP_SUCCESS;
            const std::string name = NamePart(step.localPath);
            const bool added = directory.AddFolderEntry(step.dn, name, nullptr) != 0;
            return added ? std::uint32_t{LDAP_SUCCESS} : directory.LastError();
        },
        [&](const TransferStep& step, TransferProgress& progress) {
            return StoreFile(directory, step, rules.existing, progress);
        });
}

bool AnyLocalFileExists(const TransferPlan& plan) {
    return std::any_of(plan.steps.begin(), plan.steps.end(), [](const TransferStep& step) {
        return !step.isFolder && PathMayExist(step.localPath);
    });
}

// Entries whose names cannot be local ones are counted; the others are all written before the tree
// counts as failed, but none when it would be removed afterwards.
std::uint32_t DownloadWholeTree(CLDAPItems& directory, const std::string& dn,
                                const LdapItemList& children, const std::string& folder,
                                const TransferRules& rules, std::uint32_t& unsafeNames) {
    TransferPlan plan;
    if (!PlanDownload(directory, dn, children, folder, plan)) return directory.LastError();
    unsafeNames = plan.unsafeNames;
    if (unsafeNames > 0 && rules.fate == SourceFate::kGoes) return LDAP_NAMING_VIOLATION;
    if (rules.existing == ExistingEntries::kRefuse && AnyLocalFileExists(plan)) {
        return LDAP_ALREADY_EXISTS;
    }
    const std::uint32_t code = RunPlan(
        plan, rules.watcher,
        [](const TransferStep& step) -> std::uint32_t {
            return EnsureLocalFolder(step.localPath) ? LDAP_SUCCESS : LDAP_LOCAL_ERROR;
        },
        [&](const TransferStep& step, TransferProgress& progress) {
            return FetchFile(directory, step, rules.fate, progress);
        });
    const bool incomplete = code == LDAP_SUCCESS && unsafeNames > 0;
    return incomplete ? std::uint32_t{LDAP_NAMING_VIOLATION} : code;
}

std::uint32_t DownloadConnected(CLDAPItems& directory, const std::string& dn,
                                const std::string& localPath, const TransferRules& rules,
                                std::uint32_t& unsafeNames) {
    SourceEntry source;
    std::uint32_t code = ReadSource(directory, dn, rules.fate, source);
    if (code != LDAP_SUCCESS) return code;
    if (source.isFolder) {
        return DownloadWholeTree(directory, dn, source.children, localPath, rules, unsafeNames);
    }
    if (rules.existing == ExistingEntries::kRefuse && PathMayExist(localPath)) {
        return LDAP_ALREADY_EXISTS;
    }
    code = WriteContents(source.contents, localPath);
    if (code == LDAP_SUCCESS) NoteSingleFile(rules.watcher, source.contents.length);
    return code;
}

// Codes for an entry that is not there, as each operation reports it.
std::uint32_t MissingAs(std::uint32_t code, std::uint32_t reported) {
    return code == LDAP_NO_SUCH_OBJECT ? reported : code;
}

// What a rename reports for an entry that it cannot look up.
std::uint32_t UnknownAsParameterError(std::uint32_t code) {
    const bool unknown = code == LDAP_INVALID_DN_SYNTAX || code == LDAP_NO_SUCH_OBJECT;
    return unknown ? std::uint32_t{LDAP_PARAM_ERROR} : code;
}

// The source and the destination of a copy from entry to entry.
struct EntryPair {
    CLDAPItems& source;
    const std::string& sourceDN;
    CLDAPItems& destination;
    const std::string& destinationDN;
};

std::uint32_t CopyThroughFolder(const EntryPair& pair, const LdapItemList& children,
                                const std::string& folder, const TransferRules& rules,
                                std::uint32_t& unsafeNames) {
    // A file counts once it has arrived; until then the copy can be stopped all the same.
    const TransferWatcher fetching = [&](const TransferProgress& progress) {
        return !rules.watcher || rules.watcher({0, progress.filesInAll, 0});
    };
    const TransferRules fetchRules = {ExistingEntries::kReplace, rules.fate, fetching};
    const std::uint32_t code = MissingAs(
        DownloadWholeTree(pair.source, pair.sourceDN, children, folder, fetchRules, unsafeNames),
        LDAP_INVALID_DN_SYNTAX);
    if (code != LDAP_SUCCESS) return code;
    return UploadTree(pair.destination, folder, pair.destinationDN, rules);
}

// Copies a tree through a temporary local folder, which is gone afterwards in every case. Fails
// before anything is stored when an entry would have to be left out.
std::uint32_t CopyTree(const EntryPair& pair, const LdapItemList& children,
                       const TransferRules& rules, std::uint32_t& unsafeNames) {
    std::vector<std::string> folders(1);
    std::string& folder = folders.front();
    folder = MakeTempFolder();
    if (folder.empty()) return LDAP_LOCAL_ERROR;
    std::uint32_t code = LDAP_LOCAL_ERROR;
    try {
        code = CopyThroughFolder(pair, children, folder, rules, unsafeNames);
    } catch (...) {
        RemoveFoldersQuietly(folders, nullptr);
        throw;
    }
    const bool removed = RemoveFoldersQuietly(folders, nullptr);
    return code == LDAP_SUCCESS && !removed ? std::uint32_t{LDAP_LOCAL_ERROR} : code;
}

std::uint32_t CopyContents(const EntryPair& pair, const FileBuffer& contents,
                           const TransferRules& rules) {
    const std::uint32_t code = StoreContents(pair.destination, pair.destinationDN,
                                             contents.bytes.get(), contents.length, rules.existing);
    if (code == LDAP_SUCCESS) NoteSingleFile(rules.watcher, contents.length);
    const bool known = code == LDAP_SUCCESS || code == LDAP_ALREADY_EXISTS;
    return known ? code : std::uint32_t{LDAP_PARAM_ERROR};
}

// Tells whether the copy would go onto or into its own source, or, when that is to be removed
// afterwards, onto a folder above it, which is to hold what is removed with the source.
bool Overlaps(const EntryPair& pair, SourceFate fate) {
    const CLDAPItems& names = pair.source;
    return IsSameEntry(names, pair.destinationDN, pair.sourceDN) ||
           IsBelowEntry(names, pair.destinationDN, pair.sourceDN) ||
           (fate == SourceFate::kGoes && IsBelowEntry(names, pair.sourceDN, pair.destinationDN));
}

std::uint32_t CopyConnected(const EntryPair& pair, const TransferRules& rules,
                            std::uint32_t& unsafeNames) {
    if (Overlaps(pair, rules.fate) &&
        IsSameDirectory(pair.source, pair.destination, pair.sourceDN)) {
        return LDAP_PARAM_ERROR;
    }
    SourceEntry source;
    const std::uint32_t code = ReadSource(pair.source, pair.sourceDN, rules.fate, source);
    if (code != LDAP_SUCCESS) return MissingAs(code, LDAP_PARAM_ERROR);
    return source.isFolder ? CopyTree(pair, source.children, rules, unsafeNames)
                           : CopyContents(pair, source.contents, rules);
}

std::uint32_t MoveFolder(CLDAPItems& directory, const std::string& oldDN, const std::string& newDN,
                         const LdapItemList& children, const TransferWatcher& watcher,
                         std::uint32_t& unsafeNames) {
    const EntryPair pair = {directory, oldDN, directory, newDN};
    const TransferRules rules = {ExistingEntries::kRefuse, SourceFate::kGoes, watcher};
    const std::uint32_t code = CopyTree(pair, children, rules, unsafeNames);
    if (code != LDAP_SUCCESS) return code;
    return directory.DeleteTree(oldDN, nullptr) != 0 ? std::uint32_t{LDAP_SUCCESS}
                                                     : directory.LastError();
}

// Whether an entry that could not be renamed may be a folder with children after all, which the
// dot in its name does not tell, or whose new parent has yet to be made.
bool MayHoldChildren(std::uint32_t code) {
    return code == LDAP_NOT_ALLOWED_ON_NONLEAF || code == LDAP_NO_SUCH_OBJECT;
}

std::uint32_t MoveConnected(CLDAPItems& directory, const std::string& oldDN,
                            const std::string& newDN, const TransferWatcher& watcher,
                            std::uint32_t& unsafeNames) {
    LdapItemList children;
    const bool listFirst =
        !IsSameEntry(directory, oldDN, newDN) && LooksLikeFolder(directory, oldDN);
    if (listFirst && directory.ListChildren(oldDN, children) == 0) return directory.LastError();
    if (children.Count() == 0) {
        if (directory.RenameEntry(oldDN, newDN, nullptr) != 0) return LDAP_SUCCESS;
        const std::uint32_t code = directory.LastError();
        if (listFirst || !MayHoldChildren(code)) return code;
        directory.ListChildren(oldDN, children);
        if (children.Count() == 0) return code;
    }
    const std::uint32_t refused = RefuseFile(directory, oldDN);
    if (refused != LDAP_SUCCESS) return refused;
    return MoveFolder(directory, oldDN, newDN, children, watcher, unsafeNames);
}

// Puts the number of entries that were left out into the error text.
void TellUnsafeNames(std::uint32_t unsafeNames, std::string* errorText) {
    if (unsafeNames > 0 && errorText != nullptr) *errorText = UnsafeNamesText(unsafeNames);
}

}  // namespace

int Upload(CLDAPItems& directory, const std::string& localPath, const std::string& dn,
           ExistingEntries existing, std::string* errorText, const TransferWatcher& watcher,
           SourceFate fate) {
    if (localPath.empty() || dn.empty()) return Fail(directory, LDAP_PARAM_ERROR, errorText);
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    const TransferRules rules = {existing, fate, watcher};
    if (IsLocalFolder(localPath)) {
        const std::string folder = RemoveTrailingBackslash(localPath);
        return Finish(directory, UploadTree(directory, folder, dn, rules), errorText);
    }
    TransferProgress progress;
    const std::uint32_t code = StoreFile(directory, {dn, localPath, false}, existing, progress);
    if (code == LDAP_SUCCESS) NoteSingleFile(watcher, progress.bytesDone);
    return Finish(directory, code, errorText);
}

int Download(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
             std::string* errorText, const TransferWatcher& watcher, ExistingEntries existing,
             SourceFate fate) {
    if (localPath.empty() || dn.empty()) return Fail(directory, LDAP_PARAM_ERROR, errorText);
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    const TransferRules rules = {existing, fate, watcher};
    std::uint32_t unsafeNames = 0;
    const std::uint32_t code = DownloadConnected(directory, dn, localPath, rules, unsafeNames);
    const int result = Finish(directory, MissingAs(code, LDAP_INVALID_DN_SYNTAX), errorText);
    TellUnsafeNames(unsafeNames, errorText);
    return result;
}

int CopyEntry(CLDAPItems& source, const std::string& sourceDN, CLDAPItems& destination,
              const std::string& destinationDN, ExistingEntries existing, std::string* errorText,
              const TransferWatcher& watcher, SourceFate fate) {
    const EntryPair pair = {source, sourceDN, destination, destinationDN};
    const bool intoItself = &source == &destination && Overlaps(pair, fate);
    if (sourceDN.empty() || destinationDN.empty() || intoItself) {
        return Fail(source, LDAP_PARAM_ERROR, errorText);
    }
    const ConnectionScope sourceConnection(source, errorText);
    if (!sourceConnection) return 0;
    const ConnectionScope destinationConnection(destination, errorText);
    if (!destinationConnection) {
        source.SetLastError(destination.LastError());
        return 0;
    }
    std::uint32_t unsafeNames = 0;
    const std::uint32_t code = CopyConnected(pair, {existing, fate, watcher}, unsafeNames);
    const int result = Finish(source, code, errorText);
    TellUnsafeNames(unsafeNames, errorText);
    return result;
}

int MoveEntry(CLDAPItems& directory, const std::string& oldDN, const std::string& newDN,
              std::string* errorText, const TransferWatcher& watcher) {
    if (oldDN.empty() || newDN.empty() || IsBelowEntry(directory, newDN, oldDN) ||
        IsBelowEntry(directory, oldDN, newDN)) {
        return Fail(directory, LDAP_PARAM_ERROR, errorText);
    }
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    std::uint32_t unsafeNames = 0;
    const std::uint32_t code = MoveConnected(directory, oldDN, newDN, watcher, unsafeNames);
    const int result = Finish(directory, UnknownAsParameterError(code), errorText);
    TellUnsafeNames(unsafeNames, errorText);
    return result;
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
