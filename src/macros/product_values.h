// Macro values that the installed products leave in the registry.
#pragma once

#include <optional>
#include <string>

#include "macros/macro_engine.h"

namespace depot {

// Each is a value source of the macro table: see MacroValue.
std::optional<std::string> DeploymentPath(const MacroContext& context);
std::optional<std::string> ProductUserFolder(const MacroContext& context);
std::optional<std::string> ProductHomeFolder(const MacroContext& context);
std::optional<std::string> ProductOrApplicationFolder(const MacroContext& context);

}  // namespace depot
