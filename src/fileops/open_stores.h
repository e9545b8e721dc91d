// The stores of an operation on several files.
#pragma once

#include <memory>
#include <vector>

#include "store/store.h"

namespace depot {

// Keeps every store that an operation works on open until it ends: each is opened once, however
// many files there are.
class OpenStores {
public:
    // Opens the store that holds the place. Returns the failure also of an earlier attempt, which
    // is not made a second time.
    const Result& Hold(const StorePath& place);

private:
    struct Held {
        Store* store;
        std::unique_ptr<StoreScope> scope;
    };
    std::vector<Held> held_;
};

}  // namespace depot
