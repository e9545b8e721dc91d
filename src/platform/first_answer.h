// Choosing among several places without waiting for dead ones one after another.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace depot {

// How an attempt ends: not at all well, well enough where no other one does better, or well.
enum class Answer { kNone, kFallback, kGood };

// Runs the attempts on threads of their own, the first one at once, and the next whenever those
// before have all ended without a good answer or none has come for `patience`. Returns the first
// attempt, in their order, of those with a good answer when one comes; else the first fallback when
// all have ended, or when the last one has not answered for `patience`; nothing when all fail.
// Attempts that have not answered by then are left to end by themselves: what they use has to be
// theirs. They keep the library loaded, and what they throw is a failure. Where no thread can be
// had an attempt runs on this one.
std::optional<std::size_t> FirstAnswer(std::vector<std::function<Answer()>> attempts,
                                       std::chrono::milliseconds patience);

}  // namespace depot
