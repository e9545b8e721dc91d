#include "depotctl/transfer.h"

#include <optional>

#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/local_tree.h"
#include "depotctl/progress.h"
#include "directory/local_listing.h"
#include "fileops/copied_source.h"
#include "fileops/depot_file.h"
#include "fileops/directory_transfer.h"
#include "fileops/shell_operation.h"
#include "fileops/transfer_plan.h"
#include "fileops/transfer_source.h"
#include "model/local_mirror.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/text.h"

namespace depot::ctl {
namespace {

// A program without windows shows neither progress nor errors in windows.
constexpr FILEOP_FLAGS kSilent =
    FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_NOERRORUI | FOF_SILENT;

CLDAPItems* DirectoryAt(const Place& place) {
    return place.depot->DirectoryConnection();
}

// A temporary folder, gone at the end.
class TemporaryFolder {
public:
    TemporaryFolder() : path_(MakeTempFolder()) {
        if (path_.empty()) Refuse("no temporary folder can be made");
    }
    ~TemporaryFolder() { RunShellOperation(FO_DELETE, {path_}, nullptr, kSilent, nullptr); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

// The work of one transfer.
class Work {
public:
    Work(const Program& program, const Place& from, const Place& to,
         const depot::ctl::TransferRules& rules)
        : from_(from),
          to_(to),
          existing_(rules.existing),
          fate_(rules.fate),
          source_(from.Stored().path),
          target_(to.Stored().path),
          progress_(program.errors) {}

    TransferResult File() {
        const bool refuse = existing_ == ExistingEntries::kRefuse;
        Forget();
        if (CopyFile(*from_.depot, from_.path, to_.path, to_.depot, refuse, &errorText_, {}, fate_,
                     &copied_) == 0) {
            FailWith({});
        }
        return {1, 0};
    }

    TransferResult Tree() {
        CLDAPItems* const source = DirectoryAt(from_);
        CLDAPItems* const target = DirectoryAt(to_);
        Forget();
        if (source && target) {
            BetweenDirectories(*source, *target);
        } else if (source) {
            if (existing_ == ExistingEntries::kRefuse) RefuseExisting(*source);
            Fetch(*source, target_);
        } else if (target) {
            Store(*target, source_, &copied_);
        } else {
            InFileSystem();
        }
        return {progress_.FilesDone(), progress_.BytesDone()};
    }

    // Removes what was copied, as far as it still is what was copied.
    void RemoveSource() {
        CLDAPItems* const directory = DirectoryAt(from_);
        std::optional<ConnectionScope> connection;
        if (directory) connection.emplace(*directory, &errorText_);
        if (connection && !*connection) FailWith({});
        const Leftovers left =
            directory ? RemoveCopiedEntries(*directory, copied_) : RemoveCopiedFiles(copied_);
        if (left.code != LDAP_SUCCESS) RefuseWith(LeftoversText(left));
    }

private:
    // What an earlier operation left says nothing about this one.
    void Forget() const {
        for (const Place* place : {&from_, &to_}) {
            if (CLDAPItems* const directory = DirectoryAt(*place)) {
                directory->SetLastError(LDAP_SUCCESS);
            }
        }
    }

    [[noreturn]] void FailWith(const std::string& path, DWORD systemError = 0) const {
        progress_.RefuseWhenStopped("files; what was transferred by then stays");
        const CLDAPItems* const source = DirectoryAt(from_);
        const bool sourceFailed = source && source->LastError() != LDAP_SUCCESS;
        Place failed = sourceFailed ? from_ : to_;
        if (!path.empty()) failed.path = path;
        depot::ctl::Fail(sourceFailed ? "read" : "write", failed, systemError, errorText_);
    }

    [[noreturn]] void RefuseWith(const std::string& reason) const {
        Refuse(from_.Shown() + ": " + Utf8FromAnsi(reason));
    }

    void Fetch(CLDAPItems& directory, const std::string& folder) {
        if (Download(directory, source_, folder, &errorText_, progress_.Watcher(),
                     ExistingEntries::kReplace, fate_, &copied_) == 0) {
            // The names of entries are not those of files.
            if (directory.LastError() == LDAP_NAMING_VIOLATION) RefuseWith(errorText_);
            FailWith({});
        }
    }

    void Store(CLDAPItems& directory, const std::string& folder, CopiedSource* copied) {
        if (Upload(directory, folder, target_, existing_, &errorText_, progress_.Watcher(), fate_,
                   copied) == 0) {
            // Links to folders were left out.
            if (directory.LastError() == LDAP_NOT_SUPPORTED) RefuseWith(errorText_);
            FailWith({});
        }
    }

    void BetweenDirectories(CLDAPItems& source, CLDAPItems& target) {
        RefuseOneDirectory(source, target);
        const TemporaryFolder folder;
        Fetch(source, folder.Path());
        Store(target, folder.Path(), nullptr);
    }

    // Two depots may lead to one place of one server.
    void RefuseOneDirectory(CLDAPItems& source, CLDAPItems& target) const {
        if (!IsSameEntry(source, target_, source_) && !IsBelowEntry(source, target_, source_) &&
            !IsBelowEntry(source, source_, target_)) {
            return;
        }
        const ConnectionScope from(source, nullptr), to(target, nullptr);
        if (from && to && IsSameDirectory(source, target, source_, fate_)) {
            Refuse(from_.Shown() + " cannot go into itself");
        }
    }

    void RefuseExisting(CLDAPItems& directory) const {
        const ConnectionScope connection(directory, nullptr);
        TransferPlan plan;
        if (!connection || !PlanDownload(directory, source_, target_, plan)) FailWith({});
        for (const TransferStep& step : plan.steps) RefuseExistingFile(step);
    }

    void RefuseExistingFile(const TransferStep& step) const {
        if (step.isFolder || !PathExists(step.localPath)) return;
        Refuse("\"" + Utf8FromAnsi(step.localPath) + "\" is there already; --force replaces it");
    }

    void InFileSystem() {
        LocalTree tree(source_, target_);
        const bool goes = fate_ == SourceFate::kGoes;
        const std::uint32_t links = tree.Links() + (goes && IsLinkToFolder(source_) ? 1 : 0);
        if (goes && links > 0) RefuseWith(LinksText(links));
        if (tree.SharesNames()) RefuseWith(kSharedNamesText);
        if (existing_ == ExistingEntries::kRefuse) {
            for (const TransferStep& step : tree.Steps()) RefuseExistingFile(step);
        }
        const LocalFailure failure = tree.Copy(progress_.Watcher());
        if (failure.code != ERROR_SUCCESS) FailWith(failure.path, failure.code);
        if (goes && !tree.RemoveSource()) {
            Refuse(from_.Shown() + " was copied whole, but what is in use there, or has changed " +
                   "since, stays");
        }
        if (links > 0) RefuseWith(LinksText(links));
    }

    const Place& from_;
    const Place& to_;
    const ExistingEntries existing_;
    const SourceFate fate_;
    const std::string source_;
    const std::string target_;
    CopiedSource copied_;
    Progress progress_;
    std::string errorText_;
};

bool IsSameOrInside(const Place& place, const Place& folder) {
    if (place.depot != folder.depot) return false;
    return StartsWithNoCase(EnsureTrailingBackslash(place.path),
                            EnsureTrailingBackslash(folder.path));
}

}  // namespace

TransferResult Transfer(const Program& program, const Place& from, const Place& to,
                        const TransferRules& rules) {
    if (IsSameOrInside(to, from)) {
        Refuse(from.Shown() + " cannot go into itself");
    }
    RequireFittingName(to, rules.kind);
    Work work(program, from, to, rules);
    const bool isTree = rules.kind == ItemKind::kFolder;
    const TransferResult result = isTree ? work.Tree() : work.File();
    // A local tree is gone by then, but for what came since it was listed.
    const bool isLocal = DirectoryAt(from) == nullptr && DirectoryAt(to) == nullptr;
    if (rules.fate == SourceFate::kGoes && !(isTree && isLocal)) work.RemoveSource();
    return result;
}

void Remove(const Place& place, ItemKind kind) {
    const OpenedPlace at(place, "remove");
    const auto local = at.store.LocalPath(at.path);
    // The shell removes folders also with what no text can name.
    if (local && kind == ItemKind::kFolder) {
        if (RunShellOperation(FO_DELETE, {*local}, nullptr, kSilent, nullptr)) return;
        Fail("remove", place, GetLastError());
    }
    const Result removed = at.store.RemoveTree(at.path);
    if (!removed) Fail("remove", place, removed.Why());
}

void RequireFittingName(const Place& place, ItemKind kind) {
    const StorePath stored = place.Stored();
    // Where files and folders are named alike, the dot alone tells them apart.
    const bool namesAlike =
        !stored.store->LocalPath(stored.path) &&
        stored.store->ChildPath({}, "x", true) == stored.store->ChildPath({}, "x", false);
    if (!namesAlike || IsRoot(place)) return;
    if (kind == ItemKind::kFile && !HasDot(place)) {
        Refuse(place.Shown() + ": in this directory a name without a dot is a folder's");
    }
    if (kind == ItemKind::kFolder && HasDot(place)) {
        Refuse(place.Shown() + ": in this directory a name with a dot is a file's");
    }
}

}  // namespace depot::ctl
