// sync
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/failure.h"
#include "depotctl/tree_update.h"
#include "depotctl/utf8_text.h"
#include "fileops/copy.h"
#include "platform/file_search.h"

namespace depot::ctl {
namespace {

struct SyncOptions {
    std::string from, to;
    bool deletes = false;
    bool dryRun = false;
};

// Refuses two places of which one holds the other: what is surplus in one is a part of the other.
void RequireSeparate(const Place& from, const Place& to, ItemKind toKind) {
    RequireApart(from, to);
    RequireApart(to, from);
    if (toKind == ItemKind::kMissing) return;
    const OpenedPlace source(from, "read"), target(to, "write");
    const auto targetFolder = target.store.LocalPath(target.path);
    if (targetFolder && IsLinkToFolder(*targetFolder)) {
        Refuse(to.Shown() + " is a link to a folder");
    }
    const ItemIdentity identity =
        FindOverlap({&source.store, source.path}, {&target.store, target.path}, SourceFate::kGoes);
    if (identity == ItemIdentity::kSame || identity == ItemIdentity::kUnknown) {
        Refuse(from.Shown() + " and " + to.Shown() +
               " may be one place, or one may hold the other");
    }
}

ItemKind RequireFolders(const Places& places, const Place& from, const Place& to) {
    if (places.Require(from) != ItemKind::kFolder) Refuse(from.Shown() + " is a file");
    const ItemKind kind = places.KindOf(to);
    if (kind == ItemKind::kFile) Refuse(to.Shown() + " is a file");
    if (kind == ItemKind::kMissing && places.KindOf(FolderOf(to)) != ItemKind::kFolder) {
        Refuse("the folder " + FolderOf(to).Shown() + " is not there");
    }
    return kind;
}

std::string PlanText(const std::vector<Step>& copies, std::size_t surplus, bool deletes) {
    std::string text = "plan: " + Counted(copies.size(), "change");
    if (surplus == 0) return text;
    return text + ", " + std::to_string(surplus) +
           (deletes ? " to delete" : " surplus, which stay without --delete");
}

void Synchronize(Program& program, const SyncOptions& options) {
    Places places(program);
    const Place from = places.Resolve(options.from), to = places.Resolve(options.to);
    const ItemKind toKind = RequireFolders(places, from, to);
    RequireSeparate(from, to, toKind);
    const TreeDifference difference({from, ItemKind::kFolder}, {to, toKind}, DifferentBy::kBytes);
    const std::vector<Step> copies = CopySteps(difference), surplus = RemovalSteps(difference);
    const bool deletes = options.deletes && !surplus.empty();
    if (deletes) RequireSurplus(difference);
    // The plan comes before anything is changed.
    Steps steps(program, {options.dryRun, true});
    steps.Note(copies);
    if (deletes) steps.Note(surplus);
    program.renderer.Progress(PlanText(copies, surplus.size(), deletes) + "\n");
    std::uint32_t copied = 0;
    std::size_t deleted = 0;
    if (steps.AreTaken()) {
        copied = CopyDifferent(program, difference);
        if (deletes) deleted = RemoveSurplus(difference);
    }
    steps.Answer({{"synchronized", to.Utf8()},
                  {"files", copied},
                  {"deleted", deleted},
                  {"surplus", surplus.size() - deleted}},
                 "copied " + Counted(copied, "file") + ", deleted " + std::to_string(deleted));
}

}  // namespace

void AddSyncCommand(CLI::App& app, Program& program) {
    const auto [command, options] = AddCommand<SyncOptions>(
        app, program,
        {"sync", "Make a folder as another one is",
         "Shows first what it is going to do. What only the target has stays unless --delete is "
         "given.\nExamples:\n"
         "  depotctl sync --dry-run \"<Work>\\Sessions\" \"<Team>\\Sessions\"\n"
         "  depotctl sync --delete --dry-run \"<Company>\\Profiles\" C:\\Backup"},
        Synchronize);
    command.add_option("from", options.from, "The folder as it should be")->required();
    command.add_option("to", options.to, "The folder that becomes the same")->required();
    command.add_flag("--delete", options.deletes, "Delete what only the target has");
    command.add_flag("--dry-run", options.dryRun, "Only show what would be changed");
}

}  // namespace depot::ctl
