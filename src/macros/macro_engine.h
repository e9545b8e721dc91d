// Replacing macros in a text, step by step, as a table says.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "macros/macro_system.h"

namespace depot {

// No step makes a text longer than this. Macro values may hold macros of later steps, and each step
// may multiply the text; without a bound a few hostile values fill the memory.
inline constexpr std::size_t kMaxExpandedBytes = std::size_t{16} * 1024 * 1024;

// What a value source has at hand.
struct MacroContext {
    MacroSystem& system;
    bool nested = false;  // whether this expansion serves the value of another one's macro
};

// Returns the text that takes the macro's place, or nothing to leave the macro standing.
using MacroValue = std::optional<std::string> (*)(const MacroContext& context);

// One row of the macro table.
struct MacroStep {
    std::string_view macro;
    MacroValue value;
    // What else the step does to the whole text once it found its macro; often null.
    void (*rewrite)(const MacroContext& context, std::string& text) = nullptr;
};

// Replaces every occurrence of `find`, in exactly this spelling, and continues after the inserted
// text. Does nothing when the result would be longer than kMaxExpandedBytes.
// REQUIRES: `find` is not empty.
void ReplaceEvery(std::string& text, std::string_view find, std::string_view replacement);

// Does what the step says when the text holds its macro. Costs one search when it does not.
void RunStep(const MacroStep& step, const MacroContext& context, std::string& text);

}  // namespace depot
