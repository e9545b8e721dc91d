// The names of the path macros, dollar signs and all.
#pragma once

#include <string>
#include <vector>

#include "macros/macro_table.h"

namespace depot::ctl {

inline std::vector<std::string> MacroNames() {
    std::vector<std::string> names;
    for (const MacroStep& step : MacroTable()) names.emplace_back(step.macro);
    return names;
}

}  // namespace depot::ctl
