// How many kernel handles this process holds.
#pragma once

#include <cstddef>

namespace depot::test {

// Counts the open handles of this process, as the system lists them.
std::size_t HandleCount();

}  // namespace depot::test
