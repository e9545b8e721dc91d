#include "fileops/directory_transfer.h"

#include "directory/connection_scope.h"
#include "directory/local_listing.h"
#include "fileops/fetch_from_directory.h"
#include "fileops/shell_operation.h"
#include "fileops/store_in_directory.h"
#include "fileops/transfer_source.h"
#include "model/depot_paths.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/text.h"

namespace depot {
namespace {

int Finish(CLDAPItems& directory, std::uint32_t code, std::string* errorText) {
    if (code == LDAP_SUCCESS) return 1;
    if (code != kSharedLocalNames) return directory.Fail(code, errorText);
    if (errorText != nullptr) *errorText = kSharedNamesText;
    return directory.Fail(LDAP_NAMING_VIOLATION, nullptr);
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
    const TransferRules fetchRules = {ExistingEntries::kReplace, rules.fate, fetching, rules.copied,
                                      true};
    const std::uint32_t code =
        MissingAs(FetchTree(pair.source, pair.sourceDN, children, folder, fetchRules, unsafeNames),
                  LDAP_INVALID_DN_SYNTAX);
    if (code != LDAP_SUCCESS) return code;
    const TransferRules storeRules = {rules.existing, rules.fate, rules.watcher};
    LeftOut left;
    return StoreTree(pair.destination, folder, pair.destinationDN, storeRules, left);
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
    // What was not seen takes the place of nothing.
    const bool seen = contents.bytes != nullptr;
    rules.NoteSource(pair.sourceDN, contents.bytes.get(), contents.length);
    const std::uint32_t code =
        StoreContents(pair.destination, pair.destinationDN, contents.bytes.get(), contents.length,
                      seen ? rules.existing : ExistingEntries::kRefuse);
    if (code == LDAP_SUCCESS) NoteSingleFile(rules.watcher, contents.length);
    if (code == LDAP_ALREADY_EXISTS && !seen) return LDAP_NO_SUCH_ATTRIBUTE;
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

// Finds out whether a copy may be one onto or into itself through two connections, and what it may
// replace then. Returns the directory's code.
std::uint32_t RefuseItself(const EntryPair& pair, SourceFate fate, ExistingEntries& existing) {
    if (!Overlaps(pair, fate)) return LDAP_SUCCESS;
    const EntryIdentity identity = CompareEntry(pair.source, pair.destination, pair.sourceDN);
    const bool goes = fate == SourceFate::kGoes;
    // An entry that is there after all, out of this user's sight, may be the source.
    if (goes && identity == EntryIdentity::kUnseen) existing = ExistingEntries::kRefuse;
    const bool refused =
        identity == EntryIdentity::kSame || (goes && identity == EntryIdentity::kUnknown);
    return refused ? std::uint32_t{LDAP_PARAM_ERROR} : std::uint32_t{LDAP_SUCCESS};
}

std::uint32_t CopyConnected(const EntryPair& pair, TransferRules rules,
                            std::uint32_t& unsafeNames) {
    const std::uint32_t refused = RefuseItself(pair, rules.fate, rules.existing);
    if (refused != LDAP_SUCCESS) return refused;
    SourceEntry source;
    const std::uint32_t code = ReadSource(pair.source, pair.sourceDN, rules.fate, source);
    if (code != LDAP_SUCCESS) return MissingAs(code, LDAP_PARAM_ERROR);
    return source.isFolder ? CopyTree(pair, source.children, rules, unsafeNames)
                           : CopyContents(pair, source.contents, rules);
}

// What a move tells besides its code.
struct MoveReport {
    std::uint32_t unsafeNames = 0;
    Leftovers left;
};

std::uint32_t MoveFolder(const EntryPair& pair, const LdapItemList& children,
                         const TransferWatcher& watcher, MoveReport& report) {
    CopiedSource copied;
    const TransferRules rules = {ExistingEntries::kRefuse, SourceFate::kGoes, watcher, &copied};
    const std::uint32_t code = CopyTree(pair, children, rules, report.unsafeNames);
    if (code != LDAP_SUCCESS) return code;
    report.left = RemoveCopiedEntries(pair.source, copied);
    return report.left.code;
}

// The codes by which servers say that they do not rename a folder that holds entries, or nothing to
// another parent, or not to that one. Whoever lacks a right, and a name that is taken or invalid,
// gets another code, and no copy would change that.
bool CannotRenameTree(std::uint32_t code) {
    switch (code) {
        case LDAP_NOT_ALLOWED_ON_NONLEAF:
        case LDAP_UNWILLING_TO_PERFORM:
        case LDAP_AFFECTS_MULTIPLE_DSAS:
        case LDAP_PROTOCOL_ERROR:
        case LDAP_OTHER:
        case LDAP_NOT_SUPPORTED:  // the client's own, by the older version of the protocol
            return true;
        default:
            return false;
    }
}

std::uint32_t Rename(const EntryPair& pair) {
    const bool renamed = pair.source.RenameEntry(pair.sourceDN, pair.destinationDN, nullptr) != 0;
    return renamed ? std::uint32_t{LDAP_SUCCESS} : pair.source.LastError();
}

// Renames after making the folders above the new name. They are removed again where the rename is
// refused for good.
std::uint32_t RenameBelowNewFolders(const EntryPair& pair) {
    LdapItemList added;
    const bool made = pair.source.EnsureFoldersAbove(pair.destinationDN, nullptr, &added) != 0;
    const std::uint32_t code = made ? Rename(pair) : pair.source.LastError();
    if (code == LDAP_SUCCESS || CannotRenameTree(code)) return code;
    for (std::size_t index = added.Count(); index > 0; --index) {
        pair.source.RemoveEmptyEntry(added.At(index - 1).path);
    }
    return code;
}

std::uint32_t MoveConnected(const EntryPair& pair, const TransferWatcher& watcher,
                            MoveReport& report) {
    std::uint32_t code = Rename(pair);
    // What is missing may be the new parent, which is made for a folder with children.
    if (!CannotRenameTree(code) && code != LDAP_NO_SUCH_OBJECT) return code;
    LdapItemList children;
    if (pair.source.ListChildren(pair.sourceDN, children) == 0) return pair.source.LastError();
    if (children.Count() == 0) return code;
    const std::uint32_t refused = RefuseFile(pair.source, pair.sourceDN);
    if (refused != LDAP_SUCCESS) return refused;
    if (code == LDAP_NO_SUCH_OBJECT) code = RenameBelowNewFolders(pair);
    return CannotRenameTree(code) ? MoveFolder(pair, children, watcher, report) : code;
}

// Puts the number of entries that were left out into the error text.
void TellUnsafeNames(std::uint32_t unsafeNames, std::string* errorText) {
    if (unsafeNames > 0 && errorText != nullptr) *errorText = UnsafeNamesText(unsafeNames);
}

// Puts what stays of a source, and how much of it, into the error text.
void TellLeftovers(const Leftovers& left, std::string* errorText) {
    if (errorText != nullptr) *errorText = LeftoversText(left);
}

}  // namespace

int Upload(CLDAPItems& directory, const std::string& localPath, const std::string& dn,
           ExistingEntries existing, std::string* errorText, const TransferWatcher& watcher,
           SourceFate fate, CopiedSource* copied) {
    if (localPath.empty() || dn.empty()) return directory.Fail(LDAP_PARAM_ERROR, errorText);
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    const TransferRules rules = {existing, fate, watcher, copied};
    if (IsLocalFolder(localPath)) {
        const std::string folder = RemoveTrailingBackslash(localPath);
        LeftOut left;
        const int result =
            Finish(directory, StoreTree(directory, folder, dn, rules, left), errorText);
        const std::string text = LeftOutText(left);
        if (!text.empty() && errorText != nullptr) *errorText = text;
        return result;
    }
    std::uint64_t bytesDone = 0;
    const std::uint32_t code = StoreFile(directory, {dn, localPath, false}, existing,
                                         [&](const void* bytes, std::size_t length) {
                                             bytesDone = length;
                                             rules.NoteSource(localPath, bytes, length);
                                         });
    if (code == LDAP_SUCCESS) NoteSingleFile(watcher, bytesDone);
    return Finish(directory, code, errorText);
}

int Download(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
             std::string* errorText, const TransferWatcher& watcher, ExistingEntries existing,
             SourceFate fate, CopiedSource* copied) {
    if (localPath.empty() || dn.empty()) return directory.Fail(LDAP_PARAM_ERROR, errorText);
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    const TransferRules rules = {existing, fate, watcher, copied};
    std::uint32_t unsafeNames = 0;
    const std::uint32_t code = Fetch(directory, dn, localPath, rules, unsafeNames);
    const int result = Finish(directory, MissingAs(code, LDAP_INVALID_DN_SYNTAX), errorText);
    TellUnsafeNames(unsafeNames, errorText);
    return result;
}

int CopyEntry(CLDAPItems& source, const std::string& sourceDN, CLDAPItems& destination,
              const std::string& destinationDN, ExistingEntries existing, std::string* errorText,
              const TransferWatcher& watcher, SourceFate fate, CopiedSource* copied) {
    const EntryPair pair = {source, sourceDN, destination, destinationDN};
    const bool intoItself = &source == &destination && Overlaps(pair, fate);
    if (sourceDN.empty() || destinationDN.empty() || intoItself) {
        return source.Fail(LDAP_PARAM_ERROR, errorText);
    }
    const ConnectionScope sourceConnection(source, errorText);
    if (!sourceConnection) return 0;
    const ConnectionScope destinationConnection(destination, errorText);
    if (!destinationConnection) {
        source.SetLastError(destination.LastError());
        return 0;
    }
    std::uint32_t unsafeNames = 0;
    const std::uint32_t code = CopyConnected(pair, {existing, fate, watcher, copied}, unsafeNames);
    const int result = Finish(source, code, errorText);
    TellUnsafeNames(unsafeNames, errorText);
    return result;
}

int MoveEntry(CLDAPItems& directory, const std::string& oldDN, const std::string& newDN,
              std::string* errorText, const TransferWatcher& watcher) {
    if (oldDN.empty() || newDN.empty() || IsBelowEntry(directory, newDN, oldDN) ||
        IsBelowEntry(directory, oldDN, newDN)) {
        return directory.Fail(LDAP_PARAM_ERROR, errorText);
    }
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    MoveReport report;
    const std::uint32_t code = MoveConnected({directory, oldDN, directory, newDN}, watcher, report);
    const int result = Finish(directory, UnknownAsParameterError(code), errorText);
    TellUnsafeNames(report.unsafeNames, errorText);
    if (code != LDAP_SUCCESS && code == report.left.code) TellLeftovers(report.left, errorText);
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
