// Work that waits for servers, done at once.
#pragma once

#include <functional>
#include <vector>

namespace depot::ctl {

// Does all of the work, each on one of several threads, and returns when all of it is done. None of
// it may ask the user for anything or rely on the thread it runs on. What one of them throws is
// thrown on.
void DoTogether(const std::vector<std::function<void()>>& work);

}  // namespace depot::ctl
