// The definitions of depots in the registry: read whole, also what the component ignores, and
// written.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "depotctl/definition.h"
#include "platform/win32.h"

namespace depot::ctl {

// A definition and the hive that it stands in.
struct StoredDefinition {
    RawDefinition raw;
    HKEY root = nullptr;
    bool isReadable = true;
};

// Returns all definitions, the user's first, as they stand in the registry; also those that are no
// depots.
std::vector<StoredDefinition> ReadDefinitions();

// Returns the definition of that key in one hive.
std::optional<RawDefinition> ReadDefinition(HKEY root, const std::string& key);

// What keeps the component from opening a depot's key by its name.
Findings CheckStoredKey(const std::string& key);

// What stands in the registry where no definition belongs, and hives that cannot be read.
Findings CheckDepotsKeys();

// What is wrong where only the machine's 32-bit programs have a depot of that key, in any letter
// case; nothing where they have none.
std::optional<Finding> FindFor32BitPrograms(const std::string& key);

// Writes the changes, creating the key where it is missing. A definition that was created here is
// removed again when a value cannot be written. Ends the command on a failure.
void WriteDefinition(HKEY root, const std::string& key, const DefinitionChange& change);

// Removes a definition with all below it. Ends the command on a failure.
void RemoveDefinition(HKEY root, const std::string& key);

// The hive of the machine's definitions, or of the user's, and its name with a backslash.
HKEY RootOf(bool forMachine);
std::string HiveName(HKEY root);

// "the user" or "the machine"
std::string OwnerOf(HKEY root);

// Whether the ANSI code page can hold the text; and the bytes that it then takes.
RawValue StoredText(std::string name, SecretText text);

}  // namespace depot::ctl
