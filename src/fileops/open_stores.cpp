#include "fileops/open_stores.h"

#include <algorithm>

namespace depot {

const Result& OpenStores::Hold(const StorePath& place) {
    auto found = std::find_if(held_.begin(), held_.end(),
                              [&](const Held& held) { return held.store == place.store; });
    if (found == held_.end()) {
        auto scope = std::make_unique<StoreScope>(*place.store);
        found = held_.insert(held_.end(), Held{place.store, std::move(scope)});
    }
    return found->scope->Outcome();
}

}  // namespace depot
