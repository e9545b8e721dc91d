// What the command line says of a definition.
#pragma once

#include <string>
#include <vector>

#include "depotctl/definition.h"

namespace CLI {
class App;
}

namespace depot::ctl {

struct DefineOptions {
    std::string key;
    int location = 1;
    std::vector<RawValue> ofDepot;     // by the names that they have in the registry
    std::vector<RawValue> ofLocation;  // without the location's number
    std::vector<std::string> unset;
    int removedLocation = 0;
    bool askPassword = false;
    bool storePassword = false;
    bool forgetPassword = false;
    bool forMachine = false;
    bool dryRun = false;
    bool verbose = false;
};

// Adds the options that name a definition's hive, and whether it is only shown.
void AddPlaceOptions(CLI::App& command, DefineOptions& options);

// Adds those that give values.
void AddValueOptions(CLI::App& command, DefineOptions& options);

// Adds those that take values away.
void AddRemovalOptions(CLI::App& command, DefineOptions& options);

}  // namespace depot::ctl
