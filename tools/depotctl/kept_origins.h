// The depots to whose entries kept copies belong.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "depotctl/kept_copies.h"
#include "depotctl/program.h"
#include "model/depot.h"

namespace depot::ctl {

// An entry as one of the user's depots has it.
struct KeptEntry {
    std::size_t depot = 0;     // its place among the depots
    std::size_t location = 0;  // and that of the location there
    std::string dn;            // in the ANSI code page
    std::string path;          // the display path, or the DN where there is none
};

// Returns where an entry lies in a location of a directory; nothing for one outside of it.
std::optional<std::string> DisplayPathOf(CDepot& depot, CDepotPath& location,
                                         const std::string& dn);

// Whether the record belongs to a location: the same server and a DN below its base.
bool BelongsTo(const OriginRecord& origin, CDepot& depot, CDepotPath& location);

// Finds the entries of kept copies, and opens their depots, each location once.
class KeptOrigins {
public:
    explicit KeptOrigins(Program& program) : program_(program) {}

    // Of several locations that have the entry the one from which the copy came, else the first.
    // Nothing where no depot has it.
    std::optional<KeptEntry> Find(const OriginRecord& origin);

    // Returns the depot with that location alone, connected. Ends the command, each time, when it
    // cannot be reached.
    CDepot& Open(const KeptEntry& entry);

private:
    struct Opened {
        std::unique_ptr<CDepot> depot;
        std::optional<CommandFailure> failure;
    };

    Program& program_;
    std::map<std::pair<std::size_t, std::size_t>, Opened> opened_;
};

}  // namespace depot::ctl
