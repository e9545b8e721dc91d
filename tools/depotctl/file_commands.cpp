// cp, mv, rm, mkdir and copy-name
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/copying.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/places.h"
#include "depotctl/progress.h"
#include "depotctl/transfer.h"
#include "depotctl/tree_difference.h"
#include "fileops/copy.h"
#include "fileops/numbered_copy.h"
#include "fileops/shell_operation.h"
#include "platform/file_search.h"
#include "platform/text.h"
#include "store/folder_store.h"
#include "store/tree.h"

namespace depot::ctl {
namespace {

struct RemoveOptions {
    std::vector<std::string> paths;
    bool recursive = false;
    StepOptions steps{};
};

struct FolderOptions {
    std::string path;
    bool parents = false;
    StepOptions steps{};
};

void Copy(Program& program, const TransferOptions& options) {
    RunCopy(program, options,
            {"copied", [&options](const Place& from, ItemKind kind, const Place& /*to*/) {
                 if (kind != ItemKind::kFolder || options.recursive) return;
                 Refuse(from.Shown() + " is a folder; -r copies it with all below it");
             }});
}

// Renames within a store; false when that cannot be done without copying.
bool RenameInPlace(const Place& from, const Place& to, ItemKind kind, ExistingEntries existing) {
    const OpenedPlace source(from, "move"), target(to, "move");
    const bool isLocal = source.store.IsLocal();
    const bool replaces = existing == ExistingEntries::kReplace;
    const PathPair paths = {source.path, target.path};
    if (&source.store != &target.store) return false;
    // A directory never renames onto another entry that is there.
    if (replaces && !isLocal && !AreOneItem(source.store, paths)) return false;
    RequireFittingName(to, kind);
    StoreSource held;
    const Result renamed =
        isLocal ? source.store.Rename(paths, existing, held) : depot::Move(source.store, paths, {});
    if (renamed) return true;
    const Error& why = renamed.Why();
    if (isLocal && why.code == ERROR_NOT_SAME_DEVICE) return false;
    Fail("move", isLocal ? to : from, why);
}

struct Moving {
    Place from;
    ItemKind kind;
    Place to;
    ExistingEntries existing = ExistingEntries::kRefuse;
    bool isNeeded = true;  // by --update
};

// Whether the file at the target is older than the source, or different where there are no dates.
bool IsOutdated(const Place& from, const Target& to) {
    const TreeDifference difference({from, ItemKind::kFile}, {to.place, to.there},
                                    DifferentBy::kDate);
    return difference.Items().front().state == ItemState::kDifferent;
}

Moving MovingOf(const Place& from, ItemKind kind, const Target& target,
                const TransferOptions& options) {
    if (IsRoot(from)) Refuse(from.Shown() + " is the root of its depot and stays");
    const Place& to = target.place;
    RequireApart(from, to);
    RequireFittingName(to, kind);
    Moving moving = {from, kind, to};
    const bool respelled = from.depot == to.depot && EqualsNoCase(from.path, to.path);
    if (respelled || target.there == ItemKind::kMissing) return moving;
    RequireFree(target, kind, (options.force || options.update) && kind == ItemKind::kFile);
    if (kind == ItemKind::kFolder) Refuse(to.Shown() + " is there already");
    moving.existing = ExistingEntries::kReplace;
    moving.isNeeded = !options.update || IsOutdated(from, target);
    return moving;
}

std::uint32_t MoveOne(const Program& program, const Moving& moving) {
    const auto& [from, kind, to, existing, isNeeded] = moving;
    if (RenameInPlace(from, to, kind, existing)) return 1;
    return Transfer(program, from, to, {kind, existing, SourceFate::kGoes});
}

void Move(Program& program, const TransferOptions& options) {
    Places places(program);
    const Selection from = places.Select(options.from);
    const std::vector<ItemKind> kinds = places.RequireAll(from);
    const std::vector<Target> targets = TargetsOf(places, from, options.to);
    std::vector<Moving> all;
    for (std::size_t at = 0; at < targets.size(); ++at) {
        all.push_back(MovingOf(from.items[at].place, kinds[at], targets[at], options));
    }
    Steps steps(program, options.steps);
    TransferAnswer answer(from, "moved");
    for (const Moving& moving : all) {
        if (moving.isNeeded) steps.Note({"move", moving.from.Utf8(), moving.to.Utf8()});
        const bool moves = moving.isNeeded && steps.AreTaken();
        answer.Add(moving.to, moves ? MoveOne(program, moving) : 0);
    }
    answer.Give(steps);
}

// A program without windows shows neither progress nor errors in windows.
constexpr FILEOP_FLAGS kSilent =
    FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_NOERRORUI | FOF_SILENT;

void RemoveWhole(const OpenedPlace& at, const Place& place, ItemKind kind) {
    const auto local = at.store.LocalPath(at.path);
    // The shell removes folders also with what no text can name.
    if (local && kind == ItemKind::kFolder) {
        if (RunShellOperation({FO_DELETE, {*local}, nullptr, kSilent})) return;
        Fail("remove", place, GetLastError());
    }
    if (!local && kind == ItemKind::kFile && at.store.Remove(at.path, kind)) return;
    // Some files hold others.
    const Result removed = at.store.RemoveTree(at.path);
    if (!removed) Fail("remove", place, removed.Why());
}

class Removal {
public:
    Removal(const Program& program, const Place& folder)
        : folder_(folder), at_(folder, "remove"), progress_(program.errors) {}

