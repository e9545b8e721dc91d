// Adding commands to the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "depotctl/program.h"
#include "depotctl/steps.h"
#include "store/store.h"

namespace depot::ctl {

struct CommandText {
    const char* name;
    const char* help;
    const char* footer;
    const char* argument = nullptr;  // what its first or only argument is
};

// A command and what its command line writes into, both as long as the command line lives.
template <class Options>
struct NewCommand {
    CLI::App& app;
    Options& options;
};

// Adds a command. Given on the command line without one of the commands below it, it leaves
// `run(program, options)` as the program's work.
template <class Options, class Run>
NewCommand<Options> AddCommand(CLI::App& parent, Program& program, const CommandText& text,
                               Run run) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = parent.add_subcommand(text.name, text.help);
    command->footer(text.footer);
    command->callback([&program, command, options, run] {
        if (!command->get_subcommands().empty()) return;
        program.command = [&program, options, run] { run(program, *options); };
    });
    return {*command, *options};
}

// Adds a command whose only argument is a path.
template <class Run>
void AddPathCommand(CLI::App& parent, Program& program, const CommandText& text, Run run) {
    const auto [command, path] = AddCommand<std::string>(parent, program, text, run);
    command.add_option("path", path, text.argument)->required();
}

// Adds --verbose, and --dry-run.
inline void AddStepFlags(CLI::App& command, StepOptions& options) {
    command.add_flag("--dry-run", options.dryRun, "Only show what would be changed");
    command.add_flag("-v,--verbose", options.verbose, "Show each thing that is changed");
}

// What the command line of a copy or a move says.
struct TransferOptions {
    std::string from, to;
    bool recursive = false;
    bool force = false;
    bool update = false;
    StepOptions steps{};

    ExistingEntries Existing() const {
        return force ? ExistingEntries::kReplace : ExistingEntries::kRefuse;
    }
};

// Adds a command that copies or moves, and replaces files only with --force.
template <class Run>
NewCommand<TransferOptions> AddTransferCommand(CLI::App& parent, Program& program,
                                               const CommandText& text, Run run) {
    const auto command = AddCommand<TransferOptions>(parent, program, text, run);
    command.app.add_option("from", command.options.from, text.argument)->required();
    command.app
        .add_option("to", command.options.to, "Its new path, or the folder that receives it")
        ->required();
    command.app.add_flag("-f,--force", command.options.force, "Replace files that are there");
    command.app.add_flag("-u,--update", command.options.update,
                         "Leave out files that are there already and neither older nor different; "
                         "replace the others");
    AddStepFlags(command.app, command.options.steps);
    return command;
}

}  // namespace depot::ctl
