#include "depotctl/transfer.h"

#include <optional>

#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/local_tree.h"
#include "depotctl/progress.h"
#include "directory/connection_scope.h"
#include "directory/local_listing.h"
#include "fileops/copied_source.h"
#include "fileops/copy.h"
#include "fileops/depot_file.h"
#include "fileops/directory_transfer.h"
#include "fileops/file_place.h"
#include "fileops/shell_operation.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/text.h"
#include "store/tree.h"

namespace depot::ctl {
namespace {

// A program without windows shows neither progress nor errors in windows.
constexpr FILEOP_FLAGS kSilent =
    FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_NOERRORUI | FOF_SILENT;

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
    Work(const Program& program, const Place& from, const Place& to, Existing existing,
         SourceFate fate)
        : from_(from),
          to_(to),
          existing_(existing),
          fate_(fate),
          source_(from.Storage()),
          target_(to.Storage()),
          progress_(program.errors) {}

    TransferResult File() {
        const bool refuse = existing_ == Existing::kRefuse;
        Forget();
        const Result copied = CopyDepotFile(
            {*from_.depot, from_.path, to_.path, to_.depot, refuse, {}, fate_, &copied_});
        if (copied.AsFlag(&errorText_) == 0) FailWith({});
        return {1, 0};
    }

    TransferResult Tree() {
        CLDAPItems* const source = from_.Directory();
        CLDAPItems* const target = to_.Directory();
        Forget();
        if (source && target) {
            BetweenDirectories(*source, *target);
        } else if (source) {
            if (existing_ == Existing::kRefuse) RefuseExisting();
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
        depot::Store& store = *PlaceOf(*from_.depot, from_.path).store;
        const StoreScope scope(store);
        if (scope.Outcome().AsFlag(&errorText_) == 0) FailWith({});
        const Leftovers left = RemoveCopied(store, copied_);
        if (!left.why) RefuseWith(LeftoversText(left));
    }

private:
    // What an earlier operation left says nothing about this one.
    void Forget() const {
        for (const Place* place : {&from_, &to_}) {
            if (CLDAPItems* const directory = place->Directory()) {
                directory->SetLastError(LDAP_SUCCESS);
            }
        }
    }

    [[noreturn]] void FailWith(const std::string& path, DWORD systemError = 0) const {
        if (progress_.WasInterrupted()) {
            Refuse("stopped after " + std::to_string(progress_.FilesDone()) + " of " +
                   std::to_string(progress_.FilesInAll()) +
                   " files; what was transferred by then stays");
        }
        const CLDAPItems* const source = from_.Directory();
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
        const ExistingEntries existing =
            existing_ == Existing::kRefuse ? ExistingEntries::kRefuse : ExistingEntries::kReplace;
        if (Upload(directory, folder, target_, existing, &errorText_, progress_.Watcher(), fate_,
                   copied) == 0) {
            // Links to folders were left out.
            if (directory.LastError() == LDAP_NOT_SUPPORTED) RefuseWith(errorText_);
            FailWith({});
        }
    }

    void BetweenDirectories(CLDAPItems& source, CLDAPItems& target) {
        RefuseOneDirectory();
        const TemporaryFolder folder;
        Fetch(source, folder.Path());
        Store(target, folder.Path(), nullptr);
    }

    // Two depots may lead to one place of one server.
    void RefuseOneDirectory() const {
        const StorePath from = PlaceOf(*from_.depot, from_.path);
        const StorePath to = PlaceOf(*to_.depot, to_.path);
        // A tree goes onto no folder above it, either.
        if (!Overlaps(from, to, SourceFate::kGoes)) return;
        const StoreScope source(*from.store), target(*to.store);
        if (source && target && IsSameItem(from, to, fate_)) {
            Refuse(from_.Shown() + " cannot go into itself");
        }
    }

    void RefuseExisting() const {
        const StorePath from = PlaceOf(*from_.depot, from_.path);
        const StoreScope scope(*from.store);
        depot::Tree tree;
        if (!scope || !ListTree(*from.store, from.path, tree)) FailWith({});
        std::vector<std::string> paths = {target_};
        for (std::size_t index = 1; index < tree.items.size(); ++index) {
            const TreeItem& item = tree.items[index];
            paths.push_back(JoinPath(paths[item.parent], item.name));
            RefuseExistingFile({item.path, paths.back(), item.isFolder});
        }
    }

    void RefuseExistingFile(const TransferStep& step) const {
        if (step.isFolder || !PathExists(step.target)) return;
        Refuse("\"" + Utf8FromAnsi(step.target) + "\" is there already; --force replaces it");
    }

    void InFileSystem() {
        LocalTree tree(source_, target_);
        const bool goes = fate_ == SourceFate::kGoes;
        const std::uint32_t links = tree.Links() + (goes && IsLinkToFolder(source_) ? 1 : 0);
        if (goes && links > 0) RefuseWith(LinksText(links));
        if (tree.SharesNames()) RefuseWith(kSharedNamesText);
        if (existing_ == Existing::kRefuse) {
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
    const Existing existing_;
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

TransferResult Transfer(const Program& program, const Place& from, PlaceKind kind, const Place& to,
                        Existing existing, SourceFate fate) {
    if (IsSameOrInside(to, from)) {
        Refuse(from.Shown() + " cannot go into itself");
    }
    RequireFittingName(to, kind);
    Work work(program, from, to, existing, fate);
    const bool isTree = kind == PlaceKind::kFolder;
    const TransferResult result = isTree ? work.Tree() : work.File();
    // A local tree is gone by then, but for what came since it was listed.
    const bool isLocal = from.Directory() == nullptr && to.Directory() == nullptr;
    if (fate == SourceFate::kGoes && !(isTree && isLocal)) work.RemoveSource();
    return result;
}

void Remove(const Place& place, PlaceKind kind) {
    const bool localFolder = kind == PlaceKind::kFolder && place.Directory() == nullptr;
    const bool removed =
        localFolder ? RunShellOperation(FO_DELETE, {place.Storage()}, nullptr, kSilent, nullptr)
                    : DeleteFile(*place.depot, place.path) != 0;
    if (!removed) Fail("remove", place, place.Directory() ? 0 : GetLastError());
}

void RequireFittingName(const Place& place, PlaceKind kind) {
    const CLDAPItems* const directory = place.Directory();
    if (directory == nullptr || !directory->NamingNames().AreTheSame() || IsRoot(place)) return;
    const bool hasDot = NamePart(place.path).find('.') != std::string::npos;
    if (kind == PlaceKind::kFile && !hasDot) {
        Refuse(place.Shown() + ": in this directory a name without a dot is a folder's");
    }
    if (kind == PlaceKind::kFolder && hasDot) {
        Refuse(place.Shown() + ": in this directory a name with a dot is a file's");
    }
}

}  // namespace depot::ctl
