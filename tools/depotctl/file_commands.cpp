// cp, mv, rm, mkdir and copy-name
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/places.h"
#include "depotctl/removal.h"
#include "depotctl/transfer.h"
#include "fileops/copy.h"
#include "fileops/numbered_copy.h"
#include "platform/text.h"

namespace depot::ctl {
namespace {

struct RemoveOptions {
    std::vector<std::string> paths;
    bool recursive = false;
};

struct FolderOptions {
    std::string path;
    bool parents = false;
};

void Copy(Program& program, const TransferOptions& options) {
    Places places(program);
    const Place from = places.Resolve(options.from);
    const ItemKind kind = places.Require(from);
    if (kind == ItemKind::kFolder && !options.recursive) {
        Refuse(from.Shown() + " is a folder; -r copies it with all below it");
    }
    const Target to = TargetOf(places, from, options.to);
    RequireFree(to, kind, options.force);
    AnswerTransfer(program, "copied", to.place,
                   Transfer(program, from, to.place, {kind, options.Existing()}));
}

// Renames within a store; false when that cannot be done without copying.
bool RenameInPlace(const Place& from, const Place& to, ItemKind kind, ExistingEntries existing) {
    const OpenedPlace source(from, "move"), target(to, "move");
    const bool isLocal = source.store.LocalPath(source.path).has_value();
    const bool replaces = existing == ExistingEntries::kReplace;
    // A directory never renames onto an entry that is there.
    if (&source.store != &target.store || (replaces && !isLocal)) return false;
    RequireFittingName(to, kind);
    const PathPair paths = {source.path, target.path};
    StoreSource held;
    const Result renamed =
        isLocal ? source.store.Rename(paths, existing, held) : depot::Move(source.store, paths, {});
    if (renamed) return true;
    const Error& why = renamed.Why();
    if (isLocal && why.code == ERROR_NOT_SAME_DEVICE) return false;
    Fail("move", isLocal ? to : from, why);
}

void Move(Program& program, const TransferOptions& options) {
    Places places(program);
    const Place from = places.Resolve(options.from);
    const ItemKind kind = places.Require(from);
    if (IsRoot(from)) Refuse(from.Shown() + " is the root of its depot and stays");
    const Target target = TargetOf(places, from, options.to);
    const Place& to = target.place;
    const bool respelled = from.depot == to.depot && EqualsNoCase(from.path, to.path);
    const bool replaces = !respelled && target.there != ItemKind::kMissing;
    if (replaces) RequireFree(target, kind, options.force && kind == ItemKind::kFile);
    if (replaces && kind == ItemKind::kFolder) Refuse(to.Shown() + " is there already");
    const ExistingEntries existing =
        replaces ? ExistingEntries::kReplace : ExistingEntries::kRefuse;
    TransferResult result = {1, 0};
    if (!RenameInPlace(from, to, kind, existing)) {
        result = Transfer(program, from, to, {kind, existing, SourceFate::kGoes});
    }
    AnswerTransfer(program, "moved", to, result);
}

void RemoveAll(Program& program, const RemoveOptions& options) {
    Places places(program);
    std::vector<std::pair<Place, ItemKind>> all;
    for (const std::string& path : options.paths) {
        const Place place = places.Resolve(path);
        const ItemKind kind = places.Require(place);
        if (IsRoot(place)) Refuse(place.Shown() + " is the root of its depot and stays");
        if (kind == ItemKind::kFolder && !options.recursive) {
            Refuse(place.Shown() + " is a folder; -r removes it with all below it");
        }
        all.emplace_back(place, kind);
    }
    Json removed = Json::array();
    for (const auto& [place, kind] : all) {
        Remove(program, place, kind);
        removed.push_back(place.Utf8());
    }
    const std::string count = std::to_string(all.size());
    program.renderer.Answer({{"removed", removed}}, "removed " + count);
}

void MakeFolder(Program& program, const FolderOptions& options) {
    Places places(program);
    const Place place = places.Resolve(options.path);
    const ItemKind kind = places.KindOf(place);
    const bool there = kind == ItemKind::kFolder && options.parents;
    if (kind != ItemKind::kMissing && !there) Refuse(place.Shown() + " is there already");
    if (!options.parents && !there) places.Require(ParentOf(place));
    if (!there) {
        RequireFittingName(place, ItemKind::kFolder);
        const OpenedPlace at(place, "make");
        const FoldersAbove above = options.parents ? FoldersAbove::kAreMade : FoldersAbove::kExist;
        const Result made = at.store.MakeFolder(at.path, above);
        if (!made) Fail("make", place, made.Why());
    }
    program.renderer.Answer({{"made", place.Utf8()}}, "made " + place.Utf8());
}

void CopyUnderFreeName(Program& program, const std::string& path) {
    Places places(program);
    const Place source = places.ResolveFile(path);
    const std::optional<std::string> copy = MakeNumberedCopy(program.Session(), source.path);
    if (!copy) {
        if (source.isPlain) Refuse(source.Shown() + " is in no depot");
        Fail("copy", source);
    }
    const std::string name = Utf8FromAnsi(*copy);
    program.renderer.Answer({{"copy", name}}, name);
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
                                                   "  depotctl rm -r \"<Work>\\Archive\""},
                                                  RemoveAll);
    remove.app.add_option("paths", remove.options.paths, "What is deleted")->required();
    remove.app.add_flag("-r,--recursive", remove.options.recursive,
                        "Delete folders with all below them");

    const auto make = AddCommand<FolderOptions>(
        app, program,
        {"mkdir", "Make a folder", "Example:\n  depotctl mkdir -p \"<Work>\\Sessions\\Host A\""},
        MakeFolder);
    make.app.add_option("path", make.options.path, "The new folder")->required();
    make.app.add_flag("-p,--parents", make.options.parents,
                      "Make the folders above it, too; one that is there is no mistake");

    AddPathCommand(
        app, program,
        {"copy-name", "Copy a file next to itself under the first free copy name, and show it",
         "Example:\n  depotctl copy-name \"<Work>\\office.kre\"", "The file"},
        CopyUnderFreeName);
}

}  // namespace depot::ctl
