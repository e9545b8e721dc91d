#include "macros/replacers.h"

#include "macros/macro_table.h"
#include "macros/windows_macro_system.h"

namespace depot {

void ExpandReplacers(const MacroValues* values, std::string& text) {
    WindowsMacroSystem system(values);
    ExpandMacros({system}, text);
}

}  // namespace depot
