// cp, mv, rm, mkdir and copy-name
#include <CLI/CLI.hpp>
#include <memory>

#include "depotctl/commands.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/places.h"
#include "depotctl/removal.h"
#include "depotctl/transfer.h"
#include "depotctl/transfer_target.h"
#include "directory/connection_scope.h"
#include "fileops/depot_file.h"
#include "fileops/numbered_copy.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot::ctl {
namespace {

struct CopyOptions {
    std::string from, to;
    bool recursive = false;
    bool force = false;
};

struct RemoveOptions {
    std::vector<std::string> paths;
    bool recursive = false;
};

struct FolderOptions {
    std::string path;
    bool parents = false;
};

void Copy(Program& program, const CopyOptions& options) {
    Places places(program);
    const Place from = places.Resolve(options.from);
    const PlaceKind kind = places.Require(from);
    if (kind == PlaceKind::kFolder && !options.recursive) {
        Refuse(from.Shown() + " is a folder; -r copies it with all below it");
    }
    const Place to = TargetOf(places, from, options.to);
    RequireFree(places, kind, to, options.force);
    AnswerTransfer(
        program, "copied", to,
        Transfer(program, from, kind, to, options.force ? Existing::kReplace : Existing::kRefuse));
}

// Moves within the file system; false when that cannot be done without copying.
bool RenameInFileSystem(const Place& from, const Place& to, bool force) {
    const DWORD flags = force ? MOVEFILE_REPLACE_EXISTING : 0;
    if (MoveFileExA(from.Storage().c_str(), to.Storage().c_str(), flags)) return true;
    const DWORD error = GetLastError();
    if (error != ERROR_NOT_SAME_DEVICE) Fail("move", to, error);
    return false;
}

bool RenameInDirectory(const Place& from, const Place& to, PlaceKind kind) {
    RequireFittingName(to, kind);
    std::string errorText;
    if (MoveFile(*from.depot, from.path, to.path, nullptr, nullptr, &errorText) == 0) {
        Fail("move", from, 0, errorText);
    }
    return true;
}

bool RenameInPlace(const Place& from, const Place& to, PlaceKind kind, bool replaces) {
    if (!from.Directory() && !to.Directory()) return RenameInFileSystem(from, to, replaces);
    // A directory never renames onto an entry that is there.
    return from.depot == to.depot && !replaces && RenameInDirectory(from, to, kind);
}

void Move(Program& program, const CopyOptions& options) {
    Places places(program);
    const Place from = places.Resolve(options.from);
    const PlaceKind kind = places.Require(from);
    if (IsRoot(from)) Refuse(from.Shown() + " is the root of its depot and stays");
    const Place to = TargetOf(places, from, options.to);
    const bool respelled = from.depot == to.depot && EqualsNoCase(from.path, to.path);
    const bool replaces = !respelled && places.KindOf(to) != PlaceKind::kMissing;
    if (replaces) RequireFree(places, kind, to, options.force && kind == PlaceKind::kFile);
    if (replaces && kind == PlaceKind::kFolder) Refuse(to.Shown() + " is there already");
    TransferResult result = {1, 0};
    if (!RenameInPlace(from, to, kind, replaces)) {
        result = Transfer(program, from, kind, to,
                          replaces ? Existing::kReplace : Existing::kRefuse, SourceFate::kGoes);
    }
    AnswerTransfer(program, "moved", to, result);
}

void RemoveAll(Program& program, const RemoveOptions& options) {
    Places places(program);
    std::vector<std::pair<Place, PlaceKind>> all;
    for (const std::string& path : options.paths) {
        const Place place = places.Resolve(path);
        const PlaceKind kind = places.Require(place);
        if (IsRoot(place)) Refuse(place.Shown() + " is the root of its depot and stays");
        if (kind == PlaceKind::kFolder && !options.recursive) {
            Refuse(place.Shown() + " is a folder; -r removes it with all below it");
        }
        all.emplace_back(place, kind);
    }
    Json removed = Json::array();
    for (const auto& [place, kind] : all) {
        if (kind == PlaceKind::kFolder) {
            RemoveTree(program, place);
        } else {
            Remove(place, kind);
        }
        removed.push_back(place.Utf8());
    }
    const std::string count = std::to_string(all.size());
    program.renderer.Answer({{"removed", removed}}, "removed " + count);
}

// The folder that holds the place.
Place ParentOf(const Place& place) {
    Place parent = place;
    parent.path = FolderPrefix(place.path);
    return parent;
}

void MakeEntry(CLDAPItems& directory, const Place& place) {
    RequireFittingName(place, PlaceKind::kFolder);
    const ConnectionScope connection(directory, nullptr);
    if (!connection || directory.EnsureFolderPath(place.Storage(), false, nullptr) == 0) {
        Fail("make", place);
    }
}

void MakeFolder(Program& program, const FolderOptions& options) {
    Places places(program);
    const Place place = places.Resolve(options.path);
    const PlaceKind kind = places.KindOf(place);
    const bool there = kind == PlaceKind::kFolder && options.parents;
    if (kind != PlaceKind::kMissing && !there) Refuse(place.Shown() + " is there already");
    if (!options.parents && !there) places.Require(ParentOf(place));
    if (!there) {
        if (CLDAPItems* const directory = place.Directory()) {
            MakeEntry(*directory, place);
        } else if (!EnsureLocalFolder(place.Storage())) {
            Fail("make", place, GetLastError());
        }
    }
    program.renderer.Answer({{"made", place.Utf8()}}, "made " + place.Utf8());
}

void CopyUnderFreeName(Program& program, const std::string& path) {
    Places places(program);
    const Place source = places.Resolve(path);
    if (places.Require(source) == PlaceKind::kFolder) Refuse(source.Shown() + " is a folder");
    const std::optional<std::string> copy = MakeNumberedCopy(program.Session(), source.path);
    if (!copy) {
        if (source.isPlain) Refuse(source.Shown() + " is in no depot");
        Fail("copy", source);
    }
    const std::string name = Utf8FromAnsi(*copy);
    program.renderer.Answer({{"copy", name}}, name);
}

void AddCopyAndMove(CLI::App& app, Program& program) {
    const auto copied = std::make_shared<CopyOptions>();
    CLI::App* const copy = app.add_subcommand("cp", "Copy a file or a folder");
    copy->add_option("from", copied->from, "What is copied")->required();
    copy->add_option("to", copied->to, "Its new path, or the folder that it goes into")->required();
    copy->add_flag("-r,--recursive", copied->recursive, "Copy a folder with all below it");
    copy->add_flag("-f,--force", copied->force, "Replace files that are there");
    copy->footer(
        "Examples:\n  depotctl cp \"<Work>\\Sessions\\office.kre\" \"<Team>\\\"\n"
        "  depotctl cp -r \"<Work>\\Sessions\" C:\\Backup");
    copy->callback(
        [&program, copied] { program.command = [&program, copied] { Copy(program, *copied); }; });

    const auto moved = std::make_shared<CopyOptions>();
    CLI::App* const move = app.add_subcommand("mv", "Move or rename a file or a folder");
    move->add_option("from", moved->from, "What is moved")->required();
    move->add_option("to", moved->to, "Its new path, or the folder that it goes into")->required();
    move->add_flag("-f,--force", moved->force, "Replace a file that is there");
    move->footer(
        "Examples:\n  depotctl mv \"<Work>\\old.kre\" \"<Work>\\new.kre\"\n"
        "  depotctl mv \"<Work>\\Sessions\" \"<Archive>\\\"");
    move->callback(
        [&program, moved] { program.command = [&program, moved] { Move(program, *moved); }; });
}

}  // namespace

