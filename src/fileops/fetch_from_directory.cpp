#include "fileops/fetch_from_directory.h"

#include <algorithm>

#include "fileops/transfer_source.h"
#include "model/depot_paths.h"
#include "model/fetched_file.h"
#include "platform/local_file.h"
#include "platform/paths.h"

namespace depot {
namespace {

std::uint32_t WriteContents(const FileBuffer& contents, const std::string& path,
                            const TransferRules& rules) {
    const bool replaces = rules.existing == ExistingEntries::kReplace;
    return WriteFetchedFile(contents, path,
                            replaces ? ExistingFile::kIsReplaced : ExistingFile::kStays,
                            rules.fate == SourceFate::kGoes ? Flush::kNow : Flush::kLater);
}

std::uint32_t FetchFile(CLDAPItems& directory, const TransferStep& step, const TransferRules& rules,
                        FileBuffer& contents) {
    if (directory.ReadFileContents(step.dn, contents) == 0) return directory.LastError();
    const bool mustBeSeen = rules.refusesUnseenBytes || rules.fate == SourceFate::kGoes;
    if (!contents.bytes && mustBeSeen) return LDAP_NO_SUCH_ATTRIBUTE;
    // A file's name without a dot lets the deletion look for entries below it.
    if (rules.fate == SourceFate::kGoes && LooksLikeFolder(directory, step.dn)) {
        const std::uint32_t code = RefuseChildren(directory, step.dn);
        if (code != LDAP_SUCCESS) return code;
    }
    return WriteContents(contents, step.localPath, rules);
}

// Tells of each step whether it is a file that exists locally.
std::vector<bool> LocalFiles(const TransferPlan& plan) {
    std::vector<bool> found;
    for (const TransferStep& step : plan.steps) {
        found.push_back(!step.isFolder && PathMayExist(step.localPath));
    }
    return found;
}

}  // namespace

std::uint32_t FetchTree(CLDAPItems& directory, const std::string& dn, const LdapItemList& children,
                        const std::string& folder, const TransferRules& rules,
                        std::uint32_t& unsafeNames) {
    TransferPlan plan;
    if (!PlanDownload(directory, dn, children, folder, plan)) return directory.LastError();
    if (plan.sharedNames > 0) return kSharedLocalNames;
    unsafeNames = plan.unsafeNames;
    if (unsafeNames > 0 && rules.fate == SourceFate::kGoes) return LDAP_NAMING_VIOLATION;
    const std::vector<bool> localFiles = LocalFiles(plan);
    const bool anyExists =
        std::find(localFiles.begin(), localFiles.end(), true) != localFiles.end();
    if (anyExists && rules.existing == ExistingEntries::kRefuse) return LDAP_ALREADY_EXISTS;
    rules.NoteTree(plan, &TransferStep::dn);
    const std::uint32_t code = RunPlan(
        plan, rules.watcher,
        [](const TransferStep& step) -> std::uint32_t {
            return EnsureLocalFolder(step.localPath) ? LDAP_SUCCESS : LDAP_LOCAL_ERROR;
        },
        [&](const TransferStep& step, TransferProgress& progress) {
            TransferRules fileRules = rules;
            // A file that came since may be another one of the tree, through a link in the target.
            const bool wasThere = localFiles[static_cast<std::size_t>(&step - plan.steps.data())];
            if (!wasThere) fileRules.existing = ExistingEntries::kRefuse;
            FileBuffer contents;
            const std::uint32_t fetched = FetchFile(directory, step, fileRules, contents);
            progress.bytesDone += contents.length;
            rules.NoteFile(plan, step, contents.bytes.get(), contents.length);
            return fetched;
        });
    const bool incomplete = code == LDAP_SUCCESS && unsafeNames > 0;
    return incomplete ? std::uint32_t{LDAP_NAMING_VIOLATION} : code;
}

std::uint32_t Fetch(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
                    const TransferRules& rules, std::uint32_t& unsafeNames) {
    SourceEntry source;
    std::uint32_t code = ReadSource(directory, dn, rules.fate, source);
    if (code != LDAP_SUCCESS) return code;
    if (source.isFolder) {
        return FetchTree(directory, dn, source.children, localPath, rules, unsafeNames);
    }
    if (rules.existing == ExistingEntries::kRefuse && PathMayExist(localPath)) {
        return LDAP_ALREADY_EXISTS;
    }
    rules.NoteSource(dn, source.contents.bytes.get(), source.contents.length);
    code = WriteContents(source.contents, localPath, rules);
    if (code == LDAP_SUCCESS) NoteSingleFile(rules.watcher, source.contents.length);
    return code;
}

}  // namespace depot
