// The macros of depot paths: their names, their order and where their values come from.
#pragma once

#include <span>
#include <string>

#include "macros/macro_engine.h"

namespace depot {

// The steps in the order in which they run.
std::span<const MacroStep> MacroTable();

// Expands %NAME% references, then runs every step of the table once over the whole text. What a
// step inserts is seen by the later steps only. A text without macros and percent signs costs one
// search for each of these and asks the system for nothing.
void ExpandMacros(const MacroContext& context, std::string& text);

}  // namespace depot
