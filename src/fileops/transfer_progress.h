// What a transfer reports while it runs.
#pragma once

#include <cstdint>
#include <functional>

#include "store/store.h"

namespace depot {

// How far an operation on files is. Of a list, an item that was not looked into yet counts as one
// file.
struct TransferProgress {
    std::uint32_t filesDone = 0;
    std::uint32_t filesInAll = 0;
    std::uint64_t bytesDone = 0;
};

// Called after each file, that of a single file, too, and while a tree is on its way through the
// local disk; returns whether to go on. An operation that is stopped fails between two files, and
// what was done by then stays.
using TransferWatcher = std::function<bool(const TransferProgress& progress)>;

}  // namespace depot
