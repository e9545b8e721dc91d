// The groups of commands. Each function adds its commands to the command line; the one that was
// given leaves its work in `program.command`.
#pragma once

namespace CLI {
class App;
}

namespace depot::ctl {

class Program;

void AddListCommand(CLI::App& app, Program& program);          // ls
void AddProfileCommands(CLI::App& app, Program& program);      // cat, get, set
void AddFileCommands(CLI::App& app, Program& program);         // cp, mv, rm, mkdir, copy-name
void AddTransferCommands(CLI::App& app, Program& program);     // upload, download, publish
void AddSyncCommand(CLI::App& app, Program& program);          // sync
void AddCompareCommand(CLI::App& app, Program& program);       // compare
void AddLookCommands(CLI::App& app, Program& program);         // tree, find, stat
void AddDepotsCommand(CLI::App& app, Program& program);        // depots
void AddDefineCommands(CLI::App& depots, Program& program);    // depots add, set, remove
void AddExchangeCommands(CLI::App& depots, Program& program);  // depots export, import
void AddCompletionCommand(CLI::App& app, Program& program);    // completion
void AddLeftoversCommand(CLI::App& app, Program& program);     // leftovers
void AddCheckCommand(CLI::App& app, Program& program);         // check

}  // namespace depot::ctl
