// The commands that write definitions.
#pragma once

namespace CLI {
class App;
}

namespace depot::ctl {

class Program;

// Adds add, set and remove to the command `depots`.
void AddDefineCommands(CLI::App& depots, Program& program);

}  // namespace depot::ctl
