// The depots to whose entries kept copies belong, opened for commands.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "depotctl/kept_copies.h"
#include "depotctl/program.h"
#include "recovery/kept_origins.h"

namespace depot::ctl {

// Opens the depots of entries, each location once.
class KeptOrigins {
public:
    explicit KeptOrigins(Program& program) : program_(program) {}

    std::optional<KeptEntry> Find(const OriginRecord& origin) {
        return FindKeptEntry(program_.Depots(), origin);
    }

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