    void Run() {
        const auto local = at_.store.LocalPath(at_.path);
        // Its files are those of another place.
        if (local && IsLinkToFolder(*local)) {
            Refuse(folder_.Shown() + " is a link to a folder, which rmdir removes");
        }
        const Result listed = ListTree(at_.store, at_.path, tree_);
        // There may be links in what was not listed.
        if (!listed && local) Fail("remove", folder_, listed.Why());
        if (listed) RemoveFiles();
        if (tree_.left.links > 0) KeepLinks();
        // The folders, and whatever could not be deleted by itself.
        RemoveWhole(at_, folder_, ItemKind::kFolder);
    }

private:
    void RemoveFiles() {
        TransferProgress state;
        state.filesInAll = tree_.files;
        std::vector<ItemToRemove> some;
        for (const TreeItem& item : tree_.items) {
            if (item.isFolder) continue;
            some.push_back({item.path});
            if (some.size() < at_.store.Window() &&
                state.filesDone + some.size() < state.filesInAll) {
                continue;
            }
            at_.store.RemoveItems(some);
            state.filesDone += static_cast<std::uint32_t>(some.size());
            some.clear();
            const bool goesOn = progress_.Watcher()(state) || state.filesDone == state.filesInAll;
            if (!goesOn) progress_.RefuseWhenStopped("files; the others stay");
        }
    }

    // Removes the folders but for those that hold links. Some systems would empty the folders that
    // these lead to with the rest of the tree.
    [[noreturn]] void KeepLinks() const {
        for (auto item = tree_.items.rbegin(); item != tree_.items.rend(); ++item) {
            if (item->isFolder) static_cast<void>(at_.store.Remove(item->path, ItemKind::kFolder));
        }
        Refuse(folder_.Shown() + ": " + LinksText(tree_.left.links));
    }

