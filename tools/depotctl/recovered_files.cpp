// recovered export and recovered discard
#include <vector>

#include "depotctl/encoding.h"
#include "depotctl/kept_copies.h"
#include "depotctl/kept_target.h"
#include "depotctl/recovered_commands.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

struct ExportOptions {
    std::string file, target;
};

struct DiscardOptions {
    std::vector<std::string> files;
    bool all = false;
    bool yes = false;
};

// A folder takes the copy under its own name.
Place TargetOf(const Places& places, Place target, const KeptCopy& copy) {
    if (!IsRoot(target) && places.KindOf(target) != ItemKind::kFolder) return target;
    return Child(target, ToAnsi(copy.name));
}

void Export(Program& program, const ExportOptions& options) {
    const KeptCopy copy = RequireKeptCopy(program, options.file);
    const KeptBytes bytes = BytesOf(copy);
    Places places(program);
    const PlacedTarget target(TargetOf(places, places.Resolve(options.target), copy));
    if (target.Read()) Refuse(target.At().Shown() + " exists already");
    target.Write(bytes, std::nullopt);
    program.renderer.Answer({{"exported", copy.name}, {"to", target.At().Utf8()}},
                            "exported " + copy.name + " to " + target.At().Utf8());
}

// What waits is stored by itself, so that it has to be named.
std::vector<KeptCopy> CopiesToDiscard(const Program& program, const DiscardOptions& options) {
    if (options.all != options.files.empty()) {
        throw CommandFailure(ExitCode::kUsage, "name what to discard, or give --all");
    }
    if (!options.all) return RequireKeptCopies(program, options.files);
    std::vector<KeptCopy> copies = AllKeptCopies(program);
    std::erase_if(copies, [](const KeptCopy& copy) { return copy.isWaiting; });
    return copies;
}

void RequireConsent(const std::vector<KeptCopy>& copies) {
    std::string text;
    for (const KeptCopy& copy : copies) text += "  " + Printable(copy.name) + "\n";
    const std::string question = "Delete for good?\n" + text + "[y/N] ";
    const std::optional<std::string> answer = CanAsk() ? AskVisible(question) : std::nullopt;
    if (!answer && !CanAsk()) Refuse("without a terminal to ask at, --yes must be given");
    if (!answer || (*answer != "y" && *answer != "Y")) Refuse("nothing was deleted");
}

void Discard(Program& program, const DiscardOptions& options) {
    const std::vector<KeptCopy> copies = CopiesToDiscard(program, options);
    if (!copies.empty() && !options.yes) RequireConsent(copies);
    Json deleted = Json::array();
    std::vector<std::string> failures;
    for (const KeptCopy& copy : copies) {
        if (const Result result = DeleteKept(copy); !result) {
            failures.push_back(WhyNotDeleted(copy, result.Why()));
        } else {
            deleted.push_back(copy.name);
        }
    }
    program.renderer.Answer({{"discarded", deleted}},
                            "discarded " + std::to_string(deleted.size()));
    for (const std::string& failure : failures) program.Complain(failure);
    if (!failures.empty()) program.outcome = ExitCode::kRefused;
}

}  // namespace

void AddKeptFileCommands(CLI::App& recovered, Program& program) {
    const auto out = AddCommand<ExportOptions>(
        recovered, program,
        {"export", "Copy a kept copy to another file; it stays",
         "Example:\n  depotctl recovered export \"office 2026-05-31 14-07-09 (1).kre\" C:\\Temp"},
        Export);
    out.app
        .add_option("file", out.options.file, "The kept copy, as \"depotctl recovered\" names it")
        ->required();
    out.app
        .add_option("target", out.options.target, "The new file, or the folder that receives it")
        ->required();

    const auto discard = AddCommand<DiscardOptions>(
        recovered, program,
        {"discard", "Delete kept copies for good",
         "Examples:\n  depotctl recovered discard \"office 2026-05-31 14-07-09 (1).kre\"\n"
         "  depotctl recovered discard --all --yes"},
        Discard);
    discard.app.add_option("file", discard.options.files,
                           "The kept copies, as \"depotctl recovered\" names them");
    discard.app.add_flag("--all", discard.options.all,
                         "All recovered files; what waits has to be named");
    discard.app.add_flag("-y,--yes", discard.options.yes, "Do not ask");
}

}  // namespace depot::ctl
