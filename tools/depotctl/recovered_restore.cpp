// recovered restore: stores a kept copy where it belongs.
#include <optional>

#include "depotctl/kept_origins.h"
#include "depotctl/kept_target.h"
#include "depotctl/recovered_commands.h"
#include "depotctl/utf8_text.h"
#include "recovery/restoration.h"

namespace depot::ctl {
namespace {

struct RestoreOptions {
    std::string file, to;
    bool merge = false;
    bool replace = false;
    StepOptions steps{};
};

constexpr char kElse[] = "; name a place with --to, or use \"depotctl recovered export\"";

// The name of a value that both changed, such as "[Session] Title".
std::string ShownConflict(const MergeConflict& conflict) {
    return "[" + conflict.section + "] " +
           (conflict.key.empty() ? "(lines without a value)" : conflict.key);
}

// One copy on its way back.
class Restoration {
public:
    Restoration(Program& program, const RestoreOptions& options)
        : program_(program),
          options_(options),
          copy_(RequireKeptCopy(program, options.file)),
          ours_(RecoveredBytes(copy_)),
          places_(program),
          origins_(program),
          target_(Target()) {}

    void Run() {
        const auto present = target_.Read();
        const RestorePlan plan = PlanFor(present);
        const std::string place = target_.At().Utf8();
        Steps steps(program_, options_.steps);
        if (!plan.isStoredAlready) {
            const char* const verb = plan.isMerged ? "merge" : present ? "replace" : "copy";
            steps.Note({verb, copy_.name, place});
        }
        steps.Note({"remove", copy_.name, {}});
        if (steps.AreTaken()) Store(plan, present);
        steps.Answer({{"restored", copy_.name}, {"to", place}, {"merged", plan.isMerged}},
                     (plan.isStoredAlready ? place + " holds it already; deleted " + copy_.name
                                           : "restored " + copy_.name + " to " + place));
    }

private:
    static KeptBytes RecoveredBytes(const KeptCopy& copy) {
        if (!copy.isWaiting) return BytesOf(copy);
        Refuse(Shown(copy) +
               " waits and is stored by itself when its server is back; "
               "\"depotctl recovered export\" copies it");
    }

    PlacedTarget Target() {
        if (!options_.to.empty()) return PlacedTarget(NamedPlace());
        if (copy_.hasDamagedRecord) {
            Refuse("what was noted of where " + Shown(copy_) + " comes from is damaged" + kElse);
        }
        if (!copy_.origin) {
            Refuse("nothing is noted of where " + Shown(copy_) + " comes from" + kElse);
        }
        const auto entry = origins_.Find(*copy_.origin);
        if (!entry) {
            Refuse("no depot has the entry \"" + copy_.origin->dn + "\" of the server " +
                   copy_.Server() + kElse);
        }
        return PlacedTarget({&origins_.Open(*entry), entry->path, false}, entry->dn);
    }

    // A root names no file.
    Place NamedPlace() {
        Place place = places_.Resolve(options_.to);
        if (IsRoot(place)) Refuse(place.Shown() + " is a folder; name the file");
        return place;
    }

    RestorePlan PlanFor(const std::optional<KeptBytes>& present) const {
        const RestoreRules rules = {options_.merge, options_.replace,
                                    options_.replace || !options_.to.empty(),
                                    MergeCharacters::kOfProfiles};
        RestorePlan plan = PlanRestore(target_.Target(), {copy_, ours_}, present, rules);
        if (plan.obstacle) RefuseFor(plan);
        return plan;
    }

    [[noreturn]] void RefuseFor(const RestorePlan& plan) const {
        switch (*plan.obstacle) {
            case RestoreObstacle::kGone:
                Refuse(target_.At().Shown() + " is not there any more; --replace makes it anew");
            case RestoreObstacle::kNoBase:
                Refuse("what " + Shown(copy_) +
                       " was made from is not known, so that it cannot be merged; use --replace "
                       "alone");
            case RestoreObstacle::kNoProfile:
                Refuse(Shown(copy_) +
                       " cannot be merged: it is no profile, or the others are none; "
                       "use --replace alone");
            case RestoreObstacle::kConflicts:
                RefuseConflicts(plan);
            case RestoreObstacle::kChanged:
                break;
        }
        Refuse(target_.At().Shown() +
               (copy_.HasKnownBase()
                    ? " holds another version than the one that the copy was made from"
                    : " is there, and what the copy was made from is not known") +
               "; compare them with \"depotctl recovered diff\", then use " +
               (copy_.origin && copy_.origin->base ? "--merge or --replace" : "--replace"));
    }

    [[noreturn]] static void RefuseConflicts(const RestorePlan& plan) {
        std::string list;
        for (const MergeConflict& conflict : plan.conflicts) {
            list += (list.empty() ? "" : ", ") + Printable(ShownConflict(conflict));
        }
        Refuse("nothing was stored, because both changed " +
               Counted(plan.conflicts.size(), "value") + ": " + list +
               "; --merge --replace stores the copy's");
    }

    void Store(const RestorePlan& plan, const std::optional<KeptBytes>& present) const {
        const auto failure = StorePlan(target_.Target(), {copy_, ours_}, present, plan);
        if (!failure) return;
        switch (failure->step) {
            case StoreStep::kWrite:
                target_.FailToWrite(failure->why);
            case StoreStep::kReadBack:
                target_.FailToRead(failure->reading, failure->why);
            case StoreStep::kCompare:
                Refuse(target_.At().Shown() + " was stored, but holds something else now; " +
                       Shown(copy_) + " stays");
            case StoreStep::kDelete:
                break;
        }
        Refuse(target_.At().Shown() + " holds it, but " + WhyNotDeleted(copy_, failure->why));
    }

    Program& program_;
    const RestoreOptions& options_;
    const KeptCopy copy_;
    const KeptBytes ours_;
    Places places_;
    KeptOrigins origins_;
    const PlacedTarget target_;
};

void Restore(Program& program, const RestoreOptions& options) {
    Restoration(program, options).Run();
}

}  // namespace

void AddKeptRestoreCommand(CLI::App& recovered, Program& program) {
    const auto [command, options] = AddCommand<RestoreOptions>(
        recovered, program,
        {"restore", "Store a recovered file into its entry, and delete it then",
         "Without --merge and --replace only while the entry holds what the file was made from.\n"
         "Examples:\n"
         "  depotctl recovered restore \"office 2026-05-31 14-07-09 (1).kre\"\n"
         "  depotctl recovered restore --merge \"office 2026-05-31 14-07-09 (1).kre\"\n"
         "  depotctl recovered restore \"office 2026-05-31 14-07-09 (1).kre\" --to "
         "\"<Work>\\Sessions\\office.kre\""},
        Restore);
    command.add_option("file", options.file, "The file, as \"depotctl recovered\" names it")
        ->required();
    command.add_flag("--merge", options.merge,
                     "Put its changes into what the entry holds now, value by value");
    command.add_flag(
        "--replace", options.replace,
        "Replace whatever the entry holds; with --merge only values that both changed");
    command.add_option("--to", options.to, "Another file to store it in");
    AddStepFlags(command, options.steps);
}

}  // namespace depot::ctl
