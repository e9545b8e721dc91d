// completion
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/completion.h"
#include "platform/text.h"

namespace depot::ctl {
namespace {

void AddOptions(const CLI::App& app, std::vector<CompletedWord>& words) {
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            words.push_back({"--" + name, option->get_description()});
        }
        for (const std::string& name : option->get_snames()) {
            words.push_back({"-" + name, option->get_description()});
        }
    }
}

// Adds the command with those below it, which each take the options of the program as well.
void AddCommands(const CLI::App& app, const CLI::App& program, const std::string& path,
                 std::vector<CompletedCommand>& commands) {
    const std::vector<const CLI::App*> below =
        app.get_subcommands([](const CLI::App*) { return true; });
    CompletedCommand command = {path, {}};
    for (const CLI::App* one : below) {
        command.words.push_back({one->get_name(), one->get_description()});
    }
    AddOptions(app, command.words);
    if (&app != &program) AddOptions(program, command.words);
    commands.push_back(std::move(command));
    for (const CLI::App* one : below) {
        const std::string name = one->get_name();
        AddCommands(*one, program, path.empty() ? name : Concatenate({path, " ", name}), commands);
    }
}

}  // namespace

void AddCompletionCommand(CLI::App& app, Program& program) {
    const auto [command, shell] = AddCommand<std::string>(
        app, program,
        {"completion", "Write a script that completes commands and options at a prompt",
         "Example:\n  depotctl completion powershell"},
        [&app](Program& running, const std::string& /*shell*/) {
            std::vector<CompletedCommand> commands;
            AddCommands(app, app, {}, commands);
            const std::string script = PowerShellCompletion(commands);
            running.renderer.Answer({{"script", script}}, script);
        });
    command.add_option("shell", shell, "The prompt: powershell")
        ->required()
        ->check(CLI::IsMember({"powershell"}));
}

}  // namespace depot::ctl
