#include "support/directory_transfer.h"

#include "directory/connection_scope.h"
#include "fileops/copy.h"
#include "fileops/outcome.h"
#include "platform/paths.h"
#include "store/directory_store.h"
#include "store/folder_store.h"

namespace depot {
namespace {

Result CopyAndReport(const CopyRequest& request) {
    return ReportedCopy(request, Copy(request));
}

}  // namespace

int Upload(CLDAPItems& directory, const std::string& localPath, const std::string& dn,
           ExistingEntries existing, std::string* errorText, const TransferWatcher& watcher,
           SourceFate fate, CopiedSource* copied) {
    DirectoryStore store(directory);
    return CopyAndReport({{&FolderStore::Instance(), localPath},
                          {&store, dn},
                          existing,
                          fate,
                          watcher,
                          copied})
        .AsFlag(errorText);
}

int Download(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
             std::string* errorText, const TransferWatcher& watcher, ExistingEntries existing,
             SourceFate fate, CopiedSource* copied) {
    DirectoryStore store(directory);
    return CopyAndReport({{&store, dn},
                          {&FolderStore::Instance(), localPath},
                          existing,
                          fate,
                          watcher,
                          copied})
        .AsFlag(errorText);
}

int CopyEntry(CLDAPItems& source, const std::string& sourceDN, CLDAPItems& destination,
              const std::string& destinationDN, ExistingEntries existing, std::string* errorText,
              const TransferWatcher& watcher, SourceFate fate, CopiedSource* copied) {
    DirectoryStore from(source), to(destination);
    // One directory is one store, in which a copy onto itself is seen before anything is asked.
    Store& target = &source == &destination ? from : to;
    return CopyAndReport(
               {{&from, sourceDN}, {&target, destinationDN}, existing, fate, watcher, copied})
        .AsFlag(errorText);
}

int MoveEntry(CLDAPItems& directory, const std::string& oldDN, const std::string& newDN,
              std::string* errorText, const TransferWatcher& watcher) {
    DirectoryStore store(directory);
    return ReportedMove(store, Move(store, {oldDN, newDN}, watcher)).AsFlag(errorText);
}

int EntryExists(CLDAPItems& directory, const std::string& dn, std::string* errorText) {
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    // An entry that is missing has no text of its own.
    const std::uint32_t code = CodeOf(directory.Entries().Find(dn));
    return directory.AsFlag(directory.Connection().Outcome(code), errorText);
}

int RemoveEntry(CLDAPItems& directory, const std::string& dn, std::string* errorText) {
    const ConnectionScope connection(directory, errorText);
    return connection && directory.DeleteTree(dn, errorText) != 0;
}

}  // namespace depot
