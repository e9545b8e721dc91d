// leftovers: what an installation left behind, and its removal.
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/leftovers.h"
#include "depotctl/program.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

struct LeftoverOptions {
    bool remove = false;
    bool keptFiles = false;
};

// What became of one leftover.
std::string Remove(const Leftover& leftover, std::size_t& failures) {
    if (!leftover.stays.empty()) return "stays";
    const DWORD status = leftover.remove();
    if (status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND) return "removed";
    ++failures;
    return "not removed: " + SystemWords(status);
}

void ShowLeftovers(const Program& program, const LeftoverOptions& options) {
    Json rows = Json::array();
    std::string text;
    std::size_t failures = 0;
    for (const Leftover& leftover : FindLeftovers(options.keptFiles)) {
        const std::string state = options.remove           ? Remove(leftover, failures)
                                  : leftover.stays.empty() ? "left over"
                                                           : "stays";
        Json row = {{"place", leftover.place}, {"what", leftover.what}, {"state", state}};
        if (!leftover.stays.empty()) row["reason"] = leftover.stays;
        rows.push_back(std::move(row));
        text += Printable(leftover.place) + "\n  " + leftover.what + ": " + Printable(state) +
                (leftover.stays.empty() ? "" : ", " + leftover.stays) + "\n";
    }
    program.renderer.Lines(rows, text);
    if (failures > 0) {
        Refuse(Counted(failures, "leftover") +
               " could not be removed; run the command as an administrator");
    }
}

}  // namespace

void AddLeftoversCommand(CLI::App& app, Program& program) {
    const auto [command, options] = AddCommand<LeftoverOptions>(
        app, program,
        {"leftovers", "List what an uninstallation left behind; remove it on request",
         "Examples:\n  depotctl leftovers\n  depotctl leftovers --remove"},
        ShowLeftovers);
    command.add_flag("--remove", options.remove,
                     "Remove what belongs to nobody any more; files of users and definitions stay");
    command.add_flag("--kept-files", options.keptFiles,
                     "Count what was kept of directories among it, unless edits wait there");
}

}  // namespace depot::ctl