    const Place& folder_;
    const OpenedPlace at_;
    Progress progress_;
    Tree tree_;
};

// Deletes a file, or a folder with all below it, for good: a folder file by file, and with a
// progress bar on a terminal. Ends the command on a failure, and between two files when the user
// interrupts it: what was not deleted by then stays.
void Remove(const Program& program, const Place& place, ItemKind kind) {
    if (kind == ItemKind::kFolder) return Removal(program, place).Run();
    RemoveWhole(OpenedPlace(place, "remove"), place, kind);
}

// All that goes with a place, what holds it last.
std::vector<Step> RemovalSteps(const Place& place, ItemKind kind) {
    std::vector<Step> steps;
    const TreeDifference tree({place, kind}, {place, ItemKind::kMissing}, DifferentBy::kName);
    for (const DifferentItem& item : tree.Items()) {
        steps.insert(steps.begin(), {"remove", tree.Left(item).Utf8(), {}});
    }
    return steps;
}

void RemoveAll(Program& program, const RemoveOptions& options) {
    Places places(program);
    const Selection all = places.Select(options.paths);
    std::vector<ItemKind> kinds;
    for (const Selected& selected : all.items) {
        const Place& place = selected.place;
        kinds.push_back(places.Require(selected));
        if (IsRoot(place)) Refuse(place.Shown() + " is the root of its depot and stays");
        if (kinds.back() == ItemKind::kFolder && !options.recursive) {
            Refuse(place.Shown() + " is a folder; -r removes it with all below it");
        }
    }
    Steps steps(program, options.steps);
    Json removed = Json::array();
    for (std::size_t at = 0; at < kinds.size(); ++at) {
        const Place& place = all.items[at].place;
        if (steps.AreShown()) steps.Note(RemovalSteps(place, kinds[at]));
        if (steps.AreTaken()) Remove(program, place, kinds[at]);
        removed.push_back(place.Utf8());
    }
    const std::string count = std::to_string(kinds.size());
    steps.Answer({{"removed", removed}}, "removed " + count);
}

// The folders that have to be made for a place, the uppermost first.
std::vector<Place> MissingFolders(const Places& places, const Place& place, bool parents) {
    std::vector<Place> missing = {place};
    while (parents && !IsRoot(missing.front())) {
        const Place above = FolderOf(missing.front());
        if (places.KindOf(above) != ItemKind::kMissing) break;
        missing.insert(missing.begin(), above);
    }
    return missing;
}

void MakeFolders(Program& program, const FolderOptions& options) {
    Places places(program);
    const Place place = places.Resolve(options.path);
    const ItemKind kind = places.KindOf(place);
    const bool there = kind == ItemKind::kFolder && options.parents;
    if (kind != ItemKind::kMissing && !there) Refuse(place.Shown() + " is there already");
    if (!options.parents && !there) places.Require(FolderOf(place));
    Steps steps(program, options.steps);
    if (!there) {
        RequireFittingName(place, ItemKind::kFolder);
        if (steps.AreShown()) {
            for (const Place& folder : MissingFolders(places, place, options.parents)) {
                steps.Note({"make", {}, folder.Utf8()});
            }
        }
        const FoldersAbove above = options.parents ? FoldersAbove::kAreMade : FoldersAbove::kExist;
        if (steps.AreTaken()) MakeFolder(place, above);
    }
    steps.Answer({{"made", place.Utf8()}}, "made " + place.Utf8());
}

struct CopyNameOptions {
    std::string path;
    StepOptions steps{};
};

// Copies one file and returns the name of the copy, or only returns it.
std::string CopyUnderFreeName(Program& program, const Place& source, Steps& steps) {
    DepotSession& session = program.Session();
    const std::optional<std::string> copy = steps.AreTaken()
                                                ? MakeNumberedCopy(session, source.path)
                                                : FindNumberedCopy(session, source.path);
    if (!copy) {
        if (source.isPlain) Refuse(source.Shown() + " is in no depot");
        Fail("copy", source);
    }
    const std::string name = Utf8FromAnsi(*copy);
    steps.Note({"copy", source.Utf8(), name});
    return name;
}

void CopyUnderFreeNames(Program& program, const CopyNameOptions& options) {
    Places places(program);
    const Selection sources = places.Select(options.path);
    for (const Selected& selected : sources.items) places.RequireFile(selected);
    Steps steps(program, options.steps);
    Json names = Json::array();
    std::string text;
    for (const Selected& selected : sources.items) {
        names.push_back(CopyUnderFreeName(program, selected.place, steps));
        text += names.back().get<std::string>() + "\n";
    }
    steps.Answer({{"copy", sources.isPattern ? names : names.front()}}, text);
}

}  // namespace

void AddFileCommands(CLI::App& app, Program& program) {
    const auto copy = AddTransferCommand(
        app, program,
        {"cp", "Copy a file or a folder",
         "Examples:\n  depotctl cp \"<Work>\\Sessions\\office.kre\" \"<Team>\\\"\n"
         "  depotctl cp -r \"<Work>\\Sessions\" C:\\Backup",
         "What is copied"},
        Copy);
    copy.app.add_flag("-r,--recursive", copy.options.recursive, "Copy a folder with all below it");

    AddTransferCommand(app, program,
                       {"mv", "Move or rename a file or a folder",
                        "Examples:\n  depotctl mv \"<Work>\\old.kre\" \"<Work>\\new.kre\"\n"
                        "  depotctl mv \"<Work>\\Sessions\" \"<Archive>\\\"",
                        "What is moved"},
                       Move);

    const auto remove = AddCommand<RemoveOptions>(app, program,
                                                  {"rm", "Delete files and folders for good",
                                                   "Examples:\n  depotctl rm \"<Work>\\old.kre\"\n"
                                                   "  depotctl rm --dry-run \"<Work>\\*.tmp\"\n"
                                                   "  depotctl rm -r \"<Work>\\Archive\""},
                                                  RemoveAll);
    remove.app.add_option("paths", remove.options.paths, "What is deleted")->required();
    remove.app.add_flag("-r,--recursive", remove.options.recursive,
                        "Delete folders with all below them");
    AddStepFlags(remove.app, remove.options.steps);

    const auto make = AddCommand<FolderOptions>(
        app, program,
        {"mkdir", "Make a folder", "Example:\n  depotctl mkdir -p \"<Work>\\Sessions\\Host A\""},
        MakeFolders);
    make.app.add_option("path", make.options.path, "The new folder")->required();
    make.app.add_flag("-p,--parents", make.options.parents,
                      "Make the folders above it, too; one that is there is no mistake");

    AddStepFlags(make.app, make.options.steps);

    const auto copyName = AddCommand<CopyNameOptions>(
        app, program,
        {"copy-name", "Copy a file next to itself under the first free copy name, and show it",
         "Example:\n  depotctl copy-name \"<Work>\\office.kre\""},
        CopyUnderFreeNames);
    copyName.app.add_option("path", copyName.options.path, "The file")->required();
    AddStepFlags(copyName.app, copyName.options.steps);
}

}  // namespace depot::ctl