void AddFileCommands(CLI::App& app, Program& program) {
    AddCopyAndMove(app, program);

    const auto removed = std::make_shared<RemoveOptions>();
    CLI::App* const remove = app.add_subcommand("rm", "Delete files and folders for good");
    remove->add_option("paths", removed->paths, "What is deleted")->required();
    remove->add_flag("-r,--recursive", removed->recursive, "Delete folders with all below them");
    remove->footer(
        "Examples:\n  depotctl rm \"<Work>\\old.kre\"\n"
        "  depotctl rm -r \"<Work>\\Archive\"");
    remove->callback([&program, removed] {
        program.command = [&program, removed] { RemoveAll(program, *removed); };
    });

    const auto folder = std::make_shared<FolderOptions>();
    CLI::App* const make = app.add_subcommand("mkdir", "Make a folder");
    make->add_option("path", folder->path, "The new folder")->required();
    make->add_flag("-p,--parents", folder->parents,
                   "Make the folders above it, too; one that is there is no mistake");
    make->footer("Example:\n  depotctl mkdir -p \"<Work>\\Sessions\\Host A\"");
    make->callback([&program, folder] {
        program.command = [&program, folder] { MakeFolder(program, *folder); };
    });

    const auto source = std::make_shared<std::string>();
    CLI::App* const name = app.add_subcommand(
        "copy-name", "Copy a file next to itself under the first free copy name, and show it");
    name->add_option("path", *source, "The file")->required();
    name->footer("Example:\n  depotctl copy-name \"<Work>\\office.kre\"");
    name->callback([&program, source] {
        program.command = [&program, source] { CopyUnderFreeName(program, *source); };
    });
}

}  // namespace depot::ctl
