// Measuring an operation against a raw twin: the same system calls doing the same work, in the same
// process and interleaved with it.
#pragma once

#include <functional>
#include <string>

namespace depot::bench {

// Runs `measured` and `raw` in turns, a few times to warm up and then at least 9 times each, and
// prints one row: the minimum and the median of both and the ratios. The goal is the highest ratio
// that counts as good.
void Compare(const std::string& name, double goal, const std::function<void()>& measured,
             const std::function<void()>& raw);

void PrintHeader(const std::string& title);

}  // namespace depot::bench
