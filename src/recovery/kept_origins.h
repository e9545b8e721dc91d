// The depots to whose entries kept copies belong.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "model/depots.h"
#include "offline/origin_record.h"

namespace depot {

// An entry as one of the user's depots has it.
struct KeptEntry {
    std::size_t depot = 0;     // its place among the depots
    std::size_t location = 0;  // and that of the location there
    std::string dn;            // in the ANSI code page
    std::string path;          // the display path, or the DN where there is none
};

// Whether the record belongs to a location: the same server and a DN below its base.
bool BelongsTo(const OriginRecord& origin, CDepot& depot, CDepotPath& location);

// Of several locations that have the entry the one from which the copy came, else the first.
// Nothing where no depot has it. No server is asked.
std::optional<KeptEntry> FindKeptEntry(CDepots& depots, const OriginRecord& origin);

// Returns the entry's depot with that location alone, not connected. It must not outlive the list.
std::unique_ptr<CDepot> DepotOf(CDepots& depots, const KeptEntry& entry);

}  // namespace depot
