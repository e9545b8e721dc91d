#include "depotctl/kept_origins.h"

#include "depotctl/access.h"
#include "depotctl/failure.h"

namespace depot::ctl {

CDepot& KeptOrigins::Open(const KeptEntry& entry) {
    Opened& opened = opened_[{entry.depot, entry.location}];
    if (opened.failure) throw CommandFailure(*opened.failure);
    if (opened.depot) return *opened.depot;
    std::unique_ptr<CDepot> depot = DepotOf(program_.Depots(), entry);
    try {
        OpenDepot(*depot);
    } catch (const CommandFailure& failure) {
        opened.failure = failure;
        throw;
    }
    opened.depot = std::move(depot);
    return *opened.depot;
}

}  // namespace depot::ctl
