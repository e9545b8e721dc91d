#include "fileops/store_in_directory.h"

#include "directory/local_listing.h"
#include "fileops/transfer_source.h"
#include "platform/local_file.h"
#include "platform/paths.h"

namespace depot {
namespace {

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

}  // namespace

std::uint32_t StoreContents(CLDAPItems& directory, const std::string& dn, const void* bytes,
                            std::uint32_t length, ExistingEntries existing) {
    std::string name;
    bool isFolder = false;
    if (directory.SplitEntryName(dn, name, isFolder) == 0) return LDAP_INVALID_DN_SYNTAX;
    // Most files are new: adding first asks the server once where looking first asks twice.
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
                        const NoteBytes& note) {
    const auto bytes = ReadLocalFile(step.localPath);
    if (!bytes) return LDAP_LOCAL_ERROR;
    note(bytes->data(), bytes->size());
    return StoreContents(directory, step.dn, bytes->data(),
                         static_cast<std::uint32_t>(bytes->size()), existing);
}

std::string LeftOutText(const LeftOut& left) {
    const std::string links = LinksText(left.links);
    const std::string names = UnsafeLocalNamesText(left.unsafeNames);
    return links.empty() || names.empty() ? links + names : links + "\n" + names;
}

std::uint32_t StoreTree(CLDAPItems& directory, const std::string& folder, const std::string& dn,
                        const TransferRules& rules, LeftOut& left) {
    const std::optional<TransferPlan> listed = PlanUpload(directory, folder, dn);
    if (!listed) return LDAP_LOCAL_ERROR;
    const TransferPlan& plan = *listed;
    const bool goes = rules.fate == SourceFate::kGoes;
    left = {plan.links + (goes && IsLinkToFolder(folder) ? 1 : 0), plan.unsafeNames};
    const bool isWhole = left.links == 0 && left.unsafeNames == 0;
    if (!isWhole && goes) return LDAP_NOT_SUPPORTED;
    // No file of a tree replaces another one of it.
    const bool refused = rules.existing == ExistingEntries::kRefuse;
    if (plan.sharedNames > 0 || IsFileInTheWay(directory, plan) ||
        (refused && directory.FindEntry(dn) == LDAP_SUCCESS)) {
        return LDAP_ALREADY_EXISTS;
    }
    rules.NoteTree(plan, &TransferStep::localPath);
    std::uint32_t code = EnsureTop(directory, dn);
    if (code != LDAP_SUCCESS) return code;
    code = RunPlan(
        plan, rules.watcher,
        [&](const TransferStep& step) -> std::uint32_t {
            if (step.dn == dn) return LDAP_SUCCESS;
            const std::string name = NamePart(step.localPath);
            const bool added = directory.AddFolderEntry(step.dn, name, nullptr) != 0;
            return added ? std::uint32_t{LDAP_SUCCESS} : directory.LastError();
        },
        [&](const TransferStep& step, TransferProgress& progress) {
            return StoreFile(directory, step, rules.existing,
                             [&](const void* bytes, std::size_t length) {
                                 progress.bytesDone += length;
                                 rules.NoteFile(plan, step, bytes, length);
                             });
        });
    return code == LDAP_SUCCESS && !isWhole ? std::uint32_t{LDAP_NOT_SUPPORTED} : code;
}

}  // namespace depot
