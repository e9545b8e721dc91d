// What opening a session takes of the system: the registry's values and the macros' shared block.
#pragma once

namespace depot::bench {

enum class RawDepots { kFolders, kDirectories };

// Defines the user's folder, as installed products do.
void DefineUserFolder();

// Asks for the values of all depots, as long as each has one location of that kind.
void RawSession(RawDepots kind);

}  // namespace depot::bench
