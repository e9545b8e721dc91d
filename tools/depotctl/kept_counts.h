// How much is kept of a location for the time when its server is away.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "depotctl/definition.h"
#include "depotctl/renderer.h"
#include "model/depot.h"
#include "recovery/kept_copies.h"

namespace depot::ctl {

struct KeptCounts {
    std::size_t files = 0;    // files and listings that were fetched
    std::uint64_t bytes = 0;  // that they take
    std::size_t edits = 0;    // that wait
    std::size_t damaged = 0;  // files that were set aside
    std::size_t recovered = 0;
};

// Counts it; nothing for a location of which nothing is kept. `copies` are all kept
// ones.
std::optional<KeptCounts> CountKept(CDepot& depot, CDepotPath& location,
                                    const std::vector<KeptCopy>& copies);

// What a check reports of it.
Finding KeptFinding(const KeptCounts& counts);
Json KeptJson(const KeptCounts& counts);

}  // namespace depot::ctl
