#include "depotctl/transfer.h"

#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/progress.h"
#include "directory/local_listing.h"
#include "fileops/depot_file.h"
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
        if (CopyFile(*from_.depot, from_.path, to_.path, to_.depot, refuse, &errorText_, {},
                     fate_) == 0) {
            FailWith({});
        }
        return {1, 0};
    }

    TransferResult Tree() {
        CLDAPItems* const source = from_.Directory();
        CLDAPItems* const target = to_.Directory();
        Forget();
        if (source && target) {
            BetweenDirectories(*source, *target);
        } else if (source) {
            if (existing_ == Existing::kRefuse) RefuseExisting(*source);
            Fetch(*source, target_);
        } else if (target) {
            Store(*target, source_);
        } else {
            InFileSystem();
        }
        return {progress_.FilesDone(), progress_.BytesDone()};
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

    void Fetch(CLDAPItems& directory, const std::string& folder) {
        if (Download(directory, source_, folder, &errorText_, progress_.Watcher(),
                     ExistingEntries::kReplace, fate_) == 0) {
            // Entries whose names no file can have were left out.
            if (directory.LastError() == LDAP_NAMING_VIOLATION) {
                Refuse(from_.Shown() + ": " + Utf8FromAnsi(errorText_));
            }
            FailWith({});
        }
    }

    void Store(CLDAPItems& directory, const std::string& folder) {
        const ExistingEntries existing =
            existing_ == Existing::kRefuse ? ExistingEntries::kRefuse : ExistingEntries::kReplace;
        if (Upload(directory, folder, target_, existing, &errorText_, progress_.Watcher(), fate_) ==
            0) {
            FailWith({});
        }
    }

    void BetweenDirectories(CLDAPItems& source, CLDAPItems& target) {
        RefuseOneDirectory(source, target);
        const TemporaryFolder folder;
        Fetch(source, folder.Path());
        Store(target, folder.Path());
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

    // The steps of a copy within the file system, a folder before what it holds. A step's entry
    // name is the source's path.
    TransferPlan LocalPlan() const {
        TransferPlan plan;
        plan.steps.push_back({source_, target_, true});
        for (std::size_t next = 0; next < plan.steps.size(); ++next) {
            const TransferStep parent = plan.steps[next];
            if (!parent.isFolder) continue;
            LdapItemList children;
            if (AddLocalChildren(parent.dn, Subfolders::kTake, children) == kNotListed) {
                Refuse("\"" + Utf8FromAnsi(parent.dn) + "\" cannot be listed");
            }
            for (const CLDAPItem* child : children) {
                const bool isFolder = child->isFolder != 0;
                plan.steps.push_back(
                    {child->path, JoinPath(parent.localPath, NamePart(child->path)), isFolder});
                if (!isFolder) ++plan.files;
            }
        }
        return plan;
    }

    void InFileSystem() {
        const TransferPlan plan = LocalPlan();
        if (existing_ == Existing::kRefuse) {
            for (const TransferStep& step : plan.steps) RefuseExistingFile(step);
        }
        const TransferWatcher watcher = progress_.Watcher();
        TransferProgress state;
        state.filesInAll = plan.files;
        for (const TransferStep& step : plan.steps) {
            if (step.isFolder) {
                if (!EnsureLocalFolder(step.localPath)) FailWith(step.localPath, GetLastError());
                continue;
            }
            if (!CopyFileA(step.dn.c_str(), step.localPath.c_str(), FALSE)) {
                FailWith(step.localPath, GetLastError());
            }
            ++state.filesDone;
            state.bytesDone += FileSize(step.localPath);
            if (!watcher(state) && state.filesDone < state.filesInAll) FailWith({});
        }
    }

    static std::uint64_t FileSize(const std::string& path) {
        WIN32_FILE_ATTRIBUTE_DATA data = {};
        GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data);
        return static_cast<std::uint64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
    }

    const Place& from_;
    const Place& to_;
    const Existing existing_;
    const SourceFate fate_;
    const std::string source_;
    const std::string target_;
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
    return kind == PlaceKind::kFile ? work.File() : work.Tree();
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
