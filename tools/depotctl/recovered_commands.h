// recovered: the way back for what is kept of edits that their entries do not hold.
#pragma once

#include "depotctl/command_line.h"

namespace depot::ctl {

// Adds "recovered", which lists, and its commands.
void AddRecoveredCommands(CLI::App& app, Program& program);

// The commands below it.
void AddKeptDiffCommand(CLI::App& recovered, Program& program);     // diff
void AddKeptRestoreCommand(CLI::App& recovered, Program& program);  // restore
void AddKeptFileCommands(CLI::App& recovered, Program& program);    // export, discard

}  // namespace depot::ctl
