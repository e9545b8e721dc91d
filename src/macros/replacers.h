// The expansion of path macros on the running system.
#pragma once

#include <string>

#include "platform/macro_cache.h"

namespace depot {

// Replaces the macros of the text, such as $USERDIR$, by their values; those that the application
// knows come from `values`, that may be null and then are all empty. A macro without a value
// is removed or stays, as its kind demands; nothing fails.
void ExpandReplacers(const MacroValues* values, std::string& text);

}  // namespace depot
