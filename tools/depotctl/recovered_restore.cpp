// recovered restore: stores a kept copy where it belongs.
#include <optional>
#include <utility>

#include "depotctl/encoding.h"
#include "depotctl/kept_origins.h"
#include "depotctl/kept_target.h"
#include "depotctl/kept_values.h"
#include "depotctl/recovered_commands.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

struct RestoreOptions {
    std::string file, to;
    bool merge = false;
    bool replace = false;
    StepOptions steps{};
};

constexpr char kElse[] = "; name a place with --to, or use \"depotctl recovered export\"";

// What is going to be stored.
struct Plan {
    KeptBytes bytes;
    bool isStoredAlready = false;
    bool isMerged = false;
};

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
        const Plan plan = PlanFor(present);
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
        Refuse(copy.Shown() +
               " waits and is stored by itself when its server is back; "
               "\"depotctl recovered export\" copies it");
    }

    KeptTarget Target() {
        if (!options_.to.empty()) return KeptTarget(NamedPlace());
        if (copy_.hasDamagedRecord) {
            Refuse("what was noted of where " + copy_.Shown() + " comes from is damaged" + kElse);
        }
        if (!copy_.origin) {
            Refuse("nothing is noted of where " + copy_.Shown() + " comes from" + kElse);
        }
        const auto entry = origins_.Find(*copy_.origin);
        if (!entry) {
            Refuse("no depot has the entry \"" + copy_.origin->dn + "\" of the server " +
                   copy_.Server() + kElse);
        }
        return KeptTarget({&origins_.Open(*entry), entry->path, false}, entry->dn);
    }

    // A root names no file.
    Place NamedPlace() {
        Place place = places_.Resolve(options_.to);
        if (IsRoot(place)) Refuse(place.Shown() + " is a folder; name the file");
        return place;
    }

    bool IsMadeFrom(const KeptBytes& present) const {
        if (!copy_.origin) return false;
        const OriginRecord& origin = *copy_.origin;
        if (origin.base) return *origin.base == present;
        return origin.baseDigest && *origin.baseDigest == DigestOf(present.data(), present.size());
    }

    Plan PlanFor(const std::optional<KeptBytes>& present) const {
        Plan plan = {ours_, false, false};
        if (!present) {
            const bool mayBeMade = options_.replace || !options_.to.empty() || copy_.origin->isNew;
            if (!mayBeMade) {
                Refuse(target_.At().Shown() + " is not there any more; --replace makes it anew");
            }
        } else if (target_.Holds(ours_)) {
            plan.isStoredAlready = true;
        } else if (!IsMadeFrom(*present)) {
            return options_.merge ? MergedPlan(*present) : ReplacingPlan(std::move(plan));
        }
        return plan;
    }

    Plan ReplacingPlan(Plan plan) const {
        if (options_.replace) return plan;
        const bool isKnown = copy_.origin && (copy_.origin->base || copy_.origin->baseDigest);
        Refuse(target_.At().Shown() +
               (isKnown || (copy_.origin && copy_.origin->isNew)
                    ? " holds another version than the one that the copy was made from"
                    : " is there, and what the copy was made from is not known") +
               "; compare them with \"depotctl recovered diff\", then use " +
               (copy_.origin && copy_.origin->base ? "--merge or --replace" : "--replace"));
    }

    // With --replace ours has the values that both changed.
    Plan MergedPlan(const KeptBytes& present) const {
        const KeptVersions versions = {BaseToMerge(), present, ours_};
        const auto merge = MergeKept(versions, options_.replace);
        if (!merge) {
            if (options_.replace) return {ours_, false, false};
            Refuse(copy_.Shown() +
                   " cannot be merged: it is no profile, or the others are none; "
                   "use --replace");
        }
        if (!merge->conflicts.empty() && !options_.replace) RefuseConflicts(*merge);
        Plan plan = {{merge->bytes.begin(), merge->bytes.end()}, false, true};
        plan.isStoredAlready = plan.bytes == present;
        return plan;
    }

    KeptBytes BaseToMerge() const {
        if (copy_.origin && copy_.origin->base) return *copy_.origin->base;
        if (copy_.origin && copy_.origin->isNew) return {};
        Refuse("what " + copy_.Shown() +
               " was made from is not known, so that it cannot be merged; use --replace");
    }

    [[noreturn]] static void RefuseConflicts(const ProfileMerge& merge) {
        std::string list;
        for (const MergeConflict& conflict : merge.conflicts) {
            list += (list.empty() ? "" : ", ") + Printable(ShownConflict(conflict));
        }
        Refuse("nothing was stored, because both changed " +
               Counted(merge.conflicts.size(), "value") + ": " + list +
               "; --merge --replace stores the copy's");
    }

    // The copy goes when its bytes are seen where they belong, and not before.
    void Store(const Plan& plan, const std::optional<KeptBytes>& present) const {
        if (!plan.isStoredAlready) {
            target_.Write(plan.bytes, present);
            if (!target_.Holds(plan.bytes)) {
                Refuse(target_.At().Shown() + " was stored, but holds something else now; " +
                       copy_.Shown() + " stays");
            }
        }
        if (const auto why = DeleteKeptCopy(copy_, ours_)) {
            Refuse(target_.At().Shown() + " holds it, but " + *why);
        }
    }

    Program& program_;
    const RestoreOptions& options_;
    const KeptCopy copy_;
    const KeptBytes ours_;
    Places places_;
    KeptOrigins origins_;
    const KeptTarget target_;
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
